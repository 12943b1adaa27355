#include "bittext.h"
#include "simulator/vcdnames.h"
#include "simulator/vcdsampler.h"

#include <QBuffer>
#include <QtTest>

using namespace VEK::Simulator;

namespace {

QByteArray const Head = "$scope module tb $end $var wire 1 ! clk $end $var wire 4 # v [3:0] $end "
                        "$var wire 1 % s $end $upscope $end $enddefinitions $end ";

/// Rows as text, or the error.
QByteArray sampledText(QByteArray text, QString const& names)
{
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    std::vector<SampleTable> tables;
    QString error;
    if (!sampleVcd(buffer, {{names.split(' '), "clk"}}, tables, error))
        return error.toUtf8();
    return rowTexts(tables.front()).join(' ');
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
        add("s", "wire 1 c s $end $scope module b $end $var wire 1 d t.s", "",
            "s may be t.s or t.b.t.s (the whole path or a scope tells)");
    }

    static void broken()
    {
        QByteArray const body = Head + "\n#0 0!\n#1 1!\n";
        addRows(
            "", "s",
            {
                {"no edge", Head + "#0 0!", "the clock clk has no rising edge"},
                {"unknown code", body + "1Q", "line 4: no variable has the code \"Q\""},
                {"neither", body + "?!", "line 4: \"?!\" is neither a time nor a value"},
                {"no code", body + "b1", "line 4: the file ends within a value"},
                {"time goes back", body + "#0", "line 4: time goes back from 1 to 0"},
                {"no time", body + "#1.5", "line 4: \"#1.5\" is no time"},
                {"beyond 64 bits", body + "#18446744073709551616",
                 "line 4: \"#18446744073709551616\" is no time"},
                {"end of nothing", body + "$end", "line 4: $end without a section"},
                {"endless comment", body + "$comment 1!", "line 4: the file ends within $comment"},
                {"no declaration", "\nwire", "line 2: \"wire\" is no declaration"},
                {"short $var", "$var wire 1 ! $end",
                 "line 1: a $var needs a type, a width, an identifier code and a name"},
                {"no width", "$var wire -1 ! x $end", "line 1: \"-1\" is no width"},
                {"$upscope", "$upscope $end", "line 1: $upscope without a $scope"},
                {"time scale", "$timescale 2ns $end", "line 1: \"2ns\" is no time scale"},
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
