#include "model/bits.h"
#include "simulator/litechip.h"

#include <QTest>

using namespace VEK;
using namespace VEK::Simulator;

namespace {

/// Signals a and b of row k are the two low bits of k; five rows.
LiteChip chipOf(int amount, bool isRotated, bool captureInit)
{
    BuiltLiteCore core;
    core.amount = amount;
    core.isRotated = isRotated;
    core.captureInit = captureInit;
    core.signalNames = QStringList{"a", "b"};
    SampleTable samples(2);
    for (quint64 k = 0; k < 5; ++k) {
        quint64 const row = k << 62;
        samples.append(&row);
    }
    LiteChip chip(core, samples);
    chip.powerUp();
    return chip;
}

void send(LiteChip& chip, QString const& word)
{
    chip.write(str2bit(word));
}

QString readRegister(LiteChip& chip, QString const& address)
{
    send(chip, "01101" + address);
    return bit2str(chip.read(2));
}

QString readMemory(LiteChip& chip, int from, int count)
{
    send(chip, "00111" + bit2str(int16ToBit(static_cast<unsigned short>(from))) + "00");
    return bit2str(chip.read(2 * count + 1));
}

QString const Start = "0000000000000000";
QString const Init = "0000000000000010";

} // namespace

class TestLiteChip : public QObject
{
    Q_OBJECT

private slots:
    void armedByItsStartRegister()
    {
        LiteChip chip = chipOf(3, false, false);
        QCOMPARE(readRegister(chip, Init), QString("01"));
        QCOMPARE(readMemory(chip, 0, 2), QString("00001")); // nothing captured
        send(chip, "01001" + Start + "01");
        QCOMPARE(readRegister(chip, Start), QString("00"));
        // from the highest address down, zeros beyond the amount, one tail bit
        QCOMPARE(readMemory(chip, 0, 4), QString("00"
                                                 "10"
                                                 "01"
                                                 "00"
                                                 "1"));
        // the next capture goes on behind; the last row of the stimulus stands
        send(chip, "01001" + Start + "01");
        QCOMPARE(readMemory(chip, 0, 3), QString("00"
                                                 "00"
                                                 "11"
                                                 "1"));
        QCOMPARE(readMemory(chip, 1, 1), QString("00"
                                                 "1"));
        chip.powerUp();
        QCOMPARE(readMemory(chip, 0, 3), QString("0000001"));
        // words of another width, and other registers, are dropped
        send(chip, "01001" + Start + "1");
        send(chip, "01001" + Init + "11");
        send(chip, "1");
        QCOMPARE(readMemory(chip, 0, 3), QString("0000001"));
    }

    void initialCapture()
    {
        LiteChip chip = chipOf(3, true, true);
        QCOMPARE(readRegister(chip, Init), QString("00"));
        QCOMPARE(readMemory(chip, 1, 2), QString("01"
                                                 "00"
                                                 "1"));
        QCOMPARE(readRegister(chip, Init), QString("00")); // one row is still unread
        QCOMPARE(readMemory(chip, 0, 1), QString("10"
                                                 "1")); // the last sample, on a turned memory
        QCOMPARE(readRegister(chip, Init), QString("01"));
        chip.powerUp();
        QCOMPARE(readRegister(chip, Init), QString("00"));
        send(chip, "01001" + Start + "00");
        QCOMPARE(readRegister(chip, Init), QString("01"));
    }
};

QTEST_GUILESS_MAIN(TestLiteChip)
#include "tst_litechip.moc"
