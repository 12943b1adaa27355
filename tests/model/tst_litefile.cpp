#include "model/litefile.h"
#include "model/vekfile.h"
#include "tests/support/randomcore.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace VEK;

namespace {

/// `+name(text)[members]`, with - for what is not captured.
QString show(QList<SignalItem> const& items)
{
    QStringList shown;
    for (SignalItem const& item : items) {
        QString const text = item.text.isEmpty() ? "" : "(" + item.text + ")";
        QString const members = item.isBus() ? "[" + show(item.signalList) + "]" : "";
        shown.append((item.captureEnable ? "+" : "-") + item.name + text + members);
    }
    return shown.join(' ');
}

/// All fields that a file holds.
QString show(SXCore_Lite const& core)
{
    QStringList shown;
    for (int number : {core.index, core.trigType, core.captureAmount, core.implemention,
                       int(core.inputRegisterEnabled), int(core.captureInitDataEnabled)})
        shown.append(QString::number(number));
    shown << core.sampleClock << core.moduleName << show(core.dataSignalList)
          << show(core.allSignalList);
    return shown.join('|');
}

QString coreText(QString const& attributes, QString const& children = QString())
{
    return QStringLiteral("<VEK_CONFIG><Version>3.0</Version><SxCore_Lite %1>%2</SxCore_Lite>"
                          "</VEK_CONFIG>")
        .arg(attributes, children);
}

QByteArray const Document = R"(<?xml version="1" encoding="UTF-8"?>
<VEK_CONFIG>
    <Version>3.0</Version>
    <Mode>Lite</Mode>
    <SxCore_Lite index="2" sample_clock="top/clk" trig_type="1" capture_amount="512" implemention="5" input_register_enabled="1" capture_init_data_enabled="1" module_name="top">
        <SignalList>
            <Signal capture_enable="true" text="Enable &amp; go">u/en</Signal>
            <Bus capture_enable="false" name="Dàta" restorename="u/d[1:0]">
                <Signal text="high">u/d[1]</Signal>
                <Signal>u/d[0]</Signal>
            </Bus>
            <Bus capture_enable="true" restorename="u/&lt;a&gt;">
                <Signal>u/a</Signal>
            </Bus>
        </SignalList>
    </SxCore_Lite>
    <SxCore_Lite index="0" sample_clock="" trig_type="0" capture_amount="1024" implemention="0" input_register_enabled="0" capture_init_data_enabled="0" module_name="dut">
        <SignalList/>
    </SxCore_Lite>
</VEK_CONFIG>
)";

QStringList const Records{
    "2|1|512|5|1|1|top/clk|top|+u/en(Enable & go) +u/<a>[+u/a]|"
    "+u/en(Enable & go) -u/d[1:0](D\u00e0ta)[-u/d[1](high) -u/d[0]] +u/<a>[+u/a]",
    "0|0|1024|0|0|0||dut||"};

} // namespace

class tst_LiteFile : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        qDeleteAll(m_cores);
        m_cores.clear();
    }

    void readsAndWritesTheDocument()
    {
        read(Document);
        QVERIFY2(m_ok, qPrintable(m_error));
        QCOMPARE(shown(), Records);
        QVERIFY(writeVEKConfigToXml_Lite(m_cores, path()));
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), Document);
        QCOMPARE(vekModeFromVekConfigFile(path()), VekModeLite);
        QVERIFY(!writeVEKConfigToXml_Lite(m_cores, m_folder.filePath("none/lite.vek")));
        QVERIFY(!writeVEKConfigToXml_Lite(m_cores, QString()));
    }

    void anyCoreComesBack()
    {
        randomcore::Draw draw(20);
        for (int i = 0; i < 100; ++i) {
            SXCore_Lite core;
            core.index = draw.below(40);
            core.trigType = draw.below(3);
            core.captureAmount = draw.below(5000) - 100;
            core.implemention = draw.below(3);
            core.inputRegisterEnabled = draw.chance(50);
            core.captureInitDataEnabled = draw.chance(50);
            core.sampleClock = draw.chance(50) ? "top/<\u00fchr>" : "";
            core.moduleName = draw.chance(50) ? "a \"b\"" : "";
            for (int k = draw.below(9); k > 0; --k) {
                core.allSignalList.append(randomcore::signalItem(draw, draw.chance(70)));
                if (core.allSignalList.last().captureEnable)
                    core.dataSignalList.append(core.allSignalList.last());
            }
            QVERIFY(writeVEKConfigToXml_Lite({&core, &core}, path()));
            readFile(path());
            QVERIFY2(m_ok, qPrintable(m_error));
            QCOMPARE(shown(), (QStringList{show(core), show(core)}));
        }
    }

    void attributes_data()
    {
        QTest::addColumn<QString>("attributes");
        QTest::addColumn<QString>("record");
        QTest::newRow("none") << ""
                              << "0|0|0|0|0|0||dut||";
        QTest::newRow("true is no number")
            << "input_register_enabled='true' capture_init_data_enabled='true'"
            << "0|0|0|0|0|0||dut||";
        QTest::newRow("any number") << "input_register_enabled='-1' capture_init_data_enabled='2'"
                                    << "0|0|0|0|1|1||dut||";
        QTest::newRow("spelt as in the standard form") << "implementation='4'"
                                                       << "0|0|0|0|0|0||dut||";
        QTest::newRow("no numbers") << "index='x' capture_amount='1e3' trig_type='99999999999'"
                                    << "0|0|0|0|0|0||dut||";
        QTest::newRow("empty module") << "module_name=''"
                                      << "0|0|0|0|0|0||||";
    }

    void attributes()
    {
        QFETCH(QString, attributes);
        QFETCH(QString, record);
        read(coreText(attributes).toUtf8());
        QVERIFY2(m_ok, qPrintable(m_error));
        QCOMPARE(shown(), QStringList{record});
    }

    void signalLists_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("captured");
        QTest::addColumn<QString>("all");
        QTest::newRow("empty flag") << "<Signal capture_enable=''>a</Signal><Signal>b</Signal>"
                                    << "+a +b"
                                    << "+a +b";
        QTest::newRow("unknown flag is kept")
            << "<Signal capture_enable='yes'>a</Signal><Signal capture_enable='TRUE'>b</Signal>"
            << ""
            << "-a -b";
        QTest::newRow("bus flags")
            << "<Bus restorename='a' capture_enable='yes'><Signal>x</Signal></Bus>"
               "<Bus restorename='b' capture_enable=''><Signal capture_enable='false'>y</Signal>"
               "</Bus>"
            << "+b[+y]"
            << "-a[-x] +b[+y]";
        QTest::newRow("older bus") << "<Bus name='n'><Signal>x</Signal></Bus>"
                                   << "+n[+x]"
                                   << "+n[+x]";
        QTest::newRow("every node of a bus is a member")
            << "<Bus restorename='a'><Net text='t'>x</Net><!-- gone --><Signal>y</Signal></Bus>"
            << "+a[+x(t) + +y]"
            << "+a[+x(t) + +y]";
        QTest::newRow("others are passed over") << "<Net>x</Net>text<!-- c --><Signal>y</Signal>"
                                                << "+y"
                                                << "+y";
    }

    void signalLists()
    {
        QFETCH(QString, list);
        QFETCH(QString, captured);
        QFETCH(QString, all);
        // the ports of older files mean nothing here
        read(
            coreText("capture_from_trigger='1'", "<SignalList>" + list + "</SignalList>").toUtf8());
        QCOMPARE(m_cores.size(), 1);
        QCOMPARE(show(m_cores.first()->dataSignalList), captured);
        QCOMPARE(show(m_cores.first()->allSignalList), all);
    }

    void documents_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error"); // empty: read
        QTest::addColumn<int>("cores");
        QTest::addColumn<QString>("id");
        auto const version = [](char const* row, QByteArray const& number, char const* error) {
            QTest::newRow(row) << "<VEK_CONFIG><Version>" + number +
                                      "</Version><SxCore_Lite/></VEK_CONFIG>"
                               << error << (*error ? 0 : 1) << "as before";
        };
        version("3", "3", "");
        version("no number at all", "", "");
        version("1.9", "1.9", "");
        version("3.1", "3.1", "The version of Vek config file is too high.");
        version("3.0.1", "3.0.1", "The version of Vek config file is too high.");
        version("2.x", "2.x", "");
        version("3.x", "3.x", "Invalid Vek config file.");
        QTest::newRow("empty") << QByteArray() << "" << 0 << "as before";
        QTest::newRow("no version") << QByteArray("<VEK_CONFIG><SxCore_Lite/></VEK_CONFIG>")
                                    << "Unknown Vek version." << 0 << "as before";
        QTest::newRow("cut") << QByteArray("<VEK_CONFIG>\n<Version>")
                             << "unexpected end of file at 2:10" << 0 << "as before";
        QTest::newRow("standard cores") << QByteArray("<VEK_CONFIG><Version>3.0</Version><SxCore/>"
                                                      "<VEK_ID>a1</VEK_ID></VEK_CONFIG>")
                                        << "" << 0 << "a1";
        QTest::newRow("wrapped")
            << QByteArray("<KVX><VEK_ID>beside</VEK_ID><VEK_CONFIG><VEK_ID>in</VEK_ID>"
                          "<Version>3</Version><SxCore_Lite/><SxCore/><SxCore_Lite/></VEK_CONFIG>"
                          "</KVX>")
            << "" << 2 << "in";
        QTest::newRow("wrapped, identifier beside")
            << QByteArray("<KVX><VEK_ID>beside</VEK_ID><VEK_CONFIG><Version>3</Version>"
                          "</VEK_CONFIG></KVX>")
            << "" << 0 << "as before";
        QTest::newRow("wrapped, version beside")
            << QByteArray("<KVX><Version>3.0</Version><VEK_CONFIG><SxCore_Lite/></VEK_CONFIG>"
                          "</KVX>")
            << "Unknown Vek version." << 0 << "as before";
    }

    void documents()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);
        QFETCH(int, cores);
        QFETCH(QString, id);
        read(bytes);
        QCOMPARE(m_ok, error.isEmpty());
        QCOMPARE(m_error, error.isEmpty() ? "untouched" : error);
        QCOMPARE(m_cores.size(), cores);
        QCOMPARE(m_id, id);
    }

    void noFile()
    {
        for (QString const& name : {QString(), m_folder.path(), m_folder.filePath("none.vek")}) {
            readFile(name);
            QVERIFY(!m_ok);
            QCOMPARE(m_error, QStringLiteral("Open file failed"));
            QString id;
            QVERIFY(readVEKConfigFromXml_Lite(name, id, nullptr, nullptr).isEmpty());
        }
    }

    void readsTheDeclaredEncoding()
    {
        read("<?xml version='1.0' encoding='ISO-8859-1'?>" +
             coreText("sample_clock='\u00fchr'").toLatin1());
        QCOMPARE(m_cores.size(), 1);
        QCOMPARE(m_cores.first()->sampleClock, QStringLiteral("\u00fchr"));
    }

private:
    QString path() const { return m_folder.filePath("lite.vek"); }

    void read(QByteArray const& bytes)
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        readFile(path());
    }

    void readFile(QString const& name)
    {
        cleanup();
        m_ok = false;
        m_error = "untouched";
        m_id = "as before";
        m_cores = readVEKConfigFromXml_Lite(name, m_id, &m_ok, &m_error);
    }

    QStringList shown() const
    {
        QStringList lines;
        for (SXCore_Lite const* core : m_cores)
            lines.append(show(*core));
        return lines;
    }

    QTemporaryDir m_folder;
    QList<SXCore_Lite*> m_cores;
    bool m_ok = false;
    QString m_error;
    QString m_id;
};

QTEST_GUILESS_MAIN(tst_LiteFile)
#include "tst_litefile.moc"
