#include "programmer/vekprogrammermodel.h"
#include "programmerdesk.h"

#include "jtag/jtagsession.h"
#include "model/alert.h"
#include "tests/support/widgettools.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QListWidget>
#include <QSignalSpy>

using namespace VEK;

namespace {

/// A model with a record of what it said.
struct Watched
{
    Watched() : tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest)
    {
        QObject::connect(&model, &VekProgrammerModel::statusChanged,
                         [this](ProgrammerStatus status, QStringList const& messages) {
                             said << QString::number(status) + ":" + messages.join('|');
                         });
        QObject::connect(&model, &VekProgrammerModel::TargetEnable,
                         [this](bool on) { said << (on ? "target" : "no target"); });
        QObject::connect(&model, &VekProgrammerModel::StartandAutoEnable,
                         [this](bool on) { said << (on ? "start" : "no start"); });
        QObject::connect(&model, &VekProgrammerModel::cableInitFinsh, [this] { said << "init"; });
        QObject::connect(&model, &VekProgrammerModel::programPrint,
                         [this](QString const& text) { said << text; });
    }
    /// Waits for the end of the run and gives what was said since the last time.
    QStringList sayings()
    {
        auto const ended = [this] { return said.endsWith("target") || said.endsWith("init"); };
        if (!QTest::qWaitFor(ended, 30000))
            said << "no end";
        return std::exchange(said, {});
    }
    QString text(int row, int column) { return model.index(row, column).data().toString(); }

    VekProgrammerModel model;
    QAbstractItemModelTester tester;
    QStringList said;
};

QStringList alerts;

/// Answers the chooser of ambiguous ID codes: a double click on the entry of that name, Return for
/// an empty one, or Escape for another.
void choose(QString const& name)
{
    widgettools::inDialog([name](QWidget* dialog) {
        QCOMPARE(dialog->windowTitle(), QString("Device Chooser"));
        auto* const list = dialog->findChild<QListWidget*>();
        QList<QListWidgetItem*> const found = list->findItems(name, Qt::MatchExactly);
        if (found.isEmpty())
            QTest::keyClick(list, name.isEmpty() ? Qt::Key_Return : Qt::Key_Escape);
        else
            widgettools::doubleClick(list, list->model()->index(list->row(found.first()), 0));
    });
}

} // namespace

class VekProgrammerModelTest : public QObject
{
    Q_OBJECT

private:
    ProgrammerDesk* m_desk = nullptr;

private slots:
    void init()
    {
        m_desk = new ProgrammerDesk;
        alerts.clear();
        setAlertHandler([](Alert const& alert) { alerts << alert.title + ": " + alert.text; });
    }
    void cleanup()
    {
        delete m_desk;
        JtagSession::shared()->setKindOfConnection(2);
    }

    void cableScan()
    {
        Watched w;
        w.model.scanCablesInit();
        w.model.scanCables(); // refused: one run at a time
        QCOMPARE(w.sayings(),
                 (QStringList{"no start", "no target", "no target", "start", "target", "init"}));
        QCOMPARE(m_desk->log(), (QStringList{"--scan-cables", "--scan-cables L"}));
        QList<QStringList> const expected{{"1", "Kavro USB Cable(FT2CH)", "7", "A1"},
                                          {"2", "Kavro USB Cable(WINUSB)", "3", "B2"}};
        QCOMPARE(w.model.cables(), expected);

        m_desk->lay("'exit_code': 1, 'output': 'Cable found: FT2CH/a/1/x/'");
        w.model.scanCables();
        QVERIFY(w.model.cables().isEmpty());
        QCOMPARE(w.sayings().value(4), QString("target"));
        QVERIFY(w.model.cables().isEmpty());

        // both scans see it
        m_desk->lay("'output': 'Cable found: USB Debugger/a/1/x (y)'");
        w.model.scanCables();
        w.sayings();
        QCOMPARE(w.model.cables().count({"1", "a", "1", "x"}), 1);
    }

    void deviceScan()
    {
        Watched w;
        choose("TK-107B");
        w.model.scanDevices(1, 7);
        QCOMPARE(w.sayings(),
                 (QStringList{"no target", "3:Scanning!|2 device(s) found!", "target"}));
        QCOMPARE(m_desk->log(), QStringList{"--cable-index 1 --location 7 --scan"});
        QCOMPARE(w.model.rowCount(), 2);
        QCOMPARE(w.text(0, 1) + w.text(0, 2) + w.text(0, 4) + w.text(0, 8) + w.text(0, 9),
                 QString("TK-100TK-104Load100680018"));
        QCOMPARE(w.text(1, 2) + w.text(1, 3), QString("TK-107B"));

        choose("none of them");
        w.model.scanDevices(1, 7);
        w.sayings();
        QCOMPARE(w.model.devices().at(1)->device, QString("TK-107")); // as the scan said
        choose(QString());
        w.model.scanDevices(1, 7);
        w.sayings();
        QCOMPARE(w.model.devices().at(1)->device, QString("TK-107"));

        m_desk->lay("'exit_code': 3");
        w.model.scanDevices(1, 0);
        QCOMPARE(w.model.rowCount(), 0);
        QCOMPARE(
            w.sayings(),
            (QStringList{"no target", "1:Error: Scan Device Failed, No device found!", "target"}));
        QCOMPARE(m_desk->log().last(), QString("--cable-index 1 --scan"));
    }

    void scanReport()
    {
        std::pair<QByteArray, QString> const cases[] = {
            {"Family: TK-500", "TK-500,TK-101,00000000,0"}, // cut
            {"Family: x\\nName: y\\nID: 0x1", "TK-100,TK-101,1,0"},
            {"Family: x\\nName: y\\nID: 0x10068001 z", "TK-100,TK-101,10068001 z,0"},
            {"-\\n-\\nID:  0x10068001", "TK-100,TK-104,10068001,1"},
            {"Family: TK-100\\nName: TK-103\\nID: 10068001", "TK-100,TK-103,,1"}, // no prefix
        };
        for (auto const& [report, shown] : cases) {
            m_desk->layAll("{'device': 'x', 'programmer': {'output': 'Device Info:\\n" + report +
                           "'}}");
            Watched w;
            w.model.scanDevices(0, 0);
            w.sayings();
            QCOMPARE(w.model.rowCount(), 1);
            DeviceItem const* const row = w.model.devices().first();
            QCOMPARE(row->series + ',' + row->device + ',' + row->idCode + ',' +
                         QString::number(row->known),
                     shown);
        }
    }

    void download()
    {
        struct
        {
            int cable;
            int location;
            QString frequency;
            int rows;
            bool remote;
            QString tail;
        } const cases[] = {
            {0, 0, "", 1, false, "0"},
            {1, 7, "2MHz", 1, false, "1 --location 7 --frequency 2MHz"},
            {2, 3, "10MHz", 1, false, "5 --location 3 --frequency 10MHz"},
            {1, -1, "", 1, false, "1"},
            {3, 1, "2MHz", 1, false, "2 --location 1"}, // an LPT cable has no frequency
            {1, 0, "", 3, false, "1 --chain_size 3 --chain_index 0 --chain_ir 8,8,8"},
            {1, 7, "", 2, true,
             "1 --nlc there:36547 --location 7 --chain_size 2 --chain_index 0 --chain_ir 8,8"},
            {9, 0, "2MHz", 1, false, "9"},
        };
        m_desk->layAll("{'device': 'x', 'programmer': {'log': 'log'}}");
        QString const file = m_desk->writeFs("TK-104-Q48");
        JtagSession::shared()->setNlcAddress("there", "36547");
        for (auto const& row : cases) {
            Watched w;
            w.model.initData("TK-100", "TK-104", file);
            for (int i = 1; i < row.rows; ++i)
                w.model.onAddNewDevice();
            QVERIFY(w.model.setData(w.model.index(0, 0), Qt::Checked, Qt::CheckStateRole));
            JtagSession::shared()->setKindOfConnection(row.remote ? 1 : 2);
            w.model.programFs(row.cable, row.location, row.frequency);
            w.sayings();
            QCOMPARE(m_desk->log().last(), "--device TK-104 --fsFile " + file +
                                               " --operation_index 2 --cable-index " + row.tail);
        }
    }

    void downloadOutcome()
    {
        QString const file = m_desk->writeFs("TK-104-Q48");
        QString const start = '"' + file + "\"|Operation \"2\" for device \"TK-104\"...|Finished.|";
        std::pair<QByteArray, QString> const cases[] = {
            {"", "4:" + start},
            {"'output': '1 error'", "0:" + start + "1 error|"},
            {"'exit_code': 2, 'output': 'x'", "3:Error: Fs file download failed!"},
            {"'crash': true", "0:Error: Call Programmer failed!"},
        };
        for (auto const& [bench, status] : cases) {
            m_desk->lay(bench);
            Watched w;
            w.model.initData("TK-100", "TK-104", file);
            w.model.devices().first()->enable = 1;
            w.said.clear();
            w.model.programFs(1, 7, QString());
            QCOMPARE(w.sayings(), (QStringList{"2:", "no target", status, "target"}));
            QTRY_VERIFY(!w.model.isBusy());
        }
    }

    void longOutput()
    {
        QString const tell = "0:Error: The programmer told of one in output too long to keep.|";
        for (bool const error : {false, true}) {
            Watched w;
            w.model.initData("TK-100", "TK-104", m_desk->writeFs("TK-104-Q48"));
            w.model.devices().first()->enable = 1;
            QString const script = m_desk->write(
                "flash", QByteArray("#!/bin/sh\necho ") + (error ? "an error" : "begun") +
                             "\nyes '[##########]' | head -c 9999990\necho flashed\n");
            QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
            w.model.setProgrammer(script);
            w.said.clear();
            QSignalSpy ended(&w.model, &VekProgrammerModel::TargetEnable);
            w.model.programFs(1, 7, QString());
            QVERIFY(ended.wait(30000));
            QCOMPARE(w.sayings(), (QStringList{"2:", "no target",
                                               (error ? tell : "4:") + "flashed|", "target"}));
        }
    }

    void refusals()
    {
        Watched w;
        auto const said = [&] {
            w.model.programFs(1, 0, QString());
            return w.said.takeLast();
        };
        QCOMPARE(said(), QString("0:Error: Program Failed, No target device! "));
        w.model.initData("TK-100", "TK-104", QString());
        w.model.devices().first()->enable = 1;
        QCOMPARE(said(), QString("0:Error: Program Failed, No fs file!"));
        w.model.devices().first()->fsFile = "x";
        w.model.devices().first()->operation = nullptr;
        QVERIFY(said().startsWith("0:Error: "));
        QVERIFY(m_desk->log().isEmpty());

        w.model.setProgrammer(m_desk->path("missing"));
        w.model.scanCablesInit();
        QCOMPARE(w.sayings(),
                 (QStringList{"no start", "no target", "0:Error: Call Programmer failed!", "start",
                              "target", "init"}));
        w.model.readDeviceCodes();
        QCOMPARE(w.sayings(),
                 (QStringList{"no target", "0:Error: Call Programmer failed!", "target"}));
    }

    void runInAnswerToAFailure()
    {
        Watched w;
        w.model.setProgrammer(m_desk->path("missing"));
        connect(&w.model, &VekProgrammerModel::cableInitFinsh, [&] {
            w.model.setProgrammer(QString());
            m_desk->layAll("{'device': 'x', 'programmer': {'chain': []}}");
            w.model.scanDevices(1, 7);
        });
        w.model.scanCablesInit();
        QTRY_COMPARE(w.said.mid(6),
                     (QStringList{"no target", "1:Scanning!|0 device(s) found!", "target"}));
    }

    void readCodes()
    {
        Watched w;
        JtagSession::shared()->setKindOfConnection(1);
        m_desk->layAll("{'device': 'x', 'programmer': {'log': 'log'}}");
        w.model.readDeviceCodes();
        QTRY_COMPARE(w.said, (QStringList{"no target", "target"}));
        QCOMPARE(m_desk->log(), QStringList{"--operation_index 0 --nlc there:36547"});
    }

    void editing()
    {
        Watched w;
        w.model.initData("TK-500", "unheard of", QString());
        QCOMPARE(w.text(0, 1) + w.text(0, 2) + w.text(0, 4), QString("TK-500TK-501Load"));
        auto const set = [&](int column, QVariant const& value) {
            return w.model.setData(w.model.index(0, column), value);
        };
        auto const shown = [&] {
            return w.text(0, 1) + " " + w.text(0, 2) + " " + w.text(0, 3) + " " + w.text(0, 4) +
                   " " + w.text(0, 8);
        };
        auto const flags = [&](int column) { return int(w.model.flags(w.model.index(0, column))); };
        QCOMPARE((QList<int>{flags(0), flags(1), flags(4), flags(5), flags(9)}),
                 (QList<int>{48, 35, 33, 35, 33}));

        QSignalSpy changed(&w.model, &VekProgrammerModel::deviceChanged);
        QVERIFY(set(1, "TK-100"));
        QCOMPARE(shown(), QString("TK-100 TK-101  Load 00000000"));
        QVERIFY(set(2, "TK-107B"));
        QCOMPARE(w.model.devices().first()->device, QString("TK-107B"));
        QCOMPARE(shown(), QString("TK-100 TK-107 B Load 00000000"));
        QVERIFY(set(3, "")); // the group has one without a version, too
        QCOMPARE(w.model.devices().first()->device, QString("TK-107"));
        QVERIFY(set(3, "B"));
        QVERIFY(set(2, "TK-107")); // the group that the device is of
        QCOMPARE(w.model.devices().first()->device, QString("TK-107B"));
        QCOMPARE(changed.count(), 5);
        QVERIFY(set(2, "TK-501")); // not in this series
        QCOMPARE(shown(), QString("TK-100 TK-101  Load 00000000"));
        QVERIFY(set(5, m_desk->writeFs("TK-101-Q")));
        QCOMPARE(w.text(0, 6) + w.text(0, 7) + w.text(0, 8), QString("0x12340x123410065001"));
        w.said.clear();
        w.model.setCrc("78");
        set(5, m_desk->path("design.fs"));
        QCOMPARE(w.said,
                 QStringList{"Warn: " + m_desk->path("design.fs") + " and vek file do not match."});
        QCOMPARE(w.text(0, 5), QString());

        QVERIFY(set(1, "elsewhere"));
        QCOMPARE(shown(), QString("elsewhere TK-101  Bypass 00000000"));
        QCOMPARE((QList<int>{flags(0), flags(5), flags(9)}), (QList<int>{33, 33, 35}));
        QVERIFY(set(9, 12));
        QCOMPARE(w.text(0, 9), QString("12"));
        QVERIFY(!set(4, "x") && !set(0, "x"));
    }

    void rowsAndValidate()
    {
        Watched w;
        auto const last = [&] { return w.model.validate() ? QString() : alerts.takeLast(); };
        QCOMPARE(last(), QString("Error: No available device."));
        for (int i = 0; i < 17; ++i)
            w.model.onAddNewDevice();
        QVERIFY(alerts.isEmpty());
        w.model.onAddNewDevice();
        QCOMPARE(alerts, QStringList{"Warning: Exceeding the maximum number of devices."});
        QCOMPARE(w.model.rowCount(), 17);
        QCOMPARE(last(), QString("Error: No target device."));
        w.model.devices().at(2)->enable = 1;
        QCOMPARE(last(), QString());
        w.model.devices().at(5)->enable = 1;
        QCOMPARE(last(), QString("Error: Only one device can be set as target device."));
        w.model.devices().at(1)->irCode = 0;
        QCOMPARE(last(), QString("Error: Device (2) has wrong IRCode."));

        DeviceItem* const moved = w.model.devices().at(0);
        w.model.onMoveUp(w.model.index(0, 0));
        w.model.onMoveDown(w.model.index(0, 3));
        QCOMPARE(w.model.devices().at(1), moved);
        w.model.onMoveUp(w.model.index(1, 3));
        w.model.onMoveDown(w.model.index(16, 3));
        w.model.onMoveDown(QModelIndex());
        QCOMPARE(w.model.devices().at(0), moved);
        w.model.onRemoveDevice(w.model.index(1, 0));
        w.model.onRemoveDevice(QModelIndex());
        QCOMPARE(w.model.rowCount(), 16);
        QCOMPARE(w.model.devices().at(0), moved);
    }

    void watchedFile()
    {
        Watched w;
        QString const file = m_desk->writeFs("TK-104-Q48", "first");
        w.model.initData("TK-100", "TK-104", file);
        DeviceItem* const row = w.model.devices().first();
        row->enable = 1;
        for (QByteArray const& checksum : {QByteArray("second"), QByteArray("third")}) {
            QString const before = row->checksum;
            row->status = ProgrammerDownloaded;
            w.said.clear();
            QString const other = m_desk->write("new", "//CheckSum: " + checksum + "\n");
            QCOMPARE(rename(other.toUtf8(), file.toUtf8()), 0);
            QTRY_COMPARE(row->checksum, QString(checksum));
            QCOMPARE(w.said, QStringList{"3:Warn: File updated,checksum:" + before + "."});
        }
        row->status = ProgrammerDownloaded;
        w.said.clear();
        QVERIFY(QFile::remove(file));
        QTRY_COMPARE(w.said, QStringList{"3:"});
        QCOMPARE(row->status, ProgrammerIdle);
        m_desk->writeFs("TK-104-Q48", "back");
        QTRY_COMPARE(row->checksum, QString("back"));
        QMetaObject::invokeMethod( // comes while nothing is watched
            this, [&] { m_desk->writeFs("TK-104-Q48", "unwatched"); }, Qt::QueuedConnection);
        w.model.updateWatcherFsFiles();
        QTRY_COMPARE(row->checksum, QString("unwatched"));

        w.said.clear();
        w.model.updateFsFile(m_desk->writeFs("TK-104-Q48"));
        QCOMPARE(w.said, QStringList{"3:"});
        QCOMPARE(w.text(0, 6), QString("0x1234"));
        QVERIFY(w.model.activeDevice());
    }

    void goneDuringARun()
    {
        m_desk->lay("'delay': 60000");
        auto* const w = new Watched;
        w->model.scanCables();
        QTRY_VERIFY(w->model.isBusy());
        delete w;
    }
};

QTEST_MAIN(VekProgrammerModelTest)
#include "tst_vekprogrammermodel.moc"
