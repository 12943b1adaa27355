#include "programmer/fsfile.h"
#include "programmerdesk.h"

#include <QTest>

#include <sys/stat.h>

using namespace VEK;

namespace {

QByteArray const Catalogue = R"({
    "ALL_MODES": [
        {"MODE": "ram", "OPERATIONS": [
            {"OPERATION": "erase", "DESCRIPATION": "Erase", "CMD_INDEX": 1, "OPTIONS": []},
            {"OPERATION": "load", "DESCRIPATION": "Load it", "CMD_INDEX": 2, "OPTIONS": ["Programming"]},
            {"OPERATION": "ext", "DESCRIPATION": "X", "CMD_INDEX": 9,
             "OPTIONS": ["External Flash", "Programming"]}]},
        {"MODE": "plain", "OPERATIONS": []}],
    "DEVICE_CONFIG": [
        {"DEVICE": "TK-101", "DEVICEN": "G1", "DEVICENV": "A", "IDCODE": "0A", "ACCESS_MODES": ["plain", "none", "ram"]},
        {"DEVICE": "TK-102", "DEVICEN": "G1", "DEVICENV": "", "IDCODE": "0B", "ACCESS_MODES": []},
        {"DEVICE": "TK-103", "DEVICEN": "G1", "DEVICENV": "A", "IDCODE": "0A", "ACCESS_MODES": ["ram"]},
        {"DEVICE": "TK-502", "DEVICEN": "G5", "DEVICENV": "C", "IDCODE": "5C", "ACCESS_MODES": ["ram"]}],
    "ALL_SERIES": [
        {"SERIES": "one", "DEVICES": ["TK-101", "unheard of", "TK-103", "TK-102"]},
        {"SERIES": "five", "DEVICES": ["TK-502"]}]})";

QString const Device = "Warn: %1 and current series or device do not match.";
QString const Configuration = "Warn: %1 and vek file do not match.";

} // namespace

class DeviceCatalogueTest : public QObject
{
    Q_OBJECT

private:
    ProgrammerDesk m_desk;

    void use(QByteArray const& catalogue)
    {
        DeviceConfigurations::setFile(m_desk.write("programmer.json", catalogue));
    }

private slots:
    void init() { use(Catalogue); }

    void lookUps()
    {
        DeviceConfigurations const* const all = DeviceConfigurations::instance();
        QCOMPARE(all->getSeriesNames(), (QStringList{"one", "five"}));
        QCOMPARE(all->getDevicesNamesByIDCODE("0A"), (QStringList{"TK-101", "TK-103"}));
        QCOMPARE(all->getDeviceNVersions("G1"), QStringList{"A"});
        QCOMPARE(all->series("one")->devices(), (QStringList{"TK-101", "TK-103", "TK-102"}));
        QCOMPARE(all->series("one")->deviceNs(), QStringList{"G1"});
        QVERIFY(!all->series("two") && !all->deviceModes("TK-9") && !all->accessMode("none"));

        DeviceModes* const first = all->deviceModes("TK-101");
        QCOMPARE(first->accessModes.size(), 3);
        QVERIFY(!first->accessModes.at(1));
        AccessMode* const ram = all->accessMode("ram");
        QCOMPARE(first->accessModesWithProgramming(), QList<AccessMode*>{ram});
        QCOMPARE(first->indexOfPrograming(ram), 0);
        QCOMPARE(ram->indexOfProgramming(ram->operation("ext")), 1);
        QCOMPARE(ram->indexOfProgramming(ram->operation("erase")), -1);
        QCOMPARE(ram->operation("load")->cmdIndex, 2);
        QCOMPARE(ram->operation("load")->description, QString("Load it"));
        QVERIFY(ram->operation("ext")->hasExternalFlashOption());

        DeviceItem row;
        QCOMPARE(row.device + row.series + row.deviceN + row.deviceNV, QString("TK-101oneG1"));
        row.setDevice("TK-502");
        QCOMPARE(row.device + row.series + row.deviceN + row.deviceNV, QString("TK-502fiveG5C"));
        QVERIFY(row.isValid());
        row.setDevice("unheard of");
        QCOMPARE(row.device + row.series, QString("TK-101one"));
        row.series = "five";
        QVERIFY(!row.isValid());
    }

    void malformed()
    {
        for (QByteArray const& text :
             {QByteArray(), Catalogue.left(300), QByteArray("[1, 2]"), QByteArray(100000, '['),
              QByteArray("\0\xff\xfe{", 4),
              QByteArray(R"({"ALL_MODES": {"MODE": 1}, "DEVICE_CONFIG": 7})")}) {
            use(text);
            DeviceConfigurations const* const all = DeviceConfigurations::instance();
            QVERIFY(all->devices.isEmpty() && all->seriesList.isEmpty());
            QCOMPARE(all->unKnownDevice() + all->unKnownFamily() + all->unKnownDeviceN(),
                     QString());
            DeviceItem row;
            row.setDevice("TK-101");
            QCOMPARE(row.device, QString());
        }
    }

    void entriesOfWrongTypes()
    {
        use(R"({"ALL_MODES": [3, {"MODE": ["a"], "OPERATIONS": [[], {"CMD_INDEX": "x"}]}],
                "DEVICE_CONFIG": [null, {"DEVICE": "d", "ACCESS_MODES": [4, {}]}],
                "ALL_SERIES": [{"SERIES": "s", "DEVICES": [{}, "d"]}]})");
        QCOMPARE(DeviceConfigurations::instance()->series("s")->devices().last(), QString("d"));
        DeviceModes const* const d = DeviceConfigurations::instance()->deviceModes("d");
        QVERIFY(d->accessModesWithProgramming().isEmpty());
    }

    void fsHeader()
    {
        struct
        {
            QString device;
            QByteArray text;
            bool fits;
            QString codes; // checksum, user code, ID code
            QString warning;
        } const cases[] = {
            {"TK-101",
             "//CheckSum: 0x1F \n//UserCode: AB\n//Device-package: TK-101-Q48\n//VEKCRC: 77\nx",
             true, "0x1F,AB,0A", ""},
            // the user code may be that of a checksum before it
            {"TK-101", "//CheckSum: 1F\r\n//UserCode:  \r\n", true, "1F,1F,00000000", ""},
            {"TK-101", "//UserCode:\n//CheckSum: 1F\n", true, "1F,,00000000", ""},
            {"TK-101", "1010\n//CheckSum: 1F\n", true, ",,00000000", ""}, // no header
            // no package, one of many parts, and those of other devices
            {"TK-101", "//Device-package: TK101\n//CheckSum: 2\n", true, "2,,00000000", ""},
            {"TK-101", "//CheckSum: 1\n//Device-package: TK-101-Q48-9\n", false, ",,00000000",
             Device},
            {"TK-103", "//CheckSum: 1\n//Device-package: TK-101-Q\n", false, ",,00000000", Device},
            {"TK-101", "//Device-package: TK-999-Q\n", false, ",,00000000", Device},
            {"TK-502", "//Device-package: TK-501-Q\n", true, ",,5C", ""}, // 501 is 502
            {"TK-501", "//Device-package: TK-501-Q\n", true, ",,5C", ""},
            {"TK-101", "//CheckSum: 1\n//VEKCRC: 78\n", true, ",,00000000", Configuration},
            {"TK-101", "//VEKCRC:\n//CheckSum: 1\n", true, "1,,00000000", ""},
            {"TK-101", QByteArray("//CheckSum: 1\0002\n//UserCode: 5\n", 31), true, "1,5,00000000",
             ""},
            {"TK-101", "//" + QByteArray(3000000, 'x') + "\n//CheckSum: 9\n", true, "9,,00000000",
             ""},
            {"TK-101", QByteArray("//\n").repeated(2000000), true, ",,00000000", ""},
            {"TK-101", QByteArray("//\xff\xfe\0:\n//CheckSum", 17), true, ",,00000000", ""},
        };
        for (auto const& [device, text, fits, codes, warning] : cases) {
            QString const path = m_desk.write("a.fs", text);
            DeviceItem row;
            row.setDevice(device == "TK-501" ? "TK-502" : device);
            row.device = device;
            row.checksum = row.userCode = "old";
            QString said;
            QCOMPARE(readFsHeader(path, "77", row, said), fits);
            QCOMPARE(said, warning.isEmpty() ? QString() : warning.arg(path));
            QCOMPARE((QStringList{row.checksum, row.userCode, row.idCode}.join(',')), codes);
            QCOMPARE(row.fsFile, warning.isEmpty() ? path : QString());
        }
    }

    void noFsFile()
    {
        DeviceItem row;
        row.fsFile = "old";
        QString said;
        QVERIFY(readFsHeader("", "", row, said));
        QString const pipe = m_desk.path("pipe");
        QCOMPARE(mkfifo(pipe.toUtf8(), 0600), 0);
        for (QString const& path : {m_desk.path("missing"), m_desk.path(""), pipe}) {
            QVERIFY(!readFsHeader(path, "", row, said));
            QCOMPARE(said, QString("Warn: %1 Invalid.").arg(path));
        }
        QCOMPARE(row.fsFile, QString("old"));
    }

    void bitText()
    {
        QCOMPARE(strBit2Hex("0000111110100001"), QString("0FA1"));
        QCOMPARE(strBit2Hex("10101"), QString("A"));
        QCOMPARE(strBit2Hex("01x01111"), QString("F"));
        QCOMPARE(strBit2Hex("111"), QString());
    }
};

QTEST_GUILESS_MAIN(DeviceCatalogueTest)
#include "tst_devicecatalogue.moc"
