#include "analyzer/liteanalyzer.h"
#include "model/bits.h"
#include "model/litefile.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <string>
#include <vector>

using namespace VEK;

namespace {

/// The decoding, word for word on strings: rows of n bits from the end of the stream.
std::vector<std::string> decoded(std::string const& stream, int n, int amount, bool rotated)
{
    std::string const padded = std::string(std::size_t(n), '0') + stream;
    std::vector<std::string> rows;
    for (int p = int(stream.size()) - n; int(rows.size()) < amount; p -= n) {
        rows.push_back(padded.substr(std::size_t(p + n), std::size_t(n)));
        if (p - 1 < 0)
            break;
    }
    if (rotated && !rows.empty())
        std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    std::vector<std::string> arrays(static_cast<std::size_t>(n));
    for (std::string const& row : rows) {
        for (std::size_t j = 0; j < arrays.size(); ++j)
            arrays[j] += row[j];
    }
    return arrays;
}

/// One bus of all signals but the first; the texts of every third are given.
SXCore_Lite core(int signalCount, int amount, int implemention)
{
    SXCore_Lite core;
    core.captureAmount = amount;
    core.implemention = implemention;
    SignalItem bus;
    bus.name = "bus";
    for (int i = 0; i < signalCount; ++i) {
        SignalItem item;
        item.name = QStringLiteral("s%1").arg(i);
        item.text = i % 3 ? QString() : QStringLiteral("text %1").arg(i);
        item.captureEnable = bus.captureEnable = true;
        (i ? bus.signalList : core.allSignalList).append(item);
    }
    if (bus.isBus())
        core.allSignalList.append(bus);
    SignalItem hidden;
    hidden.name = "hidden";
    core.allSignalList.prepend(hidden);
    return core;
}

} // namespace

class TestLiteDecoding : public QObject
{
    Q_OBJECT

private slots:
    void equalsThePlainWay_data()
    {
        QTest::addColumn<int>("signalCount");
        QTest::addColumn<int>("amount");
        QTest::addColumn<int>("streamBits");
        for (int n : {1, 3, 8, 64, 65, 130}) {
            auto const add = [&](char const* what, int amount, int bits) {
                QTest::addRow("%s, %d signals", what, n) << n << amount << bits;
            };
            add("as asked", 200, 200 * n);
            add("padded to a section", 200, 256 * n);
            add("one row", 1, n);
            add("one row of many", 1, 5 * n);
            add("fewer rows", 128, 63 * n);
            add("cut row", 128, 63 * n + n / 2);
            add("one bit", 8, 1);
            add("nothing expected", 0, 10 * n);
            add("nonsense expected", -2147483647, 10 * n);
        }
    }

    void equalsThePlainWay()
    {
        QFETCH(int, signalCount);
        QFETCH(int, amount);
        QFETCH(int, streamBits);
        QRandomGenerator random(quint32(signalCount * 1000 + streamBits));
        std::string stream(std::size_t(streamBits), '0');
        for (char& bit : stream)
            bit = random.bounded(2) ? '1' : '0';
        for (int implemention : {0, 1}) {
            VekCmdLiteAnalyzer analyzer;
            load(analyzer, core(signalCount, amount, implemention));
            for (char const* device : {"", "TK-102", "TK-202", "tk-202", "TK-2020", "TK-999"}) {
                bool const inSet = !qstrcmp(device, "TK-102") || !qstrcmp(device, "TK-202");
                analyzer.setDeviceName(device);
                auto const expected =
                    decoded(stream, signalCount, amount, inSet && implemention == 0);
                auto const actual = analyzer.handleTdoData(str2bit(QString::fromStdString(stream)));
                QCOMPARE(actual.size(), signalCount);
                for (int j = 0; j < signalCount; ++j) {
                    QCOMPARE(actual.at(j).id, j);
                    QCOMPARE(actual.at(j).name, QStringLiteral("s%1").arg(j));
                    QCOMPARE(actual.at(j).text,
                             j % 3 ? QString() : QStringLiteral("text %1").arg(j));
                    QCOMPARE(bit2str(actual.at(j).data).toStdString(), expected[std::size_t(j)]);
                }
            }
        }
    }

    void rotationSet()
    {
        VekCmdLiteAnalyzer analyzer;
        load(analyzer, core(1, 3, 0));
        QStringList rotated;
        for (int number = 100; number < 300; ++number) {
            QString const device = QStringLiteral("TK-%1").arg(number);
            analyzer.setDeviceName(device);
            QString const samples = bit2str(analyzer.handleTdoData(str2bit("001")).first().data);
            if (samples == "001")
                rotated.append(device);
            else
                QCOMPARE(samples, QStringLiteral("100"));
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
        QVERIFY(analyzer.handleTdoData(combine({QBitArray(), QBitArray()})).isEmpty());
        // far longer replies than asked for: more than a vector holds
        QList<QBitArray> sections;
        for (int i = 0; i < 8; ++i)
            sections.append(i ? sections.first() : QBitArray(1 << 28));
        QVERIFY(analyzer.handleTdoData(combine(sections)).isEmpty());
        QVERIFY(!analyzer.handleTdoData(stream).isEmpty());
        load(analyzer, core(0, 8, 0));
        QVERIFY(analyzer.handleTdoData(stream).isEmpty());
    }

    void opensByTheEnding()
    {
        VekCmdLiteAnalyzer analyzer;
        for (char const* name : {"lite.rsx", "lite.vek.rsx"})
            QVERIFY(analyzer.open(written(core(1, 1, 0), name)));
        for (char const* name : {"lite.VEK", "lite.txt", "vek"})
            QVERIFY(!analyzer.open(written(core(1, 1, 0), name)));
        QVERIFY(!analyzer.open(m_folder.filePath("none.vek")));
    }

private:
    QString written(SXCore_Lite core, QString const& name)
    {
        QString const path = m_folder.filePath(name);
        return writeVEKConfigToXml_Lite({&core}, path) ? path : QString();
    }

    void load(VekCmdLiteAnalyzer& analyzer, SXCore_Lite const& core)
    {
        QVERIFY(analyzer.open(written(core, "lite.vek")));
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestLiteDecoding)
#include "tst_litedecoding.moc"
