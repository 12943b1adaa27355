#include "dump/vcdnames.h"
#include "dump/vcdsampler.h"
#include "tests/support/bittext.h"

#include <QBuffer>
#include <QtTest>

using namespace VEK::Dump;

namespace {

QByteArray const Head = "$scope module tb $end $var wire 1 ! clk $end $var wire 4 # v [3:0] $end "
                        "$var wire 1 % s $end $upscope $end $enddefinitions $end ";

/// Rows as text and the warning, or the error.
QByteArray sampledText(QByteArray text, QString const& names)
{
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    SampledStimulus stimulus;
    QString error;
    if (!sampleVcd(buffer, {{names.split(' '), "clk"}}, stimulus, error))
        return error.toUtf8();
    QByteArrayList shown = rowTexts(stimulus.tables.front());
    if (!stimulus.warning.isEmpty())
        shown.append(stimulus.warning.toUtf8());
    return shown.join(' ');
}

struct Row
{
    char const* name;
    QByteArray text;
    QByteArray expected;
};

void addRows(QByteArray const& head, QString const& names, std::initializer_list<Row> rows)
{
    for (Row const& row : rows)
        QTest::newRow(row.name) << head + row.text << names << row.expected;
}

} // namespace

class TestVcdReader : public QObject
{
    Q_OBJECT

private slots:
    void dumps_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("names");
        QTest::addColumn<QByteArray>("expected");
        values();
        headers();
        names();
        cut();
        broken();
    }

    void dumps()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, names);
        QTEST(sampledText(text, names), "expected");
    }

    /// Words may be cut anywhere by the chunks of a read, and be longer than one.
    void pieces()
    {
        QByteArray text = Head + "$comment " + QByteArray(3 << 20, 'x') + " $end";
        QByteArrayList expected;
        for (unsigned k = 0; k < 50000; ++k) {
            text += " #" + QByteArray::number(2 * k) + " 0! b" + number(k % 16, 4) + " # #" +
                    QByteArray::number(2 * k + 1) + " 1!";
            expected.append(number(k % 16, 4));
        }
        QCOMPARE(sampledText(text, "v[3] v[2] v[1] v[0]"), expected.join(' '));
    }

private:
    static void values()
    {
        addRows(
            Head, "v[3] v[2] v[1] v[0] s",
            {
                {"before the edge", "#0 0! b1010 # 1% #5 1! b0101 # 0% #6 0! #7 1!", "10101 01010"},
                {"the clock's change stands last", "#0 0! 0% #5 1% 1! #6 0! #7 1!", "00000 00001"},
                {"a glitch within one time", "#0 0! #1 1! 0! #2 1! #3 0! 1! #4 0!", "00000"},
                {"the clock starts high", "#0 1! #1 0! 1% #2 1!", "00001"},
                {"x and z", "#0 0! bxz1Z # x% #1 1!", "00100"},
                {"VHDL's nine values", "#0 0! bUHW- # h% #1 1!", "01001"},
                {"shorter than the vector", "#0 0! b1111 # #1 b10 # #2 1!", "00100"},
                {"longer than the vector", "#0 0! b110110 # b01 % #2 1!", "01101"},
                {"code in a word of its own", "#0 0 ! 1 % #2 1!", "00001"},
                {"dumpoff",
                 "#0 0! 1% #1 1! #2 $dumpoff x! x% $end #3 #4 $dumpon 1! 1% $end #5 0! #6 1! "
                 "#7 $dumpall 1! 0% $end #8 0! #9 1!",
                 "00001 00001 00000"},
                {"comments and unknown sections",
                 "$comment #9 1! $end #0 0! $dumpvars $comment $dumpoff $end 1% $end $attr x $end "
                 "#1 "
                 "1!",
                 "00001"},
                {"64-bit times", "#0 0! #18446744073709551614 1% #18446744073709551615 1!",
                 "00001"},
                {"times with a fraction",
                 "#0 0! #0.5 1% #0.5000 1! #0.75 0! #1. 0% #1.09 1! #1.1 0! #10.0 1% #10.00 1!",
                 "00000 00000 00000"},
                {"the prefix stands twice", "#0 0! b0b1010 # b0B1 % #1 1!", "10101"},
                {"any blanks", "#0\t0!\r\n\r\n 1%\f#1\v1!\n\n\n", "00001"},
            });
    }

    /// Names of bits that are 1, in headers of all kinds.
    static void headers()
    {
        auto const add = [](char const* name, QByteArray const& declarations, QString const& names,
                            QByteArray const& changes = "") {
            QByteArray const body =
                " $var wire 1 ! clk $end $var reg 1 % s $end $enddefinitions $end #0 0! 1% ";
            QTest::newRow(name) << declarations + body + changes + "#1 1!" << names
                                << QByteArray(names.count(' ') + 1, '1');
        };
        add("sections", "$date 1 $end $comment $scope $end\n$attrbegin misc 02 a 1 $end", "s");
        add("a byte order mark", "\xEF\xBB\xBF$timescale 244ns $end", "s");
        add("a byte order mark by itself", "\xEF\xBB\xBF\r\n$date 1 $end", "s");
        add("no bits at all", "$var wire 0 e none $end $var string 1 t t $end", "s",
            "b e bnice t ");
        add("other types",
            "$var real 64 r x $end $var string 1 S t $end $var event 1 ! e $end "
            "$var parameter 0 p P $end $var foo 3 % q $end",
            "s q[0]", "r1.5e3 r snice S s S ");
        add("an escaped name", "$scope module \\g[0].u $end $var reg 1 % \\a/b+1 $end",
            "\\a/b+1 g[0]/u/a.b+1 \\g[0].u.\\a/b+1");
        add("long codes", "$var reg 1 abcdefghi t $end $var reg 1 abcdefghj u $end", "s u",
            "1abcdefghj ");
    }

    static void names()
    {
        auto const add = [](QString const& names, QByteArray const& variables,
                            QByteArray const& changes, QByteArray const& expected) {
            QByteArray const head = "$scope module t $end $var wire 1 a clk $end $var ";
            QTest::newRow(qPrintable(names))
                << head + variables + " $end $enddefinitions $end #0 0a " + changes + " #1 1a"
                << names << expected;
        };
        add("v[3] v[0] v[1] t.v[3]", "wire 4 b v [3:0]", "b1010 b", "1011");
        add("v[3] v[2]", "wire 4 b v[3:0]", "b1010 b", "10");
        add("v[-1] v[-4]", "wire 4 b v [-1:-4]", "b1010 b", "10");
        add("v[7] v[6]", "wire 1 d v [7] $end $var wire 1 c v[6]", "1d", "10");
        add("m[2][3] m[3][3] f[9]",
            "wire 4 b m[2] [3:0] $end $var wire 4 c m[3] [3:0] $end $var wire 1 d f[9]",
            "b1010 b 1d", "101");
        add("s[0] s", "wire 1 d s", "1d", "11");
        add("v[4] xclk cont[1] cont[0]", "wire 4 b v [3:0] $end $var wire 2 d Count[1:0]", "",
            "it has no xclk, cont[1], cont[0]; nearest to xclk: t.clk; nearest to cont: t.Count; "
            "v[4] is not one bit of its variable");
        add("r", "real 1 r r", "", "r is not one bit of its variable");
        add("a a b", "wire 1 c b", "", "it has no a; nearest to a: t.b, t.clk");
        add("s s", "wire 1 c s $end\n$var wire 1 d s", "",
            "s may be the t.s of line 1 or that of line 2");
        add("s", "wire 1 c s $end $scope module b $end $var wire 1 d t.s", "",
            "s may be t.s or t.b.t.s (the whole path or a scope tells)");
    }

    /// A simulation was interrupted: everything up to the last whole time counts.
    static void cut()
    {
        QByteArray const head =
            "$scope module tb $end $var wire 1 ! clk $end $var wire 1 ab s $end "
            "$var wire 1 abc t $end $upscope $end $enddefinitions $end\n"
            "#0\n0! 0ab\n#1\n1!\n#2\n0! 1ab\n#3\n1!\n";
        auto const add = [&](char const* name, QByteArray const& tail, QByteArray const& expected) {
            QTest::newRow(name) << head + tail << "s" << expected;
        };
        auto const warning = [](QByteArray const& what) {
            return what + "; its last time is left out";
        };
        add("between times", "", "0 1");
        add("a code of one piece", "#4\n0!\n#5\n1!", "0 1 1");
        add("in a code", "#4\n0!\n#5\n1! 1ab",
            warning("0 1 line 13: the file ends within a value"));
        add("in a code that is none", "0a", warning("0 line 10: the file ends within a value"));
        add("in front of a code", "b1", warning("0 line 10: the file ends within a value"));
        add("in a time", "#4\n0!\n#5\n1!\n#1",
            warning("0 1 1 line 14: the file ends within a time"));
        add("in a keyword", "$com", warning("0 line 10: the file ends within $com"));
        add("in a comment", "$comment 1!", warning("0 line 10: the file ends within $comment"));
        add("in a dump", "#4\n$dumpall 0!",
            warning("0 1 line 11: the file ends within a dump of values"));
        QTest::newRow("before the first edge")
            << Head + "#0 0! #1 1! b1"
            << "s"
            << QByteArray("the clock clk has no rising edge; "
                          "line 1: the file ends within a value");
        QTest::newRow("in a declaration") << QByteArray("$scope module tb $end $var wire") << "s"
                                          << QByteArray("line 1: the file ends within $var");
    }

    static void broken()
    {
        QByteArray const body = Head + "\n#0 0!\n#1 1!\n";
        addRows("", "s",
                {
                    {"no edge", Head + "#0 0!", "the clock clk has no rising edge"},
                    {"unknown code", body + "1Q", "line 4: no variable has the code \"Q\""},
                    {"neither", body + "?!", "line 4: \"?!\" is neither a time nor a value"},
                    {"no bits", body + "bb1 %", "line 4: \"bb1\" is no value of bits"},
                    {"time goes back", body + "#0\n", "line 4: time goes back from 1 to 0"},
                    {"fraction goes back", body + "#1.09\n#1.0850\n",
                     "line 5: time goes back from 1.09 to 1.085"},
                    {"no time", body + "#1.5e3", "line 4: \"#1.5e3\" is no time"},
                    {"beyond 64 bits", body + "#18446744073709551616",
                     "line 4: \"#18446744073709551616\" is no time"},
                    {"end of nothing", body + "$end", "line 4: $end without a section"},
                    {"no declaration", "\nwire", "line 2: \"wire\" is no declaration"},
                    {"short $var", "$var wire 1 ! $end",
                     "line 1: a $var needs a type, a width, an identifier code and a name"},
                    {"no width", "$var wire -1 ! x $end", "line 1: \"-1\" is no width"},
                    {"$upscope", "$upscope $end", "line 1: $upscope without a $scope"},
                    {"no $end", "$scope " + QByteArray("b ").repeated(100),
                     "line 1: $scope has no $end"},
                    {"deep scopes", QByteArray("$scope module a $end ").repeated(70000),
                     "line 1: the scopes are nested too deep"},
                    {"long word", Head + "#0 0! b" + QByteArray(5 << 20, 'x') + " #",
                     "line 1: a word is longer than 1048576 bytes"},
                });
    }
};

QTEST_GUILESS_MAIN(TestVcdReader)
#include "tst_vcdreader.moc"
