#include "model/capturecore.h"
#include "model/coredebug.h"

#include <QtTest>

using namespace VEK;

namespace {

SignalItem single(QString const& name)
{
    SignalItem item;
    item.name = name;
    return item;
}

SignalItem bus(QString const& name, int width)
{
    SignalItem item = single(name);
    for (int i = width - 1; i >= 0; --i)
        item.signalList.append(single(QStringLiteral("%1[%2]").arg(name).arg(i)));
    return item;
}

} // namespace

class tst_CaptureCore : public QObject
{
    Q_OBJECT

private slots:
    void newCore()
    {
        SxCore core(7);
        QVERIFY(core.triggers.size() == 16 && core.matchUnits.size() == 16);
        QVERIFY(core.matchUnit(15)->core == &core && core.getTrigger(15)->core == &core);
        QVERIFY(!core.matchUnit(-1) && !core.matchUnit(16));
        core.triggers.at(3)->index = 99; // looked up by its field, not by its place
        QVERIFY(core.getTrigger(99) == core.triggers.at(3) && !core.getTrigger(3));
    }

    void enumerations()
    {
        QStringList types, funcs;
        int const counts[] = {2, 2, 6, 6, 8, 8, 0};
        for (int type = 0; type < 7; ++type) {
            types.append(type2string(MatchType(type)));
            QCOMPARE(optionalFunctions(MatchType(type)).size(), counts[type]);
        }
        for (int func = -1; func < 9; ++func)
            funcs.append(func2string(MatchFunc(func)));
        QCOMPARE(types.join('|'),
                 QString("Basic|Basic w/edges|Extended|Extended w/edges|Range|Range w/edges|"));
        QCOMPARE(funcs.join('|'), QString("|==|!=|>|<|>=|<=|in range|not in range|"));
        unsigned const windows[] = {0, 1, 2, 4, 4, 8, 8, 8, 8, 16};
        for (unsigned n = 0; n < 10; ++n)
            QCOMPARE(fixedWindowNum(n), windows[n]);
        QCOMPARE(fixedWindowNum(0x40000001), 0x80000000u);
        QCOMPARE(fixedWindowNum(0xffffffff), 0u);
    }

    void flatLists()
    {
        SXCore_Lite lite;
        lite.dataSignalList = {single("a"), bus("b", 4), single("c")};
        lite.dataSignalList[0].text = "alias";
        QStringList const names{"a", "b[3]", "b[2]", "b[1]", "b[0]", "c"};
        QCOMPARE(lite.dataSignals(), names);
        QCOMPARE(lite.dataSignalsText(), QStringList({"alias", "", "", "", "", ""}));
        SxCore core(0);
        core.dataSignalList = lite.dataSignalList;
        for (int i : {-1, 0, 1, 4, 5, 6})
            QCOMPARE(core.signalItemAt(i).name, names.value(i));
    }

    void shiftWidth()
    {
        // by a counter's width; there is no room for a field of the last one
        QMap<int, int> const rows{{INT_MIN, 21}, {40, 40}, {INT_MAX, 4096}};
        for (int counterWidth : rows.keys()) {
            SxCore core(0);
            core.dataSignalList = {bus("b", 20)};
            MatchUnit* unit = core.matchUnit(15);
            unit->enabled = unit->counterEnable = true;
            unit->counterWidth = counterWidth;
            QCOMPARE(core.dataOutShiftWidth(), rows[counterWidth]);
        }
    }

    void debugOutput()
    {
        SxCore core(0);
        core.sampleClock = "clk";
        core.dataSignalList = {single("a"), bus("b", 2)};
        core.expressions = QStringList({"M1", "!M1"});
        core.getTrigger(2)->signalList = {single("x"), single("y")};
        core.matchUnit(1)->enabled = true;
        core.matchUnit(1)->value0 = "1X";
        core.matchUnit(1)->trigger = core.getTrigger(2);
        QString text;
        QDebug(&text) << core;
        text.replace(QString(58, '-'), "---").replace(QString(58, '='), "===");
        QString const port = "Trigger Port: T2 Width: 2 Singals: x, y\n";
        // a QDebug ends with a blank
        QCOMPARE(text,
                 "===\nSX Core\nSample Clock: clk\nTrigger Clk Type: 0\nStroage Depth: 1024\n"
                 "Window Num: 1\nCapture Amount: 1024\nTrigger Pos: 0\n"
                 "Data Signals: a, b[1], b[0]\nTrigger Expressions: M1, !M1\n---\n" +
                     port +
                     "---\nMatch Unit: M1 Enable: true Match Type: Basic Match Func: == Value0: "
                     "1X Value1:  Counter Enable: false Counter Width: 2 Counter: 2 Continuous "
                     "false Bind: " +
                     port + "===\n ");
    }
};

QTEST_GUILESS_MAIN(tst_CaptureCore)
#include "tst_capturecore.moc"
