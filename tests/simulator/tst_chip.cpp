#include "chiprig.h"

#include <QtTest>

using namespace VEK::Simulator;

namespace {

/// `count` rows of a counter of `width` bits.
QByteArrayList counterRows(int width, int count)
{
    QByteArrayList rows;
    for (int k = 0; k < count; ++k)
        rows.append(number(unsigned(k), width));
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
    void words()
    {
        ChipRig rig(staticCore(4, {}), counterRows(4, 16));
        rig.write(33, 5);
        QCOMPARE(rig.readRegister(0x1234), QByteArray(16, '0'));
        QCOMPARE(rig.readRegister(33), QByteArray("0000000000000101"));
        QCOMPARE(rig.read(2), QByteArray("01"));
        QCOMPARE(rig.read(20), QByteArray("00000000000000000101"));

        QByteArray const write = "01001" + number(33, 16);
        rig.send(write + QByteArray(15, '1'));
        rig.send(write + QByteArray(17, '1'));
        rig.send("01101" + number(32, 16) + '1');
        rig.send("00011"); // no core select: its first bit is 0
        QCOMPARE(rig.read(4), QByteArray("0101"));
        QCOMPARE(rig.readRegister(33), QByteArray("0000000000000101"));

        rig.select(3);
        QCOMPARE(rig.read(5), QByteArray("11111"));
        rig.write(33, 9);
        rig.select(18); // only 4 bits count
        QCOMPARE(rig.readRegister(33), QByteArray("0000000000000101"));
    }

    void bursts()
    {
        ChipRig rig(staticCore(4, {}, 8), counterRows(4, 16));
        QCOMPARE(rig.records(0, 2), QByteArrayList({"00000", "00000"})); // zeros after power-up
        rig.setUp(0, 8, 0, 1);
        rig.write(0, 1);
        QVERIFY(!rig.isRunning());
        QCOMPARE(rig.records(6, 4), QByteArrayList({"00110", "00111", "10000", "00001"}));
        rig.send("00111" + number(1, 16) + number(1, 16)); // read in another size
        QCOMPARE(rig.read(52), "000" + number(0xA5A5A5A5, 32) + "1111111111100001" + '1');
    }

    /// Sample 40 fires; the window has 16 rows. `lower` is what a host takes off for the device.
    void triggerPlace()
    {
        struct
        {
            bool isDynamic;
            int position, lower, first;
        } const rows[] = {{false, 0, 0, 40}, {false, 13, 0, 27}, {false, 15, 0, 25},
                          {false, 7, 1, 33}, {true, 0, 0, 40},   {true, 14, 0, 26},
                          {true, 7, 1, 33},  {true, 15, 0, 41}}; // the mark is one sample behind
        for (auto const& row : rows) {
            BuiltCore const core = row.isDynamic ? builtCore(7, true) : staticCore(7, {"M1"});
            ChipRig rig(core, counterRows(7, 100), row.lower > 0);
            rig.setUp(1, 16, row.position, 1, row.lower);
            rig.setLevel(1, number(40, 7));
            rig.setTable(0, "01");
            rig.write(0, 1);
            QVERIFY(!rig.isRunning());
            QByteArrayList const window = rig.window(0, 16, row.position);
            QCOMPARE(window.first(), number(unsigned(row.first), 7));
            QCOMPARE(window.mid(1), counterRows(7, 100).mid(41 - row.position, 15));
        }
    }

    /// Unit 0 fires at 10, 30 and 50, unit 1 at 10 and 40.
    void stages()
    {
        struct
        {
            bool isDynamic;
            int expressions, expected;
        } const cases[] = {{false, 2, 40}, {false, 3, -1}, {true, 3, 50}, {true, 4, -1}};
        QByteArrayList rows;
        for (int k = 0; k < 100; ++k)
            rows.append((k == 10 || k == 30 || k == 50 ? "1" : "0") +
                        QByteArray(k == 10 || k == 40 ? "1" : "0") + number(unsigned(k), 7));
        for (auto const& stage : cases) {
            ChipRig rig(stage.isDynamic ? builtCore(9, true) : staticCore(9, {"M0", "M1"}), rows);
            rig.setUp(stage.expressions, 8, 0, 1);
            rig.setUnit(0, "100000000", "100000000", "0", 0);
            rig.setUnit(1, "010000000", "010000000", "0", 0);
            rig.setTable(0, "0101");
            rig.setTable(1, "0011");
            rig.setTable(2, "0101");
            rig.write(0, 1);
            QCOMPARE(rig.isRunning(), stage.expected < 0);
            if (stage.expected >= 0)
                QCOMPARE(rig.window(0, 8, 0).first(), rows.at(stage.expected));
        }
    }

    /// The index of a table counts the units whose control register was written since register 32.
    void usedUnits()
    {
        ChipRig rig(builtCore(7, true), counterRows(7, 100));
        auto const firstSample = [&rig](QByteArray const& table) {
            rig.chip().powerUp();
            rig.select(2);
            rig.setLevel(0, number(5, 7)); // forgotten by the next line
            rig.setUp(1, 8, 0, 1);
            rig.setLevel(1, number(20, 7));
            rig.setLevel(9, number(30, 7)); // was not built
            rig.setLevel(3, number(30, 7));
            rig.setTable(0, table);
            rig.write(0, 1);
            return rig.isRunning() ? -1 : rig.window(0, 8, 0).first().toInt(nullptr, 2);
        };
        QCOMPARE(firstSample("01000000"), 20);
        QCOMPARE(firstSample("00100000"), 30);
        QCOMPARE(firstSample("00001000"), -1);
        QCOMPARE(firstSample("10000000"), 0);
    }

    void endOfStimulus()
    {
        ChipRig rig(staticCore(7, {"M0"}), counterRows(7, 100));
        rig.setUp(1, 8, 2, 2);
        rig.setLevel(0, number(97, 7));
        rig.write(0, 1);
        QVERIFY(rig.isRunning()); // for the second window
        QByteArray const last = "1100011";
        QCOMPARE(rig.window(0, 8, 2),
                 counterRows(7, 100).mid(95) + QByteArrayList({last, last, last}));
        rig.write(0, 3); // while running: the next sample, and not armed anew
        QVERIFY(!rig.isRunning());
        QCOMPARE(rig.window(32, 8, 2).mid(2), QByteArrayList({last, last, last, last, last, last}));
        QCOMPARE(rig.window(0, 8, 2).first(), number(95, 7));
        rig.setLevel(0, last); // a level that stands fires no more
        rig.write(0, 1);
        QVERIFY(rig.isRunning());
        rig.write(0, 0);
        QVERIFY(!rig.isRunning());
    }

    /// Registers and tables survive arming; the sample before counts across windows and armings.
    void persistence()
    {
        ChipRig rig(builtCore(2, true),
                    {"00", "01", "10", "11", "00", "01", "10", "11", "00", "01"});
        rig.setUp(1, 4, 0, 1);
        rig.setUnit(0, "10", "00", "10", 0); // the first signal falls
        rig.setTable(0, "01");
        rig.write(0, 1);
        QCOMPARE(rig.window(0, 4, 0), QByteArrayList({"00", "01", "10", "11"}));
        rig.write(0, 1); // its first sample falls against the last one of the window before
        QCOMPARE(rig.window(0, 4, 0), QByteArrayList({"00", "01", "01", "01"}));
    }

    /// Whatever stands in the registers, arming and forcing come to an end.
    void nonsenseRegisters()
    {
        quint64 const most = 0xFFFFFFFF;
        quint64 const contents[][3] = {{most, most, most}, {most, most - 10, 0}, {0, 0, most}};
        for (auto const& content : contents) {
            ChipRig rig(staticCore(40, {}), counterRows(40, 100));
            rig.write(32, most);
            for (unsigned i = 0; i < 3; ++i)
                rig.write(33 + i, content[i]);
            rig.write(0, 1);
            rig.write(0, 3);
            QCOMPARE(rig.records(0xFFFF, 64).size(), 64);
        }
    }
};

QTEST_GUILESS_MAIN(TestChip)
#include "tst_chip.moc"
