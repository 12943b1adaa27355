#include "image/matchvalue.h"
#include "model/capturecore.h"

#include <QTest>

#include <limits>

using namespace VEK;

class MatchValueTest : public QObject
{
    Q_OBJECT

private slots:
    void changesRadix()
    {
        struct
        {
            QString text;
            int from;
            int to;
            QString changed;
        } const cases[] = {
            {"0000", 2, 16, "0"},
            {"00001010", 2, 16, "A"},
            {"0ff", 16, 10, "255"},
            {"777", 8, 2, "111111111"},
            {"1777", 10, 8, "3361"},
            {"000", 10, 2, "0"},
            {"1000000000", 10, 16, "3B9ACA00"},
            {"4294967296", 10, 16, "100000000"},
            {"18446744073709551615", 10, 16, "FFFFFFFFFFFFFFFF"},
            {QString(128, '1'), 2, 10, "340282366920938463463374607431768211455"},
            {"340282366920938463463374607431768211456", 10, 16, "1" + QString(32, '0')},
            {"1X0", 2, 16, "00000"}, // no number, or no radix
            {"8", 8, 2, "00000"},
            {"-1", 10, 2, "00000"},
            {"", 10, 2, "00000"},
            {"1", 10, 7, "00000"},
        };
        for (auto const& [text, from, to, changed] : cases)
            QCOMPARE(changeRadix(text, from, to, 5), changed);
    }

    /// Every power of two, less one, in all radices: the digit count fits and nothing is lost.
    void widthsComeBack()
    {
        for (int width :
             {1, 2, 3, 4, 5, 7, 8, 9, 10, 31, 32, 33, 53, 54, 63, 64, 65, 128, 600, 4096}) {
            QString const ones(width, '1');
            QString const top = BitWidthAdjust("1", width).replace(0, 1, "1");
            for (int radix : {2, 8, 10, 16}) {
                QCOMPARE(changeRadix(ones, 2, radix, 0).size(), digitCount(width, radix));
                QCOMPARE(textOfBits(top, radix).size(), digitCount(width, radix));
                for (QString const& bits : {ones, top})
                    QCOMPARE(bitsOfText(textOfBits(bits, radix), radix, width), bits);
            }
        }
        QCOMPARE(digitCount(8, 7), 0);
    }

    void excessIsCut()
    {
        QCOMPARE(bitsOfText("999", 10, 8), QString("11100111"));
        QCOMPARE(bitsOfText("F", 16, 1), QString("1"));
        QCOMPARE(bitsOfText("8", 10, 1), QString("0"));
        QCOMPARE(bitsOfText("1XR", 2, 5), QString("001XR"));
        QCOMPARE(bitsOfText("G", 16, 3), QString("000"));
        QCOMPARE(textOfBits("1X", 10), QString("0"));

        QCOMPARE(BitWidthAdjust("1234", 2), QString("34"));
        QCOMPARE(BitWidthAdjust("12", 4), QString("0012"));
        QCOMPARE(BitWidthAdjust("12", -1), QString());
        QVERIFY(checkExcessBitWidth("12", 2) && !checkExcessBitWidth("12", 1));
    }

    /// Kinds that the dialog's tests do not type into.
    void patterns()
    {
        QCOMPARE(valuePattern(2, FuncEqual, MatchRangeEdges), QString("[01XRFBN]*"));
        QCOMPARE(valuePattern(2, FuncNotEqual, MatchExtendedEdges), QString("[01XRFBN]*"));
        QCOMPARE(valuePattern(2, FuncEqual, 7), QString("[01X]*"));
        QCOMPARE(valuePattern(2, FuncNotInRange, MatchRangeEdges), QString("[01]*"));
    }

    void counterLimits()
    {
        QCOMPARE(counterLimit(-5), 1);
        QCOMPARE(counterLimit(2), 4);
        QCOMPARE(counterLimit(30), 1 << 30);
        QCOMPARE(counterLimit(31), std::numeric_limits<int>::max());
        QCOMPARE(counterLimit(4096), std::numeric_limits<int>::max());
    }
};

QTEST_APPLESS_MAIN(MatchValueTest)
#include "tst_matchvalue.moc"
