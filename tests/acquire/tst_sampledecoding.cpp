#include "analyzer/standardanalyzer.h"
#include "model/bits.h"
#include "model/capturecore.h"
#include "results/windowbuilder.h"

#include <QDomDocument>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using namespace VEK;

namespace {

QString randomBits(int count)
{
    QRandomGenerator random{quint32(count)};
    QString bits(count, '0');
    for (QChar& bit : bits)
        bit = random.bounded(2) ? '1' : '0';
    return bits;
}

/// The rows of a reply, one at a time: `width` bits from the end on and every `step` bits before
/// it, up to `amount`, and with zeros before the first bit.
QStringList plainRows(QString const& stream, int width, int step, int amount)
{
    QString const padded = QString(width, '0') + stream;
    QStringList rows;
    for (int end = stream.size(); rows.size() < amount && (rows.isEmpty() || end > 0); end -= step)
        rows.append(padded.mid(end, width));
    return rows;
}

/// The row that comes first when the ring is turned so that the trigger row lands at its position.
int firstRow(QStringList const& rows, int triggerPos, bool dynamic)
{
    int const count = rows.size();
    int trigger = 0;
    while (trigger < count && rows.at(trigger).at(0) != '1')
        ++trigger;
    if (dynamic)
        trigger = trigger == 0 ? count - 1 : trigger - 1;
    return ((trigger - triggerPos) % count + count) % count;
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
        for (int n : {0, 1, 15, 16, 64, 130}) {
            int const shift = std::max(16, n + 1);
            auto const add = [&](char const* what, int amount, int bits, int pos, int mark) {
                QTest::addRow("%s, %d signals", what, n) << n << amount << bits << pos << mark;
            };
            add("ring", 200, 200 * shift, 50, 77);
            add("mark in row 0", 57, 57 * shift, 0, 0);
            add("no mark", 56, 56 * shift, 10, -1);
            add("cut record", 128, 119 * shift + 5, 127, 62);
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
            core.dataSignalList.append(SignalItem());
        core.captureAmount = amount;
        core.triggerPos = triggerPos;
        int const shift = core.dataOutShiftWidth();

        QString stream = randomBits(streamBits);
        for (int row = 0, at = streamBits - 1 - signalCount; at >= 0; ++row, at -= shift)
            stream[at] = row == mark ? '1' : '0';
        QStringList const rows = plainRows(stream, signalCount + 1, shift, amount);

        VekCmdStandardAnalyzer const analyzer;
        for (int type : {ExpressionStatic, ExpressionDynamic}) {
            core.expressionType = type;
            QStringList samples;
            for (auto const& decoded : analyzer.handleTdoData(&core, str2bit(stream)))
                samples.append(bit2str(decoded.data));
            int const first = firstRow(rows, triggerPos, type == ExpressionDynamic);
            QStringList expected;
            for (int j = 1; j <= signalCount; ++j) {
                expected.append(QString());
                for (int i = 0; i < rows.size(); ++i)
                    expected.last() += rows.at((first + i) % rows.size()).at(j);
            }
            QCOMPARE(samples, expected);
        }
    }

    void nothingToDecode()
    {
        VekCmdStandardAnalyzer const analyzer;
        SxCore core(0);
        core.dataSignalList.append(SignalItem());
        QBitArray const stream(64);
        QVERIFY(analyzer.handleTdoData(nullptr, stream).isEmpty());
        QVERIFY(analyzer.handleTdoData(&core, QBitArray()).isEmpty());
        for (int amount : {0, -1, -2147483647}) {
            core.captureAmount = amount;
            QVERIFY(analyzer.handleTdoData(&core, stream).isEmpty());
        }
    }

    void windowTellsTheTriggerPosition()
    {
        QDomDocument document;
        QDomElement const window = windowElement(document, 7, {}, {});
        QCOMPARE(window.firstChildElement("TriggerPosition").text(), "7");
    }
};

QTEST_GUILESS_MAIN(TestSampleDecoding)
#include "tst_sampledecoding.moc"
