#include "analyzer/liteanalyzer.h"
#include "model/bits.h"
#include "model/litefile.h"
#include "tests/support/tempfolder.h"

#include <QTest>

using namespace VEK;

namespace {

SXCore_Lite core(int signalCount, int amount, int implemention)
{
    SXCore_Lite core;
    core.captureAmount = amount;
    core.implemention = implemention;
    for (int i = 0; i < signalCount; ++i) {
        SignalItem item;
        item.name = QStringLiteral("s%1").arg(i);
        item.captureEnable = true;
        core.allSignalList.append(item);
    }
    return core;
}

} // namespace

class TestLiteDecoding : public QObject
{
    Q_OBJECT

private slots:
    void replies()
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
                VekCmdLiteAnalyzer analyzer;
                load(analyzer, core(row.signalCount, row.amount, implemention));
                analyzer.setDeviceName("TK-102");
                QStringList samples;
                for (auto const& signal : analyzer.handleTdoData(str2bit(row.stream)))
                    samples.append(bit2str(signal.data));
                QStringList expected = QString(row.samples).split(' ');
                for (QString& text : expected)
                    text = implemention == 0 ? text.mid(1) + text.left(1) : text;
                QCOMPARE(samples, expected);
            }
        }
    }

    void rotationSet()
    {
        VekCmdLiteAnalyzer analyzer;
        load(analyzer, core(1, 3, 0));
        QStringList rotated;
        QStringList devices{"", "tk-102", "TK-2020"};
        for (int number = 100; number < 300; ++number)
            devices.append(QStringLiteral("TK-%1").arg(number));
        for (QString const& device : qAsConst(devices)) {
            analyzer.setDeviceName(device);
            QString const samples = bit2str(analyzer.handleTdoData(str2bit("001")).first().data);
            if (samples == "001")
                rotated.append(device);
        }
        QCOMPARE(rotated.join(' '),
                 QStringLiteral("TK-101 TK-102 TK-103 TK-104 TK-105 TK-106 TK-107 TK-111 TK-112 "
                                "TK-113 TK-114 TK-121 TK-122 TK-123 TK-124 TK-125 TK-201 TK-202 "
                                "TK-203"));
    }

    void nothingToDecode()
    {
        VekCmdLiteAnalyzer analyzer;
        QBitArray const stream(64);
        QVERIFY(analyzer.handleTdoData(stream).isEmpty());
        load(analyzer, core(3, 8, 0));
        QVERIFY(analyzer.handleTdoData(QBitArray()).isEmpty());
        // far longer replies than asked for: more than a vector holds
        QList<QBitArray> sections;
        for (int i = 0; i < 8; ++i)
            sections.append(i ? sections.first() : QBitArray(1 << 28));
        QVERIFY(analyzer.handleTdoData(combine(sections)).isEmpty());
        QVERIFY(!analyzer.handleTdoData(stream).isEmpty());
        load(analyzer, core(0, 8, 0));
        QVERIFY(analyzer.handleTdoData(stream).isEmpty());
    }

private:
    void load(VekCmdLiteAnalyzer& analyzer, SXCore_Lite core)
    {
        QString const path = m_folder.path("lite.vek");
        QVERIFY(writeVEKConfigToXml_Lite({&core}, path) && analyzer.open(path));
    }

    TempFolder m_folder;
};

QTEST_GUILESS_MAIN(TestLiteDecoding)
#include "tst_litedecoding.moc"
