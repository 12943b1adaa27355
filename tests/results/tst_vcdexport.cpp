#include "results/vcdexport.h"

#include "windows.h"

#include <QtTest>

using namespace VEK;

namespace {

/// The text with a line end in the place of every "|" and a double quote for every single one.
QString lines(char const* text)
{
    return QString(text).replace('|', '\n').replace('\'', '"');
}

/// A locale with digits of its own, which must not show. Qt asks for it once, before main goes on.
bool const isForeign = qputenv("LC_ALL", "fa_IR.UTF-8");

/// The whole file, without the date.
QString vcd(QString const& children, bool level, unsigned long long step, int trigger)
{
    Window const window(children);
    QRegularExpression const date("  \\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d\n");
    QString text = exported([&](QString const& path) {
        return exportVCD(path, "top", "tækt", level, "ns", step, trigger, window.element);
    });
    return text.replace(date, "DATE\n");
}

/// What follows the definitions.
QString dump(QString const& signalElements, bool level, unsigned long long step, int trigger)
{
    return vcd(windowXml(signalElements, ""), level, step, trigger)
        .section("$enddefinitions\n$end\n", 1);
}

/// A dump with step 2 and without a trigger, looked at one sample at a time.
QString plainDump(QStringList const& columns)
{
    int const count = columns.first().size();
    QString text = "#0|$dumpvars|1!|X'|X#|X$|$end|";
    for (int i = 0; i < count; ++i) {
        text += QString("#%1|").arg(2 * i + 1);
        text += i == 0 ? "$comment Sample 0 (Start) $end|" : "";
        text += i == count - 1 ? QString("$comment Sample %1 (End) $end|").arg(count) : "";
        text += "0!|";
        for (int k = 0; k < columns.size(); ++k) {
            QStringRef const samples = columns.at(k).midRef(0, i + 1);
            if (samples.size() > i && (i == 0 || samples.at(i) != samples.at(i - 1)))
                text += QString(samples.at(i)) + "'#$"[k] + '|';
        }
        text += QString("#%1|1!||").arg(2 * i + 2);
    }
    return lines(qPrintable(text + QString("#%1|").arg(2 * count + 2)));
}

} // namespace

class TestVcdExport : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts() { compareTexts(); }
    void manySamples();
    void codes();
    void badPaths();
};

void TestVcdExport::texts_data()
{
    QString const one = signalXml("0", "a", "", "1");
    QString const two = signalXml("0", "a", "", "011") + signalXml("1", "b", "B", "000");
    QString const named = windowXml(two + signalXml("2", "c", "é水 c", "111"),
                                    busXml("bus", "", "", nodeXml("0", "renamed")) + nodeXml("1"));
    addTextColumns();
    row("header", vcd(named, true, 10, -1).section("#0\n", 0, 0),
        lines("$comment|  Captured on the chip|$end|$date|DATE|$end|$timescale|  1 ns|$end|"
              "$scope|module top|$end|$var|reg 1 ! tækt|$end|$var|reg 1 ' renamed|$end|"
              "$var|reg 1 # B|$end|$var|reg 1 $ é水 c|$end|$upscope|$end|$enddefinitions|$end|"));
    row("step 10, trigger at 0", dump(two, true, 10, 0),
        lines("#0|$dumpvars|1!|X'|X#|$end|"
              "#5|$comment Sample 0 (Start) $end|$comment Sample 0 (Trigger) $end|0!|0'|0#|#10|1!||"
              "#15|0!|1'|#20|1!||#25|$comment Sample 3 (End) $end|0!|#30|1!||#40|"));
    row("step 1, clock level 0, trigger inside", dump(two, false, 1, 1),
        lines("#0|$dumpvars|0!|X'|X#|$end|#0|$comment Sample 0 (Start) $end|1!|0'|0#|#1|0!||"
              "#1|$comment Sample 1 (Trigger) $end|1!|1'|#2|0!||"
              "#2|$comment Sample 3 (End) $end|1!|#3|0!||#4|"));
    row("one sample: all comments", dump(one, true, 3, 0),
        lines("#0|$dumpvars|1!|X'|$end|#1|$comment Sample 0 (Start) $end|"
              "$comment Sample 1 (End) $end|$comment Sample 0 (Trigger) $end|0!|1'|#3|1!||#6|"));
    row("no signals, trigger outside", dump("", true, 7, 0), lines("#0|$dumpvars|1!|$end|#7|"));
    row("a first signal without samples", dump(signalXml("0", "a", "", "") + one, true, 7, 0),
        lines("#0|$dumpvars|1!|X'|X#|$end|#7|"));
    row("a step beyond a double, trigger just outside", dump(one, true, 6148914691236517203u, 1),
        lines("#0|$dumpvars|1!|X'|$end|#3074457345618258601|$comment Sample 0 (Start) $end|"
              "$comment Sample 1 (End) $end|0!|1'|#6148914691236517203|1!||"
              "#12297829382473034406|"));
    // The second has no more samples than its place in the list says, so it is left out; the third
    // has, and ends early; the fourth goes on beyond the first.
    row("unequal lengths",
        dump(signalXml("0", "a", "", "0000") + signalXml("1", "b", "", "1") +
                 signalXml("2", "c", "", "101") + signalXml("3", "d", "", "100010"),
             true, 2, -1),
        lines("#0|$dumpvars|1!|X'|X#|X$|X%|$end|#1|$comment Sample 0 (Start) $end|0!|0'|1$|1%|"
              "#2|1!||#3|0!|0$|0%|#4|1!||#5|0!|1$|#6|1!||"
              "#7|$comment Sample 4 (End) $end|0!|#8|1!||#10|"));
    row("other characters", dump(signalXml("0", "a", "", "zzé1"), true, 2, -1),
        lines("#0|$dumpvars|1!|X'|$end|#1|$comment Sample 0 (Start) $end|0!|z'|#2|1!||#3|0!|#4|1!||"
              "#5|0!|é'|#6|1!||#7|$comment Sample 4 (End) $end|0!|1'|#8|1!||#10|"));
}

/// The export looks at samples in blocks: changes within, at and across the borders.
void TestVcdExport::manySamples()
{
    std::mt19937 random{1};
    for (int round = 0; round < 40; ++round) {
        QString samples(130, '0');
        for (int at : {0, 62, 64, 127, 129})
            samples[round ? int(random() % 130) : at] = round % 2 ? 'x' : '1';
        QStringList const columns{samples, samples + "1010", samples.left(128)};
        QString signalElements;
        for (QString const& column : columns)
            signalElements += signalXml("0", "s", "", column);
        QCOMPARE(dump(signalElements, true, 2, -1), plainDump(columns));
    }
}

void TestVcdExport::codes()
{
    QMap<int, QString> const codes{{0, "!"},    {1, "\""},    {93, "~"},
                                   {94, "\"!"}, {95, "\"\""}, {187, "\"~"},
                                   {188, "#!"}, {8835, "~~"}, {8836, "\x7f!"}};
    for (int value : codes.keys())
        QCOMPARE(VCD::vcdIDForSignalAtIndex(value), codes[value]);

    for (int count : {93, 94, 95}) {
        QString const text =
            dump(signalXml("0", "s", "", QString(100, '1')).repeated(count), true, 2, -1);
        QVERIFY(text.contains("X" + codes[count] + "\n$end\n#1\n"));
        QVERIFY(text.contains("\n1" + codes[count] + "\n#2\n1!\n\n#3\n0!\n#4\n"));
    }
}

void TestVcdExport::badPaths()
{
    for (QString const& path : BadPaths)
        QVERIFY(!exportVCD(path, "m", "c", true, "us", 1, 0, Window("").element));
}

QTEST_GUILESS_MAIN(TestVcdExport)
#include "tst_vcdexport.moc"
