#include "image/expression.h"
#include "image/truthtable.h"
#include "tests/image/oracle.h"

#include <QtTest>

using namespace VEK;

namespace {

QStringList tokens(QString const& text)
{
    return text.split(' ', Qt::SkipEmptyParts);
}

/// The table of an expression, one evaluation a row. A letter that is no unit has no value.
QString tableRowByRow(QString const& expression)
{
    QByteArray const infix = changeExpItem(expression).toLatin1();
    QByteArray postfix(infix.size() + 1, 'z');
    translet(infix.constData(), postfix.data());
    char letters[27];
    getOperand(postfix.constData(), letters);
    sort(letters);
    int const count = int(qstrlen(letters));
    QString table, rest = expression;
    rest.remove(QRegularExpression("M(1[0-5]|[0-9])"));
    bool const broken = rest.contains(QRegularExpression("[A-Z]"));
    for (int i = 0; i < std::min(1 << count, MaxTruthTable); ++i) {
        QString const values = QString::number(i, 2).rightJustified(count, '0');
        table +=
            broken ? 'x' : calcuate(postfix.constData(), letters, count ? qPrintable(values) : "");
    }
    return table;
}

} // namespace

class tst_Expression : public QObject
{
    Q_OBJECT

private slots:
    void bracketErrors()
    {
        char const* const rows[][2] = {{"( M0", " bracket unmatched"},
                                       {"M0 )", "bracket unmatched"},
                                       {"( M0 ) ) & M1", "bracket unmatched"},
                                       {"( M0 & ( M1 )", " bracket unmatched"}};
        for (auto const& row : rows) {
            QTest::ignoreMessage(QtCriticalMsg, row[1]);
            QVERIFY(convertRPN(tokens(row[0])).isEmpty());
            QTest::ignoreMessage(QtCriticalMsg, row[1]);
            QVERIFY(!isOk(tokens(row[0])));
        }
    }

    void validity()
    {
        for (char const* text :
             {"M0", "! M0", "! ( M0 & M1 )", "M0 & ! M1", "( ( M15 ) )", "m0 | M0", "M0 & ~ M1"})
            QVERIFY2(isOk(tokens(text)), text);
        for (char const* text : {"", "M0 M1", "& M0", "M0 &", "M0 !", "M0 & | M1", "( )", "( ! )",
                                 "! ! M0", "( M0 ) M1", "! & M0", "( & M0 )", "M0 ( M1 )",
                                 "( M0 & )", "M0 ! M1", "!", "M0 Q", "~"})
            QVERIFY2(!isOk(tokens(text)), text);
    }

    void rewriting()
    {
        char const* const tokenRows[][2] = {{"M0 | M1 ^ M2 & ! M3", "M0 M1 M2 M3 ! & ^ |"},
                                            {"M0 & M1 & M2 | M3", "M0 M1 & M2 & M3 |"},
                                            {"! ( M0 | m1 ) & M2", "M0 m1 | ! M2 &"},
                                            {"! ! M0", "! M0 !"}};
        for (auto const& row : tokenRows)
            QCOMPARE(convertRPN(tokens(row[0])), tokens(row[1]));
        char const* const letterRows[][2] = {
            {"M0&M10|M1", "C&A|B"},
            {"!M15^M3&M15", "!A^B&A"},
            {"M16|m0", "A6|m0"},
            {"M0M1M2M3M4M5M6M7M8M9M10M11M12M13M14M15", "PONMLKJIHGFEDCBA"}};
        for (auto const& row : letterRows)
            QCOMPARE(changeExpItem(row[0]), QString(row[1]));
        char const* const characterRows[][2] = {
            {"A|B^C&!D", "ABCD!&^|"}, {"(A|B)&!(C^D)", "AB|CD^!&"}, {"!!A", "!A!"}, {"(A", "A("},
            {"A)&B", "AB&)"},         {" A & b1B", "AB&"},          {"()", ""},     {"", ""}};
        for (auto const& row : characterRows) {
            QByteArray postfix(int(qstrlen(row[0])) + 1, 'z'); // no longer than the infix text
            translet(row[0], postfix.data());
            QCOMPARE(postfix.constData(), row[1]);
        }
    }

    void smallHelpers()
    {
        for (char c : QByteArray("!&^|()MX ~"))
            QCOMPARE(priority(QString(QLatin1Char(c))), priority(c));
        QVERIFY(priority('!') == 4 && priority('|') == 1 && priority('(') == 0);
        QVERIFY(isDigit("mux") && !isDigit("3") && isOperator("^") && !isOperator("!"));
        char text[64];
        getOperand("(C&a)|A^C|Z", text);
        QCOMPARE(text, "CAZ");
        sort(text);
        QCOMPARE(text, "ACZ");
        itoa(-48879, text, 16);
        QCOMPARE(text, "FFFF4111");
        itoa(INT_MIN, text, 10);
        QCOMPARE(text, "-2147483648");
        itoa(5, text, 17);
        QCOMPARE(text, "");
        QString all = "M0";
        for (int unit = 1; unit < 16; ++unit)
            all += QStringLiteral("&M%1").arg(unit);
        QVERIFY(logicTruthTable(all) == QString(65535, '0') + "1");
        // more letters than units: no more entries than any core looks at
        QCOMPARE(logicTruthTable("ABCDEFGHIJKLMNOPQRSTUVWXYZ").size(), MaxTruthTable);
        QCOMPARE(calcuate("!", "!", "1"), 'x'); // not a letter
        // the loop over the letters is bounded as the others are
        QCOMPARE(calcuate("B", qPrintable(QString(65, 'A') + "B"), "01"), '1');
        QCOMPARE(calcuate("B", qPrintable(QString(66, 'A') + "B"), "01"), 'x');
    }

    void evaluation()
    {
        auto const row = [](char const* name, QString const& postfix, char const* values,
                            char const* expected) {
            QString const result(QLatin1Char(calcuate(qPrintable(postfix), "ABC", values)));
            QVERIFY2(result == expected, name);
        };
        row("value by letter", "BA!&", "01", "1");
        row("or", "AB|", "10", "1");
        row("exclusive or", "AB^", "11", "0");
        row("nothing", "", "", "x");
        row("two left", "AB", "11", "x");
        row("no operand", "!", "", "x");
        row("one operand", "A&", "1", "x");
        row("others ignored", "(A)~", "1", "1");
        row("value that is none", "A", "2", "x");
        row("letter without value", "C", "11", "x");
        // The loops end where a position reaches the code of the character that stands there. A `~`
        // means nothing and has the highest code of all.
        auto const border = [row](QString const& tail, QString const& head, int last,
                                  char const* values, char const* before, char const* behind) {
            for (int at : {last, last + 1})
                row(qPrintable(QString("%1 at %2").arg(tail).arg(at)),
                    head + QString(at - head.size(), '~') + tail, values,
                    at == last ? before : behind);
        };
        border("!", "A", 32, "1", "0", "1");
        border("&", "AB", 37, "10", "0", "x");
        border("A", "", 47, "0", "0", "x");
        border("A", "", 48, "1", "1", "x");
        border("A|", "BC", 64, "~10", "1", "x");
        border("^", "AB", 93, "10", "1", "x");
        border("|", "AB", 123, "10", "1", "x");
    }

    void truthTables()
    {
        char const* const rows[][2] = {{"M10&!M1", "0010"},
                                       {"M0|M1&M2", "01010111"},
                                       {"M0^M1&M2", "01010110"},
                                       {"M0|M1^M2", "01111101"},
                                       {"(M0|M1)&M2", "00000111"},
                                       {"!(M0|M1)^M2", "10000111"},
                                       {"M3 & ~m!M2", "0010"},
                                       {"M0&Q", "xxxx"},
                                       {"M16", "01"},
                                       {" M3", "01"},
                                       {"M5&M5", "01"},
                                       {"!!M0", "xx"},
                                       {"M0&", "xx"},
                                       {"", "x"},
                                       {"M0&A", "xx"}}; // the letter that M0 becomes
        for (auto const& row : rows)
            QCOMPARE(row[0] + (" " + logicTruthTable(row[0])), row[0] + (" " + QString(row[1])));
    }

    void tablesRowByRow()
    {
        randomcore::Draw draw(78);
        for (int round = 0; round < 3000; ++round) {
            // up to and beyond the lengths at which the bounds of the loops show
            QString expression = oracle::randomExpression(
                draw, {draw.below(16), draw.below(16), draw.below(16)}, 3 + round % 3);
            for (int i = draw.chance(20) ? draw.below(4) : 0; i > 0; --i)
                expression.insert(draw.below(expression.size()), draw.oneOf("01 ()!&|x~\u00ffBC"));
            QVERIFY2(logicTruthTable(expression) == tableRowByRow(expression),
                     qPrintable(expression));
        }
        for (char const* expression :
             {"M0^M1^M2^M3^M4^M5^M6^M7^M8^M9^M10^M11^M12^M13^M14^M15",
              "A^B^C^D^E^F^G^H^I^J^K^L^M^N^O^P^Q", "0|A", "1&A", "Z", "01|"})
            QVERIFY2(logicTruthTable(expression) == tableRowByRow(expression), expression);
        for (char const op : QByteArray("&|^")) { // each length, over all borders
            QByteArray chain = "M0", turned = "!M0", nested = "M0";
            for (int i = 0; i < 70; ++i) {
                QByteArray const unit = "M" + QByteArray::number(i % 3);
                chain = chain + op + unit;
                turned = turned + op + unit;
                nested = unit + op + '(' + nested + ')';
                for (QByteArray const& text : {chain, turned, nested})
                    QVERIFY2(logicTruthTable(text) == tableRowByRow(text), text);
            }
        }
    }
};

QTEST_GUILESS_MAIN(tst_Expression)
#include "tst_expression.moc"
