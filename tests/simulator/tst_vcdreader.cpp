#include "simulator/vcdnames.h"
#include "simulator/vcdsampler.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QtTest>

#include <random>

using namespace VEK::Simulator;

namespace {

/// Hands out its bytes in small pieces.
class DripDevice : public QIODevice
{
public:
    DripDevice(QByteArray const& bytes, int piece) : m_bytes(bytes), m_piece(piece)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        int const count = int(qMin<qint64>(size, qMin(m_piece, m_bytes.size() - m_at)));
        memcpy(data, m_bytes.constData() + m_at, std::size_t(count));
        m_at += count;
        return count;
    }
    qint64 writeData(char const*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    int m_piece;
    int m_at = 0;
};

QByteArray const Head = "$scope module tb $end $var wire 1 ! clk $end $var wire 4 # v [3:0] $end "
                        "$var wire 1 % s $end $upscope $end $enddefinitions $end ";

/// Rows as text, or the error.
QByteArray sampled(QIODevice& device, QString const& names, QString const& clock = "clk")
{
    std::vector<SampleTable> tables;
    QString error;
    if (!sampleVcd(device, {{names.split(' '), clock}}, tables, error))
        return error.toUtf8();
    QByteArrayList rows;
    for (qint64 k = 0; k < tables.front().rowCount(); ++k) {
        rows.append(QByteArray());
        for (int i = 0; i < tables.front().signalCount(); ++i)
            rows.last() += char('0' + tables.front().bit(k, i));
    }
    return rows.join(' ');
}

QByteArray sampledText(QByteArray const& text, QString const& names, QString const& clock = "clk")
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    return sampled(buffer, names, clock);
}

struct Row
{
    char const* name;
    QByteArray text;
    QByteArray expected;
};

void addRows(std::initializer_list<Row> rows)
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expected");
    for (Row const& row : rows)
        QTest::newRow(row.name) << row.text << row.expected;
}

} // namespace

class TestVcdReader : public QObject
{
    Q_OBJECT

private slots:
    void values_data();
    void values();
    void headers_data();
    void headers();
    void names_data();
    void names();
    void broken_data();
    void broken();
    void brokenHeader_data();
    void brokenHeader();
    void severalClocks();
    void pieces();
    void longWords();
    void damaged();
};

void TestVcdReader::values_data()
{
    addRows({
        {"before the edge", "#0 0! b1010 # 1% #5 1! b0101 # 0% #6 0! #7 1!", "10101 01010"},
        {"the clock's change stands last", "#0 0! 0% #5 1% 1! #6 0! #7 1!", "00000 00001"},
        {"the same time twice", "#0 0! #5 1% #5 1! #6 0! #7 1!", "00000 00001"},
        {"a glitch within one time", "#0 0! #1 1! 0! #2 1! #3 0! 1! #4 0!", "00000"},
        {"the clock starts high", "#0 1! #1 0! 1% #2 1!", "00001"},
        {"the clock starts unknown", "$dumpvars x! $end #1 1! #2 0! #3 1!", "00000 00000"},
        {"no first value", "#1 1! #2 0! #3 1!", "00000"},
        {"x and z", "#0 0! bxz1Z # x% #1 1!", "00100"},
        {"VHDL's nine values", "#0 0! bUHW- # h% #1 1!", "01001"},
        {"shorter than the vector", "#0 0! b1111 # #1 b10 # #2 1!", "00100"},
        {"shorter, x in front", "#0 0! b1111 # #1 Bx1 # #2 1!", "00010"},
        {"longer than the vector", "#0 0! b110110 # b01 % #2 1!", "01101"},
        {"a scalar value of a vector", "#0 0! b1111 # #1 1# #2 1!", "00010"},
        {"code in a word of its own", "#0 0 ! 1 % #2 1!", "00001"},
        {"dumpoff",
         "#0 0! 1% #1 1! #2 $dumpoff x! x% $end #3 #4 $dumpon 1! 1% $end #5 0! #6 1! "
         "#7 $dumpall 1! 0% $end #8 0! #9 1!",
         "00001 00001 00000"},
        {"comments and unknown sections",
         "$comment #9 1! $end #0 0! $dumpvars $comment $dumpoff $end 1% $end $attr x $end #1 1!",
         "00001"},
        {"dumpvars without an end", "#0 $dumpvars 0! 1% #1 1!", "00001"},
        {"64-bit times", "#0 0! #18446744073709551614 1% #18446744073709551615 1!", "00001"},
        {"any blanks", "#0\t0!\r\n\r\n 1%\f#1\v1!\n\n\n", "00001"},
    });
}

void TestVcdReader::values()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(sampledText(Head + text, "v[3] v[2] v[1] v[0] s"), expected);
}

/// Names of bits that are 1, in headers of all kinds.
void TestVcdReader::headers_data()
{
    addRows({
        {"scale 1", "$timescale 10 us $end", "s"},
        {"scale 2", "$timescale\n100\nps\n$end", "s"},
        {"scale 3", "$timescale 1fs $end", "s"},
        {"sections", "$date 1 $end $comment $scope $end\n$attrbegin misc 02 a 1 $end", "s"},
        {"other types",
         "$var real 64 r x $end $var string 1 S t $end $var event 1 ! e $end "
         "$var parameter 0 p P $end $var foo 3 % q $end",
         "s q[0]"},
        {"scopes of any kind", "$scope vhdl_x b $end $scope module $end", "s b.s b/s"},
        {"several names for a code", "$scope task t $end $var wire 1 % z $end", "s z t.z"},
        {"an escaped name", "$scope module \\g[0].u $end $var reg 1 % \\a/b+1 $end",
         "\\a/b+1 g[0]/u/a.b+1 \\g[0].u.\\a/b+1"},
        {"long codes", "$var reg 1 abcdefghi t $end $var reg 1 abcdefghj u $end", "s u"},
    });
}

void TestVcdReader::headers()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QByteArray body = "$var wire 1 ! clk $end $var reg 1 % s $end $enddefinitions $end #0 0! 1% ";
    body += text.contains("real") ? "r1.5e3 r snice S s S " : "";
    body += text.contains("abc") ? "1abcdefghj " : "";
    QCOMPARE(sampledText(text + ' ' + body + "#1 1!", expected),
             QByteArray(expected.count(' ') + 1, '1'));
}

void TestVcdReader::names_data()
{
    // The names that are asked for; b is 1010, d is 1.
    addRows({
        {"v[3] v[0] v[1] t.v[3]", "wire 4 b v [3:0]", "1011"},
        {"v[3] v[2]", "wire 4 b v[3:0]", "10"},
        {"v[3] v[2] ", "wire 4 b v [ 3 : 0 ]", "10"},
        {"v[0] v[3]", "wire 4 b v [0:3]", "10"},
        {"v[-1] v[-4]", "wire 4 b v [-1:-4]", "10"},
        {"v[3] v[2]  ", "wire 4 b v", "10"},
        {"v[7] v[6]", "wire 1 d v [7] $end $var wire 1 c v[6]", "10"},
        {"m[2][3] m[3][3] f[9]",
         "wire 4 b m[2] [3:0] $end $var wire 4 c m[3] [3:0] $end $var wire 1 d f[9]", "101"},
        {"t.s t.t.s", "wire 1 d s $end $scope module t $end $var wire 1 c s", "10"}, // whole path
        {"s[0] s", "wire 1 d s", "11"},
        {"v[4] x w[0]", "wire 4 b v [3:0]",
         "it has no x, w[0]; v[4] is not one bit of its variable"},
        {"v", "wire 4 b v [3:0]", "v is not one bit of its variable"},
        {"r", "real 1 r r", "r is not one bit of its variable"},
        {"s", "wire 1 c s $end $scope module b $end $var wire 1 d t.s",
         "s may be t.s or t.b.t.s (the whole path or a scope tells)"},
        {"t.s .s", "wire 1 d s", "it has no .s"},
    });
}

void TestVcdReader::names()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QByteArray dump = "$scope module t $end $var wire 1 a clk $end $var " + text +
                      " $end $enddefinitions $end #0 0a ";
    dump += text.contains(" b ") && !text.contains("scope") ? "b1010 b " : "";
    dump += text.contains(" d ") ? "1d " : "";
    QString const wanted = QString(QTest::currentDataTag()).trimmed();
    QCOMPARE(sampledText(dump + "#1 1a", wanted), expected);
}

void TestVcdReader::broken_data()
{
    addRows({
        {"unknown code", "1Q", "no variable has the code \"Q\""},
        {"no value", "hello", "no variable has the code \"ello\""},
        {"neither", "?!", "\"?!\" is neither a time nor a value"},
        {"no bits", "b10a1 #", "\"b10a1\" is no value of bits"},
        {"empty bits", "b 1 #", "\"b\" is no value of bits"},
        {"no code", "b1", "the file ends within a value"},
        {"time goes back", "#0", "time goes back from 1 to 0"},
        {"no time", "#1.5", "\"#1.5\" is no time"},
        {"empty time", "# 5", "\"#\" is no time"},
        {"beyond 64 bits", "#18446744073709551616", "\"#18446744073709551616\" is no time"},
        {"end of nothing", "$end", "$end without a section"},
        {"endless comment", "$comment 1!", "the file ends within $comment"},
        {"endless dump", "$dumpall 1!", "the file ends within a dump of values"},
    });
}

void TestVcdReader::broken()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(sampledText(Head + "\n#0 0!\n#1 1!\n" + text, "s"), "line 4: " + expected);
}

void TestVcdReader::brokenHeader_data()
{
    addRows({
        {"nothing", "", "the file ends within its declarations"},
        {"no declaration", "wire", "\"wire\" is no declaration"},
        {"cut in $var", "$var wire 1", "the file ends within $var"},
        {"short $var", "$var wire 1 ! $end",
         "a $var needs a type, a width, an identifier code and a name"},
        {"no width", "$var wire -1 ! x $end", "\"-1\" is no width"},
        {"wide", "$var wire 99999999999 ! x $end", "\"99999999999\" is no width"},
        {"$upscope", "$upscope $end", "$upscope without a $scope"},
        {"time scale", "$timescale 2ns $end", "\"2ns\" is no time scale"},
        {"no $end", "$scope " + QByteArray("b ").repeated(100), "$scope has no $end"},
        {"deep scopes", QByteArray("$scope module a $end ").repeated(70000),
         "the scopes are nested too deep"},
    });
}

void TestVcdReader::brokenHeader()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(sampledText("$date $end\n" + text, "s"), "line 2: " + expected);
    QCOMPARE(sampledText(Head + "#0 0!", "s"), QByteArray("the clock clk has no rising edge"));
}

void TestVcdReader::severalClocks()
{
    QBuffer buffer;
    buffer.setData("$var reg 1 a c1 $end $var reg 1 b c2 $end $var reg 3 n n $end $enddefinitions "
                   "$end #0 0a 0b b0 n #1 1a b1 n #2 1b b10 n #3 0a b11 n #4 1a 0b b100 n #5 1b");
    buffer.open(QIODevice::ReadOnly);
    std::vector<SampleTable> tables;
    QString error;
    QVERIFY(sampleVcd(buffer, {{{"n[1]", "n[0]"}, "c1"}, {{"n[2]", "n[1]", "n[0]"}, "c2"}}, tables,
                      error));
    QCOMPARE(tables[0].rowCount(), 2);
    QVERIFY(!tables[0].bit(0, 1) && tables[0].bit(1, 0) && tables[0].bit(1, 1));
    QCOMPARE(tables[1].rowCount(), 2);
    QVERIFY(tables[1].bit(0, 2) && tables[1].bit(1, 0));
}

/// Words may be cut anywhere by the chunks of a read.
void TestVcdReader::pieces()
{
    QByteArray text = Head;
    QByteArrayList expected;
    for (int k = 0; k < 300; ++k) {
        QByteArray const value = QByteArray::number(k % 16, 2);
        text += "#" + QByteArray::number(2 * k) + "\n0!\nb" + value + " #\n#" +
                QByteArray::number(2 * k + 1) + "\n1!\n";
        expected.append(value.rightJustified(4, '0'));
    }
    for (int piece : {1, 2, 3, 7, 1000, 1 << 20}) {
        DripDevice device(text, piece);
        QCOMPARE(sampled(device, "v[3] v[2] v[1] v[0]"), expected.join(' '));
    }
}

void TestVcdReader::longWords()
{
    QByteArray const word(5 << 20, 'x');
    QByteArray const skipped = "$comment " + word + " $end ";
    QCOMPARE(sampledText(skipped + Head + "#0 0! 1% " + skipped + "#1 1!", "s"), QByteArray("1"));
    QCOMPARE(sampledText(Head + "#0 0! b" + word + " #", "s"),
             QByteArray("line 1: a word is longer than 1048576 bytes"));
}

/// Damage anywhere gives an error or a result, but always an end.
void TestVcdReader::damaged()
{
    QByteArray const sound = "$timescale 1ns $end\n" + Head +
                             "#0 $dumpvars 0! b1010 # 1% $end #5 1! #6 0! $dumpoff x! $end #9 "
                             "$dumpon 1! $end $comment c $end #10 0! #11 1!\n";
    std::mt19937 random(7);
    int errors = 0;
    for (int round = 0; round < 3000; ++round) {
        QByteArray text = sound;
        for (unsigned n = random() % 4; n > 0; --n)
            text[int(random() % unsigned(text.size()))] = char(random() % 256);
        if (random() % 2)
            text.truncate(int(random() % unsigned(text.size())));
        static QRegularExpression const rows("^[01 ]+$");
        errors += !rows.match(QString::fromLatin1(sampledText(text, "v[3] s"))).hasMatch();
    }
    QVERIFY(errors > 1000 && errors < 3000);
}

QTEST_GUILESS_MAIN(TestVcdReader)
#include "tst_vcdreader.moc"
