#include "analyzer/standardanalyzer.h"
#include "analyzer/windowbuilder.h"
#include "model/bits.h"
#include "model/capturecore.h"

#include <QDomDocument>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <string>
#include <vector>

using namespace VEK;

namespace {

SignalItem signal(QString const& name, QString const& text = QString())
{
    SignalItem item;
    item.name = name;
    item.text = text;
    item.captureEnable = true;
    return item;
}

/// The decoding, word for word on strings: rows from the end of the stream, the ring turned so that
/// the trigger row lands at its position.
std::vector<std::string> decoded(std::string const& stream, int n, int shift, int amount,
                                 int triggerPos, bool dynamic)
{
    std::string const padded = std::string(std::size_t(shift + n + 1), '0') + stream;
    int const offset = shift + n + 1;
    std::vector<std::string> rows;
    for (int p = int(stream.size()) - 1 - shift; int(rows.size()) < amount; p -= shift) {
        rows.push_back(padded.substr(std::size_t(p + shift - n + offset), std::size_t(n + 1)));
        if (p < 0)
            break;
    }
    int const count = int(rows.size());
    int trigger = 0;
    while (trigger < count && rows[std::size_t(trigger)][0] != '1')
        ++trigger;
    if (dynamic)
        trigger = trigger == 0 ? count - 1 : trigger - 1;
    int const first = ((trigger - triggerPos) % count + count) % count;
    std::vector<std::string> arrays;
    for (int j = 0; j < n; ++j) {
        std::string array;
        for (int i = 0; i < count; ++i)
            array += rows[std::size_t((first + i) % count)][std::size_t(j + 1)];
        arrays.push_back(array);
    }
    return arrays;
}

/// An element as indented lines, its attributes by name.
QStringList printed(QDomElement const& element, QString const& indent = QString())
{
    QStringList words{indent + element.tagName()};
    QDomNamedNodeMap const attributes = element.attributes();
    for (int i = 0; i < attributes.size(); ++i) {
        QDomAttr const attribute = attributes.item(i).toAttr();
        words.append(attribute.name() + "='" + attribute.value() + "'");
    }
    std::sort(words.begin() + 1, words.end());
    QString line = words.join(' ');
    if (element.firstChild().isText())
        line += ": " + element.text();
    QStringList lines{line};
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        lines += printed(child, indent + ' ');
    return lines;
}

} // namespace

class TestSampleDecoding : public QObject
{
    Q_OBJECT

private slots:
    void equalsThePlainWay_data()
    {
        QTest::addColumn<int>("signalCount");
        QTest::addColumn<int>("amount");
        QTest::addColumn<int>("streamBits");
        QTest::addColumn<int>("triggerPos");
        QTest::addColumn<int>("mark"); // row, -1 for none
        for (int n : {0, 1, 15, 16, 63, 64, 65, 130}) {
            int const shift = std::max(16, n + 1);
            auto const add = [&](char const* what, int amount, int bits, int pos, int mark) {
                QTest::addRow("%s, %d signals", what, n) << n << amount << bits << pos << mark;
            };
            add("ring", 200, 200 * shift, 50, 77);
            add("mark in row 0", 65, 65 * shift, 0, 0);
            add("no mark", 64, 64 * shift, 10, -1);
            add("fewer records", 128, 63 * shift, 70, 5);
            add("cut record", 128, 63 * shift + 5, 127, 62);
            add("more records", 10, 64 * shift, 3, 2);
            add("one bit", 8, 1, 4, -1);
            add("position far out", 7, 7 * shift, 2000000000, 3);
        }
    }

    void equalsThePlainWay()
    {
        QFETCH(int, signalCount);
        QFETCH(int, amount);
        QFETCH(int, streamBits);
        QFETCH(int, triggerPos);
        QFETCH(int, mark);
        SxCore core(0);
        for (int i = 0; i < signalCount; ++i)
            core.dataSignalList.append(signal(QStringLiteral("s%1").arg(i)));
        core.captureAmount = amount;
        core.triggerPos = triggerPos;
        int const shift = core.dataOutShiftWidth();

        QRandomGenerator random(quint32(signalCount * 1000 + streamBits));
        std::string stream(std::size_t(streamBits), '0');
        for (char& bit : stream)
            bit = random.bounded(2) ? '1' : '0';
        for (int row = 0, at = streamBits - 1 - signalCount; at >= 0; ++row, at -= shift)
            stream[std::size_t(at)] = row == mark ? '1' : '0';

        VekCmdStandardAnalyzer const analyzer;
        for (int type : {ExpressionStatic, ExpressionDynamic}) {
            core.expressionType = type;
            std::vector<std::string> const expected =
                decoded(stream, signalCount, shift, amount, triggerPos, type == ExpressionDynamic);
            auto const actual =
                analyzer.handleTdoData(&core, str2bit(QString::fromStdString(stream)));
            QCOMPARE(actual.size(), signalCount);
            for (int j = 0; j < signalCount; ++j) {
                QCOMPARE(actual.at(j).id, j);
                QCOMPARE(actual.at(j).name, QStringLiteral("s%1").arg(j));
                QCOMPARE(bit2str(actual.at(j).data).toStdString(), expected[std::size_t(j)]);
            }
        }
    }

    void nothingToDecode()
    {
        VekCmdStandardAnalyzer const analyzer;
        SxCore core(0);
        core.dataSignalList.append(signal("a"));
        QBitArray const stream(64);
        QVERIFY(analyzer.handleTdoData(nullptr, stream).isEmpty());
        QVERIFY(analyzer.handleTdoData(&core, QBitArray()).isEmpty());
        for (int amount : {0, -1, -2147483647}) {
            core.captureAmount = amount;
            QVERIFY(analyzer.handleTdoData(&core, stream).isEmpty());
        }
    }

    void buildsTheWindow()
    {
        SignalItem bus = signal("restore", "My bus");
        bus.signalList = {signal("b1", "B one"), signal("b0")};
        QList<SignalItem> const layout{signal("clk"), bus, signal("x<y", "shown")};
        QList<SignalItem> const flat = flatSignals(layout);
        QList<QBitArray> const arrays{str2bit("01"), str2bit("10"), str2bit("11"), str2bit("00")};
        QDomDocument document;
        QCOMPARE(printed(windowElement(document, 7, layout, namedSignals(flat, arrays))),
                 (QStringList{"Window", " TriggerPosition: 7", " Signals",
                              "  Signal id='0' name='clk' text='': 01",
                              "  Signal id='1' name='b1' text='B one': 10",
                              "  Signal id='2' name='b0' text='': 11",
                              "  Signal id='3' name='x<y' text='shown': 00", " Layout",
                              "  Node id='0' text='clk' type='sig'",
                              "  Node format='4' name='restore' text='My bus' type='bus'",
                              "   Node id='1' text='B one' type='sig'",
                              "   Node id='2' text='b0' type='sig'",
                              "  Node id='3' text='shown' type='sig'"}));
    }
};

QTEST_GUILESS_MAIN(TestSampleDecoding)
#include "tst_sampledecoding.moc"
