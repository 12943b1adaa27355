#include "chiprig.h"

#include <QtTest>

using namespace VEK::Simulator;

namespace {

/// `count` rows of a counter of `width` bits.
QByteArrayList counterRows(int width, int count)
{
    QByteArrayList rows;
    for (int k = 0; k < count; ++k)
        rows.append(ChipRig::number(unsigned(k), width));
    return rows;
}

/// A core with one port over all of `width` signals, watched by units 0 to 3.
BuiltCore builtCore(int width, bool isDynamic, int depth = 64)
{
    BuiltCore core;
    core.index = 2;
    core.shiftWidth = qMax(16, width + 1);
    core.dataCount = width;
    core.storageDepth = depth;
    core.isDynamic = isDynamic;
    core.ports.emplace_back();
    for (int i = 0; i < width; ++i) {
        core.signalNames.append(QString::number(i));
        core.ports.front().positions.push_back(i);
    }
    for (int i = 0; i < 4; ++i)
        core.units[i].port = 0;
    return core;
}

BuiltCore staticCore(int width, QStringList const& expressions, int depth = 64)
{
    BuiltCore core = builtCore(width, false, depth);
    for (QString const& text : expressions) {
        unsigned units = 0;
        QString error;
        core.expressions.emplace_back();
        if (!compileExpression(text, core.expressions.back(), units, error))
            qFatal("%s", qPrintable(error));
        core.expressionUnits |= units;
    }
    return core;
}

} // namespace

class TestChip : public QObject
{
    Q_OBJECT

private slots:
    void words();
    void bursts();
    void triggerPlace_data();
    void triggerPlace();
    void earlyTrigger();
    void windows();
    void secondWindow();
    void stages_data();
    void stages();
    void usedUnits();
    void startRegister();
    void endOfStimulus();
    void captureInit();
    void persistence();
    void nonsenseRegisters();
};

void TestChip::words()
{
    ChipRig rig(staticCore(4, {}), counterRows(4, 16));
    rig.write(33, 5);
    QCOMPARE(rig.readRegister(0x1234), QByteArray(16, '0'));
    QCOMPARE(rig.readRegister(33), QByteArray("0000000000000101"));
    QCOMPARE(rig.read(2), QByteArray("01"));
    QCOMPARE(rig.read(20), QByteArray("00000000000000000101"));
    QCOMPARE(rig.read(0), QByteArray());

    QByteArray const write = "01001" + ChipRig::number(33, 16);
    rig.send(write + QByteArray(15, '1'));
    rig.send(write + QByteArray(17, '1'));
    rig.send("01011" + ChipRig::number(33, 16) + QByteArray(16, '1'));
    rig.send("01101" + ChipRig::number(32, 16) + '1');
    rig.send("0100");
    rig.send("");
    rig.send("00011"); // no core select: its first bit is 0
    QCOMPARE(rig.read(4), QByteArray("0101"));
    QCOMPARE(rig.readRegister(33), QByteArray("0000000000000101"));

    rig.select(3);
    QCOMPARE(rig.read(5), QByteArray("11111"));
    rig.write(33, 9);
    rig.select(18); // only 4 bits count
    QCOMPARE(rig.readRegister(33), QByteArray("0000000000000101"));
    rig.chip().powerUp();
    QCOMPARE(rig.read(3), QByteArray("111")); // no core is selected
    rig.select(2);
    QCOMPARE(rig.readRegister(33), QByteArray(16, '0'));
}

void TestChip::bursts()
{
    ChipRig rig(staticCore(4, {}, 8), counterRows(4, 16));
    QCOMPARE(rig.records(0, 2), QByteArrayList({"00000", "00000"})); // zeros after power-up
    rig.setUp(0, 8, 0, 1);
    rig.write(0, 1);
    QVERIFY(!rig.isRunning());
    QCOMPARE(rig.records(0, 3), QByteArrayList({"10000", "00001", "00010"}));
    QCOMPARE(rig.records(6, 4), QByteArrayList({"00110", "00111", "10000", "00001"}));
    QCOMPARE(rig.records(0xFFFF, 2), QByteArrayList({"00111", "10000"}));
    QCOMPARE(rig.records(0, 0), QByteArrayList());

    // A read of another size is right-justified as well.
    rig.send("00111" + ChipRig::number(1, 16) + ChipRig::number(1, 16));
    QCOMPARE(rig.read(6), QByteArray("000011"));
    QCOMPARE(rig.read(52), "000" + ChipRig::number(0xA5A5A5A5, 32) + "1111111111100001" + '1');
}

void TestChip::triggerPlace_data()
{
    QTest::addColumn<bool>("isDynamic");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("lower");    // what the host takes off for the device
    QTest::addColumn<int>("expected"); // sample in row 0

    // sample 40 fires; the window has 16 rows
    for (int dynamic = 0; dynamic < 2; ++dynamic) {
        for (int lower = 0; lower < 2; ++lower) {
            for (int position : {0, 1, 7, 12, 13, 14})
                QTest::addRow("dynamic %d, lower %d, position %d", dynamic, lower, position)
                    << bool(dynamic) << position << lower << 40 - position;
        }
    }
    QTest::newRow("static, last") << false << 15 << 0 << 25;
    // The mark stands one sample behind: nothing is left of row 0 but the sample behind the
    // trigger.
    QTest::newRow("dynamic, last") << true << 15 << 0 << 41;
}

void TestChip::triggerPlace()
{
    QFETCH(bool, isDynamic);
    QFETCH(int, position);
    QFETCH(int, lower);
    QFETCH(int, expected);
    BuiltCore const core = isDynamic ? builtCore(7, true) : staticCore(7, {"M1"});
    ChipRig rig(core, counterRows(7, 100), lower > 0);
    rig.setUp(1, 16, position, 1, lower);
    rig.setLevel(1, ChipRig::number(40, 7));
    rig.setTable(0, "01");
    rig.write(0, 1);
    QVERIFY(!rig.isRunning());
    QByteArrayList const window = rig.window(0, 16, position);
    QCOMPARE(window.size(), 16);
    QCOMPARE(window.first(), ChipRig::number(unsigned(expected), 7));
    for (int i = 1; i < 16; ++i)
        QCOMPARE(window.at(i), ChipRig::number(unsigned(40 - position + i), 7));
}

void TestChip::earlyTrigger()
{
    ChipRig rig(staticCore(7, {"M0"}), counterRows(7, 100));
    rig.setUp(1, 8, 5, 1);
    rig.setLevel(0, ChipRig::number(2, 7));
    rig.write(0, 1);
    QByteArrayList const window = rig.window(0, 8, 5);
    QCOMPARE(window.mid(0, 3), QByteArrayList({"0000000", "0000000", "0000000"}));
    QCOMPARE(window.mid(3), counterRows(7, 5));
}

void TestChip::windows()
{
    ChipRig rig(staticCore(7, {"M0"}), counterRows(7, 128));
    rig.setUp(1, 8, 2, 3);                        // three windows take the room of four
    rig.setUnit(0, "0000011", "0000111", "0", 0); // every eighth sample from 3 on
    rig.write(0, 1);
    QVERIFY(!rig.isRunning());
    QCOMPARE(rig.window(0, 8, 2), counterRows(7, 128).mid(1, 8));
    // The next window begins with sample 9 and finds 11.
    QCOMPARE(rig.window(16, 8, 2), counterRows(7, 128).mid(9, 8));
    QCOMPARE(rig.window(32, 8, 2), counterRows(7, 128).mid(17, 8));
    QCOMPARE(rig.records(48, 1), QByteArrayList{"00000000"});
    QCOMPARE(rig.records(8, 1),
             QByteArrayList{"00000000"}); // the ring is the amount, not the share
}

/// Counters begin full in every window; bases have 16 bits.
void TestChip::secondWindow()
{
    BuiltCore core = staticCore(7, {"M0|M1"}, 0x20000);
    core.units[0].hasCounter = true;
    ChipRig rig(core, counterRows(7, 100));
    rig.setUp(1, 4, 0, 2);
    rig.setUnit(0, "0", "0", "0", 0, 3); // every third sample
    rig.setLevel(1, ChipRig::number(1, 7));
    rig.write(0, 1); // the first window takes 0 to 4, the second counts 5, 6, 7
    QCOMPARE(rig.window(0, 4, 0), counterRows(7, 100).mid(7, 4));
}

void TestChip::stages_data()
{
    QTest::addColumn<bool>("isDynamic");
    QTest::addColumn<int>("expressions");
    QTest::addColumn<int>("expected");

    // unit 0 fires at 10, 30 and 50, unit 1 at 10 and 40
    QTest::newRow("static") << false << 2 << 40;
    QTest::newRow("dynamic") << true << 2 << 40;
    QTest::newRow("dynamic, first only") << true << 1 << 10;
    QTest::newRow("dynamic, three") << true << 3 << 50;
    QTest::newRow("dynamic, one that was not loaded") << true << 4 << -1;
    QTest::newRow("static, one that was not built") << false << 3 << -1;
}

void TestChip::stages()
{
    QFETCH(bool, isDynamic);
    QFETCH(int, expressions);
    QFETCH(int, expected);
    QByteArrayList rows;
    for (int k = 0; k < 100; ++k)
        rows.append(QByteArray(1, k == 10 || k == 30 || k == 50 ? '1' : '0') +
                    (k == 10 || k == 40 ? '1' : '0') + ChipRig::number(unsigned(k), 7));
    ChipRig rig(isDynamic ? builtCore(9, true) : staticCore(9, {"M0", "M1"}), rows);
    rig.setUp(expressions, 8, 0, 1);
    rig.setUnit(0, "100000000", "100000000", "0", 0);
    rig.setUnit(1, "010000000", "010000000", "0", 0);
    rig.setTable(0, "0101");
    rig.setTable(1, "0011");
    rig.setTable(2, "0101");
    rig.write(0, 1);
    QCOMPARE(rig.isRunning(), expected < 0);
    if (expected >= 0)
        QCOMPARE(rig.window(0, 8, 0).first().right(7), ChipRig::number(unsigned(expected), 7));
}

/// The index of a table counts the units whose control register was written since register 32.
void TestChip::usedUnits()
{
    ChipRig rig(builtCore(7, true), counterRows(7, 100));
    auto const firstSample = [&rig](QByteArray const& table) {
        rig.chip().powerUp();
        rig.select(2);
        rig.setLevel(0, ChipRig::number(5, 7)); // forgotten by the next line
        rig.setUp(1, 8, 0, 1);
        rig.setLevel(1, ChipRig::number(20, 7));
        rig.setLevel(9, ChipRig::number(30, 7)); // was not built
        rig.setLevel(3, ChipRig::number(30, 7));
        rig.setTable(0, table);
        rig.write(0, 1);
        return rig.isRunning() ? -1 : rig.window(0, 8, 0).first().toInt(nullptr, 2);
    };
    QCOMPARE(firstSample("01000000"), 20);
    QCOMPARE(firstSample("00100000"), 30);
    QCOMPARE(firstSample("00001000"), -1);
    QCOMPARE(firstSample("10000000"), 0);
}

void TestChip::startRegister()
{
    ChipRig rig(staticCore(7, {"M0"}), counterRows(7, 128));
    QVERIFY(!rig.isRunning());
    rig.setUp(1, 8, 4, 2);
    rig.setLevel(0, "1111111"); // sample 127, and no second time
    rig.write(0, 1);
    QVERIFY(rig.isRunning());
    rig.write(0, 0);
    QVERIFY(!rig.isRunning());
    rig.write(0, 7);
    QVERIFY(!rig.isRunning());

    rig.chip().powerUp();
    rig.select(2);
    rig.setUp(1, 8, 4, 2);
    rig.setLevel(0, "1111111");
    rig.write(0, 3); // arms and forces, both windows at their first sample
    QVERIFY(!rig.isRunning());
    QCOMPARE(rig.window(0, 8, 4).mid(4), counterRows(7, 128).mid(0, 4));
    QCOMPARE(rig.window(32, 8, 4).mid(4), counterRows(7, 128).mid(4, 4));
    rig.setUp(1, 8, 4, 1);
    rig.setLevel(0, "0001010");
    rig.write(0, 1); // goes on at sample 8
    QCOMPARE(rig.window(0, 8, 4).mid(2), counterRows(7, 128).mid(8, 6));
}

void TestChip::endOfStimulus()
{
    ChipRig rig(staticCore(7, {"M0"}), counterRows(7, 100));
    rig.setUp(1, 8, 2, 2);
    rig.setLevel(0, ChipRig::number(97, 7));
    rig.write(0, 1);
    QVERIFY(rig.isRunning()); // for the second window
    QCOMPARE(rig.window(0, 8, 2),
             counterRows(7, 100).mid(95) + QByteArrayList({"1100011", "1100011", "1100011"}));
    rig.write(0, 3); // while running: the next sample
    QVERIFY(!rig.isRunning());
    QCOMPARE(rig.window(32, 8, 2).mid(2),
             QByteArrayList({"1100011", "1100011", "1100011", "1100011", "1100011", "1100011"}));
    QCOMPARE(rig.window(0, 8, 2).first(), ChipRig::number(95, 7)); // it was not armed anew
    // A level that stands fires no more.
    rig.setLevel(0, "1100011");
    rig.write(0, 1);
    QVERIFY(rig.isRunning());
}

void TestChip::captureInit()
{
    BuiltCore core = staticCore(7, {"M0"});
    core.hasCaptureInit = true;
    ChipRig rig(core, counterRows(7, 100));
    rig.setUp(1, 8, 3, 2);
    rig.setUnit(0, "0", "0", "0", 0); // always
    QCOMPARE(rig.readRegister(3), ChipRig::number(1, 16));
    QVERIFY(!rig.isRunning());
    rig.write(0, 1);
    QCOMPARE(rig.readRegister(3), ChipRig::number(0, 16));
    QVERIFY(!rig.isRunning());
    QCOMPARE(rig.window(0, 8, 3), counterRows(7, 8));
    // Only the first window waits.
    QCOMPARE(rig.window(32, 8, 3).mid(3), counterRows(7, 100).mid(8, 5));
    rig.chip().powerUp();
    rig.select(2);
    QCOMPARE(rig.readRegister(3), ChipRig::number(1, 16));
    rig.write(0, 0);
    QCOMPARE(rig.readRegister(3), ChipRig::number(0, 16));

    ChipRig plain(staticCore(7, {}), counterRows(7, 8));
    QCOMPARE(plain.readRegister(3), ChipRig::number(0, 16));
}

/// Registers and tables survive arming; the sample before counts across windows and armings.
void TestChip::persistence()
{
    ChipRig rig(builtCore(2, true), {"00", "01", "10", "11", "00", "01", "10", "11", "00", "01"});
    rig.setUp(1, 4, 0, 1);
    rig.setUnit(0, "10", "00", "10", 0); // the first signal falls
    rig.setTable(0, "01");
    rig.write(0, 1);
    QCOMPARE(rig.window(0, 4, 0), QByteArrayList({"00", "01", "10", "11"}));
    rig.write(0, 1); // its first sample falls against the last one of the window before
    QCOMPARE(rig.window(0, 4, 0), QByteArrayList({"00", "01", "01", "01"}));
}

/// Whatever stands in the registers, arming and forcing come to an end.
void TestChip::nonsenseRegisters()
{
    quint64 const most = 0xFFFFFFFF;
    QList<QList<quint64>> const contents{
        {most, most, most}, {most, most - 10, 0}, {0, 0, most}, {0, 0, 0}};
    for (QList<quint64> const& content : contents) {
        ChipRig rig(staticCore(40, {}), counterRows(40, 100));
        rig.write(32, most);
        for (int i = 0; i < content.size(); ++i)
            rig.write(33 + unsigned(i), content.at(i));
        rig.write(0, 1);
        rig.write(0, 3);
        QCOMPARE(rig.records(0xFFFF, 64).size(), 64);
    }
}

QTEST_GUILESS_MAIN(TestChip)
#include "tst_chip.moc"
