#include "model/litefile.h"
#include "model/standardfile.h"
#include "model/vekfile.h"
#include "tests/support/randomcore.h"
#include "tests/support/tempfolder.h"

#include <QtTest>

using namespace VEK;

namespace {

/// What a reader returned for a text; deletes the cores.
template <typename Core>
struct Result
{
    explicit Result(QString const& text);
    ~Result() { qDeleteAll(cores); }
    Core const& core() const { return *cores.first(); }

    QString id = "as before";
    bool ok = false;
    QString error;
    QList<Core*> cores;
};

template <>
Result<SxCore>::Result(QString const& text) : cores(readVEKConfigFromString(text, id, &ok, &error))
{}

template <>
Result<SXCore_Lite>::Result(QString const& text)
{
    TempFolder const folder;
    cores = readVEKConfigFromXml_Lite(folder.write("lite.vek", text.toUtf8()), id, &ok, &error);
}

using Standard = Result<SxCore>;
using Lite = Result<SXCore_Lite>;

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

QString show(QList<int> const& numbers)
{
    QStringList shown;
    for (int number : numbers)
        shown.append(QString::number(number));
    return shown.join(' ');
}

/// The list that both kinds of documents begin with.
QString const SignalListText = R"(        <SignalList>
            <Signal capture_enable="true" text="Enable &amp; go">u/en</Signal>
            <Bus capture_enable="false" name="Data" restorename="u/d[1:0]">
                <Signal text="high">u/d[1]</Signal>
                <Signal>u/d[0]</Signal>
            </Bus>
            <Bus capture_enable="true" restorename="u/&lt;a&gt;">
                <Signal>u/a</Signal>
            </Bus>
        </SignalList>
)";
QString const SignalListShown =
    "+u/en(Enable & go) +u/<a>[+u/a]\n"
    "+u/en(Enable & go) -u/d[1:0](Data)[-u/d[1](high) -u/d[0]] +u/<a>[+u/a]";

QString coreText(QString const& attributes, QString const& children)
{
    return QStringLiteral("<VEK_CONFIG><Version>3.0</Version><SxCore %1>%2</SxCore></VEK_CONFIG>")
        .arg(attributes, children);
}

QString show(MatchUnit const& unit)
{
    return show({unit.index, unit.enabled, unit.matchType, unit.counterEnable, unit.counterWidth,
                 unit.counter, unit.continuous, unit.func,
                 unit.trigger ? unit.trigger->index : -1}) +
           " '" + unit.value0 + "' '" + unit.value1 + "'";
}

/// All fields that a file holds, line by line.
QString show(SxCore const& core)
{
    QStringList shown(show({core.index, core.trigType, core.expressionType, core.exImplementation,
                            core.implementation, core.storageDepth, core.captureAmount,
                            core.triggerPos, core.windowNum, core.captureInitDataEnabled}));
    shown << core.sampleClock << core.moduleName << show(core.dataSignalList)
          << show(core.allSignalList) << core.expressions;
    for (TriggerPort const* port : core.triggers)
        shown.append(show(port->signalList));
    for (MatchUnit const* unit : core.matchUnits)
        shown.append(show(*unit));
    return shown.join('\n');
}

QString show(SXCore_Lite const& core)
{
    return QStringList({show({core.index, core.trigType, core.captureAmount, core.implemention,
                              core.inputRegisterEnabled, core.captureInitDataEnabled}),
                        core.sampleClock, core.moduleName, show(core.dataSignalList),
                        show(core.allSignalList)})
        .join('\n');
}

/// What the reader makes of it is shown below, in `records`.
QString const Document = R"(<?xml version="1"?>
<VEK_CONFIG>
    <Version>3.0</Version>
    <Mode>Standard</Mode>
    <SxCore index="2" sample_clock="top/%4" trig_type="1" storage_depth="2048" window_num="3" capture_amount="512" trigger_pos="-1" module_name="top" implementation="5" capture_init_data_enabled="true">
%3        <Triggers>
            <Trigger index="0">
                <SignalList>
                    <Signal text="Enable &amp; go">u/en</Signal>
                    <Bus name="Data" restorename="u/d[1:0]">
                        <Signal text="high">u/d[1]</Signal>
                        <Signal>u/d[0]</Signal>
                    </Bus>
                </SignalList>
            </Trigger>
%1        </Triggers>
        <MatchUnits>
            <MatchUnit index="0" enabled="1" match_type="5" counter_enable="0" counter_width="4" counter="9" countinuous="1" func="6" value0="001" value1="1X1" trigger="7"/>
%2        </MatchUnits>
        <Expressions type="Dynamic" ex_implementation="7">
            <Expression>M0&amp;!M3</Expression>
            <Expression>M3</Expression>
        </Expressions>
    </SxCore>
    <SxCore index="0" sample_clock="" trig_type="0" storage_depth="1024" window_num="1" capture_amount="1024" trigger_pos="0" module_name="dut" implementation="0" capture_init_data_enabled="false">
        <SignalList/>
        <Triggers>
            <Trigger index="0"/>
%1        </Triggers>
        <MatchUnits>
            <MatchUnit index="0" enabled="0" match_type="0" counter_enable="0" counter_width="2" counter="2" countinuous="0" func="0" value0="" value1=""/>
%2        </MatchUnits>
        <Expressions type="Static"/>
    </SxCore>
</VEK_CONFIG>
)";

/// The document with the ports and units that nothing was done to.
QString document()
{
    QString ports, units;
    for (int i = 1; i < 16; ++i) {
        ports += QStringLiteral("            <Trigger index=\"%1\"/>\n").arg(i);
        units +=
            QStringLiteral("            <MatchUnit index=\"%1\" enabled=\"0\" match_type=\"0\" "
                           "counter_enable=\"0\" counter_width=\"2\" counter=\"2\" "
                           "countinuous=\"0\" func=\"0\" value0=\"\" value1=\"\"/>\n")
                .arg(i);
    }
    return Document.arg(ports, units, SignalListText, "\u00fchr");
}

QString const LiteDocument = R"(<?xml version="1" encoding="UTF-8"?>
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

} // namespace

class tst_VekFile : public QObject
{
    Q_OBJECT

private slots:
    void written()
    {
        Standard const result(document());
        QCOMPARE(result.cores.size(), 2);
        QCOMPARE(show(result.core()).section('\n', 0, 6),
                 "2 1 1 7 5 2048 512 -1 3 1\ntop/\u00fchr\ntop\n" + SignalListShown +
                     "\nM0&!M3\nM3");
        QCOMPARE(show(result.core().getTrigger(0)->signalList),
                 QString("+u/en(Enable & go) +u/d[1:0](Data)[+u/d[1](high) +u/d[0]]"));
        QCOMPARE(show(*result.core().matchUnit(0)), QString("0 1 5 0 4 9 1 6 7 '001' '1X1'"));
        QCOMPARE(show(*result.cores.at(1)), show(SxCore(0)));
        QCOMPARE(writeVekConfigToString(result.cores), document());
        // a file has one byte a character
        QVERIFY(writeVEKConfigToXml(result.cores, m_path));
        QCOMPARE(TempFolder::content(m_path), document().toLatin1());
    }

    void writtenLite()
    {
        QString const document = LiteDocument.arg(SignalListText, "\u00fchr");
        Lite const result(document);
        QCOMPARE(result.cores.size(), 2);
        QCOMPARE(show(result.core()), "2 1 512 5 1 1\ntop/\u00fchr\ntop\n" + SignalListShown);
        QCOMPARE(show(*result.cores.at(1)), QString("0 0 1024 0 0 0\n\ndut\n\n"));
        QVERIFY(writeVEKConfigToXml_Lite(result.cores, m_path));
        QCOMPARE(TempFolder::content(m_path), document.toUtf8());
        QCOMPARE(writeVekConfigToString_Lite(result.cores), document);
    }

    void liteAttributes()
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
            Lite const result(QStringLiteral("<V><Version/><SxCore_Lite ") + row[0] +
                              " capture_from_trigger='1'><SignalList/></SxCore_Lite></V>");
            QCOMPARE(show(result.core()), QString(row[1]));
        }
    }

    void roundTrip()
    {
        randomcore::Draw draw(4711);
        for (int round = 0; round < 100; ++round) {
            auto const core = randomcore::core(draw);
            core->expressions = QStringList({"M0", "(M1|M2)&!M15"});
            QVERIFY(writeVEKConfigToXml({core.get()}, m_path));
            QString id;
            QList<SxCore*> const cores = readVEKConfigFromXml(m_path, id, nullptr, nullptr);
            QCOMPARE(cores.size(), 1);
            std::unique_ptr<SxCore> const again(cores.first());
            QCOMPARE(show(*again), show(*core));
        }
    }

    void signalLists()
    {
        char const* const rows[][4] = {
            // attributes, list: what is captured, all
            {"", "<Signal capture_enable='' text='t'>a</Signal>", "+a(t)", "+a(t)"},
            {"", "<Signal capture_enable='TRUE'>a</Signal><Signal>b</Signal>", "+b", "+b"},
            {"", "<Wire>w</Wire><!-- -->t<Signal capture_enable='true'>a</Signal>", "+a", "+a"},
            {"",
             "<Bus name='n' restorename='r'><Signal text='t'>m</Signal><Bus/>"
             "<Signal capture_enable='false'>k</Signal></Bus>",
             "+r(n)[+m(t) +k]", "+r(n)[+m(t) +k]"},
            {"", "<Bus name='n'><Signal>m</Signal></Bus>", "+n[+m]", "+n[+m]"}, // an older file's
            {"", "<Bus restorename='r' capture_enable='yes'><Signal>m</Signal></Bus>", "",
             "-r[-m]"},
            {"capture_from_trigger='x'", "<Signal>a</Signal>", "+a", "+a"},
            {"capture_from_trigger='1'", "<Signal>a</Signal>", "+p +q", ""},
            {"capture_from_trigger='2'", "<Signal>a</Signal>", "", ""}};
        QString const port =
            "<Trigger index='%1'><SignalList><Signal>%2</Signal></SignalList></Trigger>";
        QString const ports = port.arg("1", "p") + port.arg("0", "q") + port.arg("16", "none");
        for (auto const& row : rows) {
            Standard const result(coreText(row[0], QStringLiteral("<SignalList>") + row[1] +
                                                       "</SignalList><Triggers>" + ports +
                                                       "</Triggers>"));
            QVERIFY2(result.ok, qPrintable(result.error));
            QCOMPARE(show(result.core().dataSignalList), QString(row[2]));
            QCOMPARE(show(result.core().allSignalList), QString(row[3]));
            QCOMPARE(show(result.core().getTrigger(0)->signalList), QString("+q"));
        }
    }

    void records()
    {
        Standard const result(coreText(
            "index='4' trig_type='x' capture_init_data_enabled='1'",
            "<Triggers><Trigger index='2'><SignalList><Signal capture_enable='no'>s</Signal>"
            "</SignalList></Trigger></Triggers><MatchUnits>"
            "<MatchUnit index='3' enabled='-7' match_type='77' func='-3' countinuous='2' "
            "value0='1r' "
            "trigger='2'/><MatchUnit index='3' func='5'/><MatchUnit index='4' trigger='16'/>"
            "<MatchUnit index='16' enabled='1'/></MatchUnits>"));
        // a missing number is 0, whatever the default of the model is
        QCOMPARE(show(result.core()).section('\n', 0, 2), QString("4 0 0 0 0 0 0 0 0 0\n\ndut"));
        QCOMPARE(show(result.core().getTrigger(2)->signalList), QString("+s"));
        // the later record counts, but what is bound stays bound
        QCOMPARE(show(*result.core().matchUnit(3)), QString("3 0 0 0 0 0 0 5 2 '' ''"));
        QCOMPARE(show(*result.core().matchUnit(4)), QString("4 0 0 0 0 0 0 0 -1 '' ''"));
        QCOMPARE(show(*result.core().matchUnit(5)), QString("5 0 0 0 2 2 0 0 -1 '' ''"));
    }

    void expressions()
    {
        Standard const result(coreText(
            "", "<Expressions type='Dynamic' ex_implementation='3'>"
                "<Expression>Match[0] &amp; match[1]</Expression><Expression> m2|!M3 </Expression>"
                "<Expression>MATCH[4]</Expression><Other>M5</Other><Expression/></Expressions>"));
        QCOMPARE(result.core().expressions, QStringList({"M0 & M1", " M2|!M3 ", "MATCH[4", ""}));
        QVERIFY(result.core().expressionType == 1 && result.core().exImplementation == 3);
        Standard const fixed(coreText("", "<Expressions type='dynamic' ex_implementation='3'/>"));
        QVERIFY(fixed.core().expressionType == 0 && fixed.core().exImplementation == 0);
    }

    void wrapped()
    {
        QString const inner = coreText("index='6'", QString());
        QString const withId = QString(inner).replace("<SxCore", "<VEK_ID>x</VEK_ID><SxCore");
        Standard const result("<KVX>" + inner + "<VEK_ID>the id</VEK_ID></KVX>");
        QCOMPARE(result.cores.size(), 1);
        QCOMPARE(result.core().index, 6);
        QCOMPARE(result.id, QString("the id"));
        QCOMPARE(Standard("<KVX>" + withId + "</KVX>").id,
                 QString("as before")); // not the root's child
        QCOMPARE(Standard(withId).id, QString("x"));
        // a lite one has its own in the configuration, and takes no other cores
        Lite const lite("<KVX><VEK_ID>beside</VEK_ID><VEK_CONFIG><VEK_ID>in</VEK_ID><Version>3"
                        "</Version><SxCore_Lite/><SxCore/><SxCore_Lite/></VEK_CONFIG></KVX>");
        QCOMPARE(lite.cores.size(), 2);
        QCOMPARE(lite.id, QString("in"));
    }

    void failures_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("error");
        auto const versions = [](QList<char const*> const& list, QString const& error) {
            for (char const* text : list)
                QTest::newRow(text)
                    << QStringLiteral("<V><Version>%1</Version></V>").arg(text) << error;
        };
        versions({"3.0.0", "", ".", "2.7.99", "1.x", "-4"}, QString());
        versions({"3.0.1", "3.1", "4.x", "10.0"}, "The version of Vek config file is too high.");
        versions({"3.x", "3,0", "99999999999"}, "Invalid Vek config file.");
        char const* const broken[][2] = {{"<a>\n<b></a>", "tag mismatch at 2:7"},
                                         {"<V>\n<Version>", "unexpected end of file at 2:10"}};
        for (auto const& row : broken)
            QTest::newRow(row[1]) << row[0] << row[1];
        // what would exhaust the stack or the time, also where it hides from a simple count
        auto const document = [](QString const& text) {
            return "<V><Version>3.0</Version>" + text + "</V>";
        };
        auto const nested = [](QString const& head, int count, QString const& inner) {
            return head.repeated(count) + inner + QString("</a>").repeated(count);
        };
        QTest::newRow("behind a quote")
            << document("<?p ' ?>" + nested("<a>", 30000, "")) << "nested too deeply";
        QTest::newRow("behind closings that are none")
            << document(nested("<a b='/>' c=\"'></a>\"><!--</a>--><![CDATA[</a>]]><?p </a>?>",
                               30000, ""))
            << "nested too deeply";
        QTest::newRow("one too many")
            << document(nested("<a>", 255, "<a/>")) << "nested too deeply at 1:791";
        QTest::newRow("as deep as may be")
            << "<!DOCTYPE V SYSTEM '[>'>" +
                   document(QString("<a/>").repeated(300) +
                            nested("<a>", 255, "<!--<a>--><![CDATA[<!DOCTYPE V [<a>]]>"))
            << QString();
        QTest::newRow("in entities")
            << "<!DOCTYPE V [<!ENTITY e '" + QString("<a>").repeated(200) + "'>]><V>"
            << "document type";
        QTest::newRow("content model")
            << "<!DOCTYPE V [<!ELEMENT a " + QString("(").repeated(200000) << "document type";
        for (char const* text : {"<V><x><Version>3.0</Version></x></V>", "<KVX/>",
                                 "<KVX><Version>3.0</Version><VEK_CONFIG/></KVX>"})
            QTest::newRow(text) << text << "Unknown Vek Version.";
    }

    void failures()
    {
        QFETCH(QString, content);
        QFETCH(QString, error);
        Standard result(content);
        QVERIFY2(result.error.contains(error), qPrintable(result.error));
        QVERIFY(result.ok == error.isEmpty() && result.ok == result.error.isEmpty());
        QVERIFY(result.cores.isEmpty());
        QVERIFY(readVEKConfigFromString(content, result.id, nullptr, nullptr).isEmpty());
        Lite const lite(content);
        QCOMPARE(lite.error, result.error.replace("Vek Version", "Vek version"));
        QVERIFY(lite.ok == result.ok && lite.cores.isEmpty());
    }

    void files()
    {
        QString id, error;
        bool ok = true;
        for (QString const& path : {QString(), m_folder.path(), m_folder.path() + "/none.vek"}) {
            QVERIFY(readVEKConfigFromXml(path, id, &ok, &error).isEmpty() && !ok);
            QCOMPARE(error, QString("Open file failed."));
            QVERIFY(readVEKConfigFromXml_Lite(path, id, nullptr, nullptr).isEmpty());
            QVERIFY(readVEKConfigFromXml_Lite(path, id, &ok, &error).isEmpty() && !ok);
            QCOMPARE(error, QString("Open file failed"));
            QVERIFY(vekModeFromVekConfigFile(path) == VekModeUnknown);
        }
        for (QString const& path : {QString(), m_folder.path()})
            QVERIFY(!writeVEKConfigToXml({}, path) && !writeVEKConfigToXml_Lite({}, path));
        QVERIFY(Lite("").ok);
        QCOMPARE(Standard("").error, QString("unexpected end of file at 1:1"));
        error.clear();
        QVERIFY(readVEKConfigFromXml(m_folder.write("config.vek", ""), id, &ok, &error).isEmpty() &&
                ok && error.isEmpty());
        // one byte a character, up to the first NUL
        QByteArray const content = coreText("sample_clock='\u00e9'", "").toLatin1() + '\0' + "<";
        QList<SxCore*> const cores =
            readVEKConfigFromXml(m_folder.write("config.vek", content), id, &ok, &error);
        QVERIFY2(ok, qPrintable(error));
        std::unique_ptr<SxCore> const core(cores.first());
        QCOMPARE(core->sampleClock, QString("\u00e9"));
        // a lite file tells its encoding
        m_folder.write("config.vek", "<?xml version='1.0' encoding='ISO-8859-1'?><V><Version>3"
                                     "</Version><SxCore_Lite sample_clock='\xfchr'/></V>");
        QList<SXCore_Lite*> const latin = readVEKConfigFromXml_Lite(m_path, id, &ok, &error);
        QVERIFY2(ok, qPrintable(error));
        std::unique_ptr<SXCore_Lite> const lite(latin.first());
        QCOMPARE(lite->sampleClock, QString("\u00fchr"));
    }

    void modes()
    {
        auto const check = [this](int mode, QList<char const*> const& contents) {
            for (char const* content : contents)
                QVERIFY2(vekModeFromVekConfigFile(m_folder.write("config.vek", content)) == mode,
                         content);
        };
        check(10087, {"<a/>", "<a><Mode>Standard</Mode></a>",
                      "<KVX><Mode>Lite</Mode><VEK_CONFIG/></KVX>"});
        check(10088, {"<a t='\xe9'><Mode>Lite</Mode></a>",
                      "<KVX><VEK_CONFIG><Mode>Lite</Mode></VEK_CONFIG></KVX>"});
        check(10086,
              {"", "<a><Mode>Standard</Mode>", "<a><Mode>lite</Mode></a>", "<a><Mode/></a>"});
    }

    void emptyConfig()
    {
        QMap<VekMode, QByteArray> const rows{{VekModeStandard, "    <Mode>Standard</Mode>\n"},
                                             {VekModeLite, "    <Mode>Lite</Mode>\n"},
                                             {VekModeUnknown, ""}};
        for (VekMode mode : rows.keys()) {
            fillInfoForEmptyVekConfig(m_folder.write("config.vek", QByteArray(500, 'x')), mode);
            QCOMPARE(TempFolder::content(m_path), R"(<?xml version="1" encoding="UTF-8"?>
<VEK_CONFIG>
    <Version>3.0</Version>
)" + rows.value(mode) + "</VEK_CONFIG>\n");
        }
        fillInfoForEmptyVekConfig(QString(), VekModeLite);
        fillInfoForEmptyVekConfig(m_folder.path(), VekModeLite);
    }

private:
    TempFolder const m_folder;
    QString const m_path = m_folder.path("config.vek");
};

QTEST_GUILESS_MAIN(tst_VekFile)
#include "tst_vekfile.moc"
