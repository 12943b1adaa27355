#include "analyzer/liteanalyzer.h"
#include "analyzer/standardanalyzer.h"
#include "model/bits.h"
#include "model/litefile.h"
#include "results/windowbuilder.h"
#include "tests/support/tempfolder.h"

#include <QDomDocument>
#include <QTest>

using namespace VEK;

namespace {

template <typename Decoded>
QString samples(Decoded const& decoded)
{
    QStringList texts;
    for (auto const& signal : decoded)
        texts.append(bit2str(signal.data));
    return texts.join(' ');
}

} // namespace

/// What is not a whole window with its mark; those are captured from end to end.
class TestDecoding : public QObject
{
    Q_OBJECT

private slots:
    void standardReplies()
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
        VekCmdStandardAnalyzer const analyzer;
        for (auto const& row : rows) {
            QString stream;
            for (QString const& record : QString(row.records).split(' '))
                stream += record.rightJustified(16, '0');
            core.triggerPos = row.triggerPos;
            for (int type : {ExpressionStatic, ExpressionDynamic}) {
                core.expressionType = type;
                QCOMPARE(samples(analyzer.handleTdoData(&core, str2bit(stream.right(row.bits)))),
                         type == ExpressionStatic ? row.fixed : row.dynamic);
            }
        }
        QBitArray const stream(64);
        QVERIFY(analyzer.handleTdoData(nullptr, stream).isEmpty());
        QVERIFY(analyzer.handleTdoData(&core, QBitArray()).isEmpty());
        for (int amount : {0, -1, -2147483647}) {
            core.captureAmount = amount;
            QVERIFY(analyzer.handleTdoData(&core, stream).isEmpty());
        }
    }

    void liteReplies()
    {
        struct
        {
            int signalCount, amount;
            char const* stream; // the first row at its end
            char const* samples;
        } const rows[] = {{2, 3, "0000110110", "101 011"}, // padded to a section
                          {2, 1, "1001", "0 1"},
                          {3, 128, "10110", "10 11 00"}, // the last row is cut
                          {3, 8, "1", "0 0 1"},
                          {2, -2147483647, "1001", " "}};
        for (auto const& row : rows) {
            for (int implemention : {0, 1}) {
                load(row.signalCount, row.amount, implemention);
                m_lite.setDeviceName("TK-102");
                QStringList expected = QString(row.samples).split(' ');
                for (QString& text : expected)
                    text = implemention == 0 ? text.mid(1) + text.left(1) : text;
                QCOMPARE(samples(m_lite.handleTdoData(str2bit(row.stream))), expected.join(' '));
            }
        }
    }

    void rotationSet()
    {
        load(1, 3, 0);
        QStringList rotated, devices{"", "tk-102", "TK-2020"};
        for (int number = 100; number < 300; ++number)
            devices.append(QStringLiteral("TK-%1").arg(number));
        for (QString const& device : qAsConst(devices)) {
            m_lite.setDeviceName(device);
            if (samples(m_lite.handleTdoData(str2bit("001"))) == "001")
                rotated.append(device);
        }
        QCOMPARE(rotated.join(' '),
                 QStringLiteral("TK-101 TK-102 TK-103 TK-104 TK-105 TK-106 TK-107 TK-111 TK-112 "
                                "TK-113 TK-114 TK-121 TK-122 TK-123 TK-124 TK-125 TK-201 TK-202 "
                                "TK-203"));
    }

    void nothingToDecodeLite()
    {
        QBitArray const stream(64);
        QVERIFY(VekCmdLiteAnalyzer().handleTdoData(stream).isEmpty());
        load(3, 8, 0);
        QVERIFY(m_lite.handleTdoData(QBitArray()).isEmpty());
        // far longer replies than asked for: more than a vector holds
        QList<QBitArray> sections;
        for (int i = 0; i < 8; ++i)
            sections.append(i ? sections.first() : QBitArray(1 << 28));
        QVERIFY(m_lite.handleTdoData(combine(sections)).isEmpty());
        QVERIFY(!m_lite.handleTdoData(stream).isEmpty());
        load(0, 8, 0);
        QVERIFY(m_lite.handleTdoData(stream).isEmpty());
    }

    void windowTellsTheTriggerPosition()
    {
        QDomDocument document;
        QDomElement const window = windowElement(document, 7, {}, {});
        QCOMPARE(window.firstChildElement("TriggerPosition").text(), "7");
    }

private:
    void load(int signalCount, int amount, int implemention)
    {
        SXCore_Lite core;
        core.captureAmount = amount;
        core.implemention = implemention;
        SignalItem item;
        item.captureEnable = true;
        core.allSignalList = QVector<SignalItem>(signalCount, item).toList();
        QString const path = m_folder.path("lite.vek");
        QVERIFY(writeVEKConfigToXml_Lite({&core}, path) && m_lite.open(path));
    }

    TempFolder const m_folder;
    VekCmdLiteAnalyzer m_lite;
};

QTEST_GUILESS_MAIN(TestDecoding)
#include "tst_decoding.moc"
