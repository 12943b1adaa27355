#include "simulator/matchlogic.h"
#include "simulator/truthtable.h"

#include <QtTest>

using namespace VEK::Simulator;

namespace {

QBitArray bits(QByteArray const& text)
{
    QBitArray result(text.size());
    for (int i = 0; i < text.size(); ++i)
        result.setBit(i, text.at(i) == '1');
    return result;
}

std::vector<quint64> row(QByteArray const& text)
{
    std::vector<quint64> words(std::size_t(SampleTable::wordsFor(text.size())));
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) == '1')
            words[std::size_t(i / 64)] |= SampleTable::bitOf(i);
    }
    return words;
}

} // namespace

class TestMatchLogic : public QObject
{
    Q_OBJECT

private slots:
    void fires_data();
    void fires();
    void wires();
    void expressions_data();
    void expressions();
    void badExpressions_data();
    void badExpressions();
};

void TestMatchLogic::fires_data()
{
    QTest::addColumn<QByteArray>("a");
    QTest::addColumn<QByteArray>("b");
    QTest::addColumn<QByteArray>("c");
    QTest::addColumn<QByteArray>("control");
    QTest::addColumn<int>("reload"); // -1: no counter
    QTest::addColumn<QByteArray>("samples");
    QTest::addColumn<QByteArray>("expected");

    QByteArray const two("00 01 10 11 11 10 00 01");
    auto const add = [&two](char const* name, char const* a, char const* b, char const* c,
                            char const* control, char const* expected) {
        QTest::newRow(name) << QByteArray(a) << QByteArray(b) << QByteArray(c)
                            << QByteArray(control) << -1 << two << QByteArray(expected);
    };
    // the first sample has no edge; the last is 01 after 00
    add("any", "00", "00", "00", "0000", "11111111");
    add("level 1x", "10", "10", "00", "0000", "00111100");
    add("level 01", "01", "11", "00", "0000", "01000001");
    add("level without compare", "10", "00", "00", "0000", "11111111");
    add("rising, any", "00", "00", "10", "0000", "00100000");
    add("falling, any", "10", "00", "10", "0000", "00000010");
    add("either, any", "00", "10", "10", "0000", "00100010");
    add("none, any", "10", "10", "10", "0000", "11011101");
    add("rising and level 1", "01", "01", "10", "0000", "00000000");
    add("any, rising", "00", "00", "01", "0000", "01010001");
    add("not level 01", "01", "11", "00", "0001", "10111110");
    add("not any", "00", "00", "00", "0001", "00000000");
    add(">", "01", "00", "00", "0010", "00111100");
    add("<", "11", "01", "00", "0011", "10000010");
    add(">=", "01", "00", "11", "0100", "01111101");
    add("<=", "00", "01", "00", "0101", "11000011");
    add("in range", "01", "10", "00", "0110", "01100101");
    add("not in range", "01", "10", "00", "0111", "10011010");
    add("in an empty range", "10", "01", "00", "0110", "00000000");
    add("a field wider than the port", "1101", "0011", "1000", "0000", "01000001");
    add("a field narrower than the port", "1", "1", "0", "0000", "01011001");

    QByteArray const low(65, '0'), high = low + "1 1" + low + ' ' + low + '1'; // over a word's end
    QTest::newRow("wide >") << low + '1' << low + '0' << low + '0' << QByteArray("0010") << -1
                            << high << QByteArray("010");
    auto const count = [](char const* name, char const* control, int reload, char const* samples,
                          char const* expected) {
        QTest::newRow(name) << QByteArray("1") << QByteArray("1") << QByteArray("0")
                            << QByteArray(control) << reload << QByteArray(samples)
                            << QByteArray(expected);
    };
    count("every match", "0000", 0, "1 1 0 1", "1101");
    count("every second match", "0000", 1, "1 0 1 1 0 1 1", "0010010");
    count("every third in a row", "1000", 2, "1 1 0 1 1 1 1 1 1", "000001001");
    count("continuous without a counter", "1000", -1, "1 0 1", "101");
}

void TestMatchLogic::fires()
{
    QFETCH(QByteArray, a);
    QFETCH(QByteArray, b);
    QFETCH(QByteArray, c);
    QFETCH(QByteArray, control);
    QFETCH(int, reload);
    QFETCH(QByteArray, samples);
    QFETCH(QByteArray, expected);
    QByteArrayList const rows = samples.split(' ');

    BuiltPort built;
    for (int i = 0; i < rows.first().size(); ++i)
        built.positions.push_back(i);
    PortWires port(built);
    QByteArray const counter = reload < 0 ? "0000" : "00" + QByteArray::number(reload, 2);
    MatchLogic unit({bits(a), bits(b), bits(c), bits("000" + control), bits(counter)}, port.width(),
                    reload >= 0);
    port.sample(row(rows.first()).data());
    QByteArray fired;
    for (QByteArray const& sample : rows) {
        port.sample(row(sample).data());
        fired += unit.fires(port) ? '1' : '0';
    }
    QCOMPARE(fired, expected);
}

/// Signals come to the port from anywhere in a row, in any order, more than once.
void TestMatchLogic::wires()
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
    port.sample(row(text).data());
    std::vector<quint64> const words = row(expected);
    QCOMPARE(std::vector<quint64>(port.now(), port.now() + words.size()), words);
}

void TestMatchLogic::expressions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<unsigned>("units");
    QTest::addColumn<QByteArray>("expected"); // combinations 0 to 7 of M0, M1, M2

    QTest::newRow("unit") << "M1" << 2u << QByteArray("00110011");
    QTest::newRow("and before or") << "M0|M1&M2" << 7u << QByteArray("01010111");
    QTest::newRow("and before xor") << "M0^M1&M2" << 7u << QByteArray("01010110");
    QTest::newRow("xor before or") << "M0|M1^M2" << 7u << QByteArray("01111101");
    QTest::newRow("brackets") << "(M0|M1)&M2" << 7u << QByteArray("00000111");
    QTest::newRow("not") << "!M0&!(M1|M2)" << 7u << QByteArray("10000000");
    QTest::newRow("not not") << "!!M2" << 4u << QByteArray("00001111");
    QTest::newRow("blanks") << " M0 &\tM2 " << 5u << QByteArray("00000101");
    QTest::newRow("unused high units") << "M0|M15&M10" << 0x8401u << QByteArray("01010101");
    QTest::newRow("not of a high unit") << "!M6&M0" << 0x41u << QByteArray("01010101");
}

void TestMatchLogic::expressions()
{
    QFETCH(QString, text);
    QFETCH(unsigned, units);
    QFETCH(QByteArray, expected);
    TruthTable table;
    unsigned named = 0;
    QString error;
    QVERIFY2(compileExpression(text, table, named, error), qPrintable(error));
    QCOMPARE(named, units);
    QByteArray values;
    for (unsigned i = 0; i < 8; ++i)
        values += table.at(i) ? '1' : '0';
    QCOMPARE(values, expected);
    QCOMPARE(table.at(0x8400), text.contains("M15") || table.at(0));
}

void TestMatchLogic::badExpressions_data()
{
    QTest::addColumn<QString>("text");
    for (char const* text :
         {"", "&M0", "M0&", "M0 M1", "M0!", "(M0", "M0)", "()", "M16", "N0", "!"})
        QTest::newRow(text) << QString(text);
    QTest::newRow("endless") << QString("M0|").repeated(5000) + "M0";
    QTest::newRow("deep") << QString(4095, '(');
}

void TestMatchLogic::badExpressions()
{
    QFETCH(QString, text);
    TruthTable table;
    unsigned units = 0;
    QString error;
    QVERIFY(!compileExpression(text, table, units, error));
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(TestMatchLogic)
#include "tst_matchlogic.moc"
