#include "analyzer/standardanalyzer.h"
#include "model/bits.h"
#include "model/capturecore.h"
#include "results/windowbuilder.h"

#include <QDomDocument>
#include <QTest>

using namespace VEK;

class TestSampleDecoding : public QObject
{
    Q_OBJECT

private slots:
    /// What is not a whole window with its mark; those are captured from end to end.
    void oddReplies()
    {
        struct
        {
            char const* records; // mark and two signals, the last sample first
            int bits, triggerPos;
            char const* fixed; // the samples of the signals
            char const* dynamic;
        } const rows[] = {{"011 010 001", 48, 1, "101 110", "110 011"}, // no mark
                          {"011 010 001", 33, 1, "001 110", "100 011"}, // cut between the signals
                          {"011 110 001", 48, 2000000000, "101 110", "110 011"},
                          {"001 001", 1, 4, "0 1", "0 1"}};
        SxCore core(0);
        core.dataSignalList = {SignalItem(), SignalItem()};
        core.captureAmount = 8;
        for (auto const& row : rows) {
            QString stream;
            for (QString const& record : QString(row.records).split(' '))
                stream += record.rightJustified(16, '0');
            core.triggerPos = row.triggerPos;
            for (int type : {ExpressionStatic, ExpressionDynamic}) {
                core.expressionType = type;
                QStringList samples;
                for (auto const& decoded :
                     VekCmdStandardAnalyzer().handleTdoData(&core, str2bit(stream.right(row.bits))))
                    samples.append(bit2str(decoded.data));
                QCOMPARE(samples.join(' '), type == ExpressionStatic ? row.fixed : row.dynamic);
            }
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
