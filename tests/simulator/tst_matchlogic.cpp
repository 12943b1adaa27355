#include "tests/support/bittext.h"
#include "simulator/matchlogic.h"
#include "simulator/truthtable.h"

#include <QtTest>

using namespace VEK::Simulator;

class TestMatchLogic : public QObject
{
    Q_OBJECT

private slots:
    void fires_data()
    {
        QTest::addColumn<QByteArray>("registers"); // A, B, C and the end of control
        QTest::addColumn<int>("reload");           // -1: no counter
        QTest::addColumn<QByteArray>("samples");
        QTest::addColumn<QByteArray>("expected");
        auto const add = [](char const* name, char const* registers, char const* expected,
                            int reload = -1,
                            QByteArray const& samples = "00 01 10 11 11 10 00 01") {
            QTest::newRow(name) << QByteArray(registers) << reload << samples
                                << QByteArray(expected);
        };
        // the first sample has no edge; the last is 01 after 00
        add("level 01", "01 11 00 0000", "01000001");
        add("level without compare", "10 00 00 0000", "11111111");
        add("rising, any", "00 00 10 0000", "00100000");
        add("falling, any", "10 00 10 0000", "00000010");
        add("either, any", "00 10 10 0000", "00100010");
        add("none, any", "10 10 10 0000", "11011101");
        add("rising and level 1", "01 01 10 0000", "00000000");
        add("not level 01", "01 11 00 0001", "10111110");
        add(">", "01 00 00 0010", "00111100");
        add("<", "11 01 00 0011", "10000010");
        add(">=", "01 00 11 0100", "01111101");
        add("<=", "00 01 00 0101", "11000011");
        add("in range", "01 10 00 0110", "01100101");
        add("not in range", "01 10 00 0111", "10011010");
        add("in an empty range", "10 01 00 0110", "00000000");
        add("a field wider than the port", "1101 0011 1000 0000", "01000001");
        add("a field narrower than the port", "1 1 0 0000", "01011001");
        QByteArray const low(65, '0'); // over a word's end
        add("wide >", (low + "1 " + low + "0 " + low + "0 0010").constData(), "010", -1,
            low + "1 1" + low + ' ' + low + '1');
        add("every second match", "1 1 0 0000", "0010010", 1, "1 0 1 1 0 1 1");
        add("every third in a row", "1 1 0 1000", "000001001", 2, "1 1 0 1 1 1 1 1 1");
        add("continuous without a counter", "1 1 0 1000", "101", -1, "1 0 1");
    }

    void fires()
    {
        QFETCH(QByteArray, registers);
        QFETCH(int, reload);
        QFETCH(QByteArray, samples);
        QByteArrayList const fields = registers.split(' '), rows = samples.split(' ');
        BuiltPort built;
        for (int i = 0; i < rows.first().size(); ++i)
            built.positions.push_back(i);
        PortWires port(built);
        MatchLogic unit({bits(fields.at(0)), bits(fields.at(1)), bits(fields.at(2)),
                         bits("000" + fields.at(3)), bits(number(unsigned(qMax(0, reload)), 4))},
                        port.width(), reload >= 0);
        port.sample(rowWords(rows.first()).data());
        QByteArray fired;
        for (QByteArray const& sample : rows) {
            port.sample(rowWords(sample).data());
            fired += unit.fires(port) ? '1' : '0';
        }
        QTEST(fired, "expected");
    }

    /// Signals come to the port from anywhere in a row, in any order, more than once.
    void wires()
    {
        QByteArray text, expected;
        for (int i = 0; i < 200; ++i)
            text += "0110100110010110"[(i * 7 + i / 5) % 16];
        BuiltPort built;
        for (int i = 0; i < 90; ++i)
            built.positions.push_back(i < 40 ? 50 + i : i < 50 ? i * i % 200 : 190 - i);
        for (int position : built.positions)
            expected += text.at(position);
        PortWires port(built);
        port.sample(rowWords(text).data());
        std::vector<quint64> const words = rowWords(expected);
        QCOMPARE(std::vector<quint64>(port.now(), port.now() + words.size()), words);
    }

    void expressions()
    {
        struct
        {
            char const* text;
            unsigned units;
            char const* expected; // combinations 0 to 7 of M0, M1, M2
        } const rows[] = {{"M0|M1&M2", 7, "01010111"},      {"M0^M1&M2", 7, "01010110"},
                          {"M0|M1^M2", 7, "01111101"},      {"(M0|M1)&M2", 7, "00000111"},
                          {"!M0&!(M1|M2)", 7, "10000000"},  {"!!M2", 4, "00001111"},
                          {" M0 &\tm~1M2 ", 5, "00000101"}, {"M0|M15&M10", 0x8401, "01010101"},
                          {"!M6&M0", 0x41, "01010101"},     {"M16&M00", 3, "00010001"}};
        for (auto const& row : rows) {
            TruthTable table;
            unsigned units = 0;
            QString error;
            QVERIFY2(compileExpression(row.text, table, units, error), qPrintable(error));
            QCOMPARE(units, row.units);
            QByteArray values;
            for (unsigned i = 0; i < 8; ++i)
                values += table.at(i) ? '1' : '0';
            QCOMPARE(values, QByteArray(row.expected));
            QCOMPARE(table.at(0x8400), strstr(row.text, "M15") || table.at(0));
        }
    }

    void badExpressions()
    {
        QStringList rows = QString(",&M0,M0&,M0 M1,M0!,(M0,M0),(),M,N0,M0&N").split(',');
        rows << QString("M0|").repeated(5000) + "M0" << QString(4095, '(');
        for (QString const& text : rows) {
            TruthTable table;
            unsigned units = 0;
            QString error;
            QVERIFY2(!compileExpression(text, table, units, error), qPrintable(text));
            QVERIFY(!error.isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestMatchLogic)
#include "tst_matchlogic.moc"
