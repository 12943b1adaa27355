#include "configtext.h"
#include "model/litefile.h"
#include "model/vekfile.h"

#include <QtTest>

using namespace VEK;

namespace {

using ::show;

/// All fields that a file holds.
QString show(SXCore_Lite const& core)
{
    return QStringList({show({core.index, core.trigType, core.captureAmount, core.implemention,
                              core.inputRegisterEnabled, core.captureInitDataEnabled}),
                        core.sampleClock, core.moduleName, show(core.dataSignalList),
                        show(core.allSignalList)})
        .join('\n');
}

/// What a reader returned; deletes the cores.
struct Result
{
    explicit Result(QString const& path) : cores(readVEKConfigFromXml_Lite(path, id, &ok, &error))
    {}
    ~Result() { qDeleteAll(cores); }

    QString id = "as before";
    bool ok = false;
    QString error = "untouched";
    QList<SXCore_Lite*> cores;
};

QByteArray document()
{
    QString const text = R"(<?xml version="1" encoding="UTF-8"?>
<VEK_CONFIG>
    <Version>3.0</Version>
    <Mode>Lite</Mode>
    <SxCore_Lite index="2" sample_clock="top/%2" trig_type="1" capture_amount="512" implemention="5" input_register_enabled="1" capture_init_data_enabled="1" module_name="top">
%1    </SxCore_Lite>
    <SxCore_Lite index="0" sample_clock="" trig_type="0" capture_amount="1024" implemention="0" input_register_enabled="0" capture_init_data_enabled="0" module_name="dut">
        <SignalList/>
    </SxCore_Lite>
</VEK_CONFIG>
)";
    return text.arg(SignalListText, "\u00fchr").toUtf8();
}

} // namespace

class tst_LiteFile : public QObject
{
    Q_OBJECT

private slots:
    void readsAndWritesTheDocument()
    {
        Result const result(m_file.write(document()));
        QVERIFY2(result.ok, qPrintable(result.error));
        QCOMPARE(result.cores.size(), 2);
        QCOMPARE(show(*result.cores.at(0)), "2 1 512 5 1 1\ntop/\u00fchr\ntop\n" + SignalListShown);
        QCOMPARE(show(*result.cores.at(1)), QString("0 0 1024 0 0 0\n\ndut\n\n"));
        QVERIFY(QFile::remove(m_file.path()));
        QVERIFY(writeVEKConfigToXml_Lite(result.cores, m_file.path()));
        QCOMPARE(m_file.content(), document());
        QCOMPARE(writeVekConfigToString_Lite(result.cores).toUtf8(), document());
        QVERIFY(!writeVEKConfigToXml_Lite(result.cores, m_file.folder() + "/none/lite.vek"));
    }

    void attributes()
    {
        char const* const rows[][2] = {
            {"", "0 0 0 0 0 0\n\ndut\n\n"},
            {"input_register_enabled='true' capture_init_data_enabled='2'",
             "0 0 0 0 0 1\n\ndut\n\n"},
            {"implementation='4' index='x' capture_amount='1e3' trig_type='99999999999'",
             "0 0 0 0 0 0\n\ndut\n\n"},
            {"module_name=''", "0 0 0 0 0 0\n\n\n\n"}};
        for (auto const& row : rows) {
            // the ports of older files mean nothing here
            QByteArray const text = QByteArray("<V><Version>3.0</Version><SxCore_Lite ") + row[0] +
                                    " capture_from_trigger='1'><SignalList/></SxCore_Lite></V>";
            Result const result(m_file.write(text));
            QCOMPARE(result.cores.size(), 1);
            QCOMPARE(show(*result.cores.first()), QString(row[1]));
        }
    }

    void documents()
    {
        struct
        {
            char const* text;
            char const* error; // empty: read
            int cores;
            char const* id;
        } const rows[] = {
            {"<V><Version/><SxCore_Lite/></V>", "", 1, "as before"},
            {"<V><Version>3.0.1</Version><SxCore_Lite/></V>",
             "The version of Vek config file is too high.", 0, "as before"},
            {"<V><Version>3.x</Version><SxCore_Lite/></V>", "Invalid Vek config file.", 0,
             "as before"},
            {"", "", 0, "as before"},
            {"<V><SxCore_Lite/></V>", "Unknown Vek version.", 0, "as before"},
            {"<V>\n<Version>", "unexpected end of file at 2:10", 0, "as before"},
            {"<V><Version>3.0</Version><SxCore/><VEK_ID>a1</VEK_ID></V>", "", 0, "a1"},
            {"<KVX><VEK_ID>beside</VEK_ID><VEK_CONFIG><VEK_ID>in</VEK_ID><Version>3</Version>"
             "<SxCore_Lite/><SxCore/><SxCore_Lite/></VEK_CONFIG></KVX>",
             "", 2, "in"},
            {"<KVX><Version>3.0</Version><VEK_ID>beside</VEK_ID><VEK_CONFIG/></KVX>",
             "Unknown Vek version.", 0, "as before"}};
        for (auto const& [text, error, cores, id] : rows) {
            Result const result(m_file.write(text));
            QCOMPARE(result.ok, !*error);
            QCOMPARE(result.error, QString(*error ? error : "untouched"));
            QCOMPARE(result.cores.size(), cores);
            QCOMPARE(result.id, QString(id));
        }
    }

    void files()
    {
        for (QString const& name : {QString(), m_file.folder(), m_file.folder() + "/none.vek"}) {
            QCOMPARE(Result(name).error, QString("Open file failed"));
            QString id;
            QVERIFY(readVEKConfigFromXml_Lite(name, id, nullptr, nullptr).isEmpty());
        }
        Result const latin(m_file.write("<?xml version='1.0' encoding='ISO-8859-1'?><V><Version>3"
                                        "</Version><SxCore_Lite sample_clock='\xfchr'/></V>"));
        QCOMPARE(latin.cores.size(), 1);
        QCOMPARE(latin.cores.first()->sampleClock, QString("\u00fchr"));
    }

private:
    ConfigFile m_file;
};

QTEST_GUILESS_MAIN(tst_LiteFile)
#include "tst_litefile.moc"
