#include "analyzer/liteanalyzer.h"
#include "analyzer/standardanalyzer.h"
#include "benchmarks/comparison.h"
#include "benchmarks/transpose.h"
#include "model/bits.h"
#include "model/capturecore.h"
#include "model/litefile.h"
#include "results/windowbuilder.h"

#include <QDomDocument>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstring>
#include <map>
#include <memory>

using namespace VEK;
using bench::Comparison;

namespace {

constexpr int Rows = 1000000;
constexpr int TriggerPos = 1000;

QList<SignalItem> signalItems(int count)
{
    QList<SignalItem> items;
    for (int i = 0; i < count; ++i) {
        SignalItem item;
        item.name = QStringLiteral("top/unit/data[%1]").arg(i);
        item.captureEnable = true;
        items.append(item);
    }
    return items;
}

/// Bits from a fixed seed, in words with the first bit lowest and two words behind the end.
std::vector<quint64> randomBits(qint64 count)
{
    QRandomGenerator random(4711);
    std::vector<quint64> words(std::size_t(count / 64 + 3));
    random.generate(words.begin(), words.end());
    return words;
}

/// A read-back, as the product takes it and as plain words.
struct Stream
{
    int signalCount;
    int stride; ///< Bits of a record.
    int rows;
    int start; ///< Row of the first sample in time; row 0 stands at the end of the stream.
    std::vector<quint64> words;
    QBitArray bits;

    qint64 size() const { return qint64(rows) * stride; }
    /// Signal 0 of row 0.
    qint64 firstSignal() const { return size() - signalCount; }

    Stream(int signalCount, int stride, int rows, int start)
        : signalCount(signalCount), stride(stride), rows(rows), start(start),
          words(randomBits(size()))
    {}

    void finish()
    {
        bits = QBitArray::fromBits(reinterpret_cast<char const*>(words.data()), int(size()));
    }
};

/// Records of a mark and the signals; only the row of the trigger has its mark set.
Stream standardStream(int signalCount, int rows)
{
    int const start = rows / 3;
    Stream stream(signalCount, signalCount + 1, rows, start);
    for (int row = 0; row < rows; ++row) {
        qint64 const mark = stream.firstSignal() - 1 - qint64(row) * stream.stride;
        quint64 const bit = quint64(1) << (mark % 64);
        quint64& word = stream.words[std::size_t(mark / 64)];
        word = row == start + TriggerPos ? word | bit : word & ~bit;
    }
    stream.finish();
    return stream;
}

Stream liteStream(int signalCount, int rows)
{
    Stream stream(signalCount, signalCount, rows, 0);
    stream.finish();
    return stream;
}

/// The limit: blocks of 64 records, loaded from wherever they stand, are transposed into plain
/// arrays in the order of time. One word an array and 64 rows.
std::vector<std::unique_ptr<quint64[]>> transposed(Stream const& stream)
{
    std::size_t const words = std::size_t(stream.rows + 63) / 64;
    std::vector<std::unique_ptr<quint64[]>> arrays;
    for (int i = 0; i < (stream.signalCount + 63) / 64 * 64; ++i)
        arrays.emplace_back(i < stream.signalCount ? new quint64[words] : nullptr);
    auto const* const bytes = reinterpret_cast<unsigned char const*>(stream.words.data());
    qint64 const first = stream.firstSignal();
    qint64 const last = first - qint64(stream.rows - 1) * stream.stride;
    for (int signal = 0; signal < stream.signalCount; signal += 64) {
        qint64 at = first - qint64(stream.start) * stream.stride;
        for (std::size_t word = 0; word < words; ++word) {
            quint64 block[64] = {};
            int const count = int(std::min<std::size_t>(64, std::size_t(stream.rows) - word * 64));
            for (int i = 0; i < count; ++i) {
                qint64 const bit = at + signal;
                quint64 low;
                std::memcpy(&low, bytes + bit / 8, sizeof low);
                quint64 const high = bytes[bit / 8 + 8];
                int const shift = int(bit % 8);
                block[i] = low >> shift | high << 1 << (63 - shift);
                at = at == last ? first : at - stream.stride;
            }
            bench::transpose(block);
            int const width = std::min(64, stream.signalCount - signal);
            for (int j = 0; j < width; ++j)
                arrays[std::size_t(signal + j)][word] = block[j];
        }
    }
    return arrays;
}

bool sameBits(QList<WaveMonitor::SignalData> const& decoded, Stream const& stream)
{
    auto const arrays = transposed(stream);
    if (decoded.size() != stream.signalCount)
        return false;
    for (int j = 0; j < decoded.size(); ++j) {
        auto const* const plain = reinterpret_cast<char const*>(arrays[std::size_t(j)].get());
        if (decoded.at(j).data != QBitArray::fromBits(plain, stream.rows))
            return false;
    }
    return true;
}

Comparison standard(int signalCount)
{
    auto const streams = std::make_shared<std::map<int, Stream>>();
    for (int rows : {Rows, Rows / 10})
        streams->emplace(rows, standardStream(signalCount, rows));
    auto const core = std::make_shared<SxCore>(0);
    core->dataSignalList = signalItems(signalCount);
    core->triggerPos = TriggerPos;
    auto const decode = [core](Stream const& stream) {
        core->captureAmount = stream.rows;
        return VekCmdStandardAnalyzer().handleTdoData(core.get(), stream.bits);
    };
    Comparison comparison;
    comparison.name = "decode Standard, records of " + std::to_string(signalCount + 1) + " bits";
    comparison.aim = 2;
    comparison.size = Rows;
    comparison.otherSize = Rows / 10;
    comparison.work = [=](benchmark::State& state) {
        Stream const& stream = streams->at(int(state.range(0)));
        for (auto _ : state)
            benchmark::DoNotOptimize(decode(stream));
    };
    comparison.limit = [=](benchmark::State& state) {
        Stream const& stream = streams->at(int(state.range(0)));
        for (auto _ : state)
            benchmark::DoNotOptimize(transposed(stream));
    };
    comparison.agree = [=] {
        return sameBits(decode(streams->at(Rows / 10)), streams->at(Rows / 10));
    };
    return comparison;
}

/// An analyzer whose core has that many signals and rows.
std::shared_ptr<VekCmdLiteAnalyzer> liteAnalyzer(int signalCount, int rows)
{
    QTemporaryDir const folder;
    SXCore_Lite core;
    core.captureAmount = rows;
    core.allSignalList = signalItems(signalCount);
    QString const file = folder.filePath(QStringLiteral("lite.vek"));
    auto analyzer = std::make_shared<VekCmdLiteAnalyzer>();
    if (!writeVEKConfigToXml_Lite({&core}, file) || !analyzer->open(file))
        qFatal("no lite core");
    return analyzer;
}

Comparison lite(int signalCount)
{
    auto const streams = std::make_shared<std::map<int, Stream>>();
    auto const analyzers = std::make_shared<std::map<int, std::shared_ptr<VekCmdLiteAnalyzer>>>();
    for (int rows : {Rows, Rows / 10}) {
        streams->emplace(rows, liteStream(signalCount, rows));
        analyzers->emplace(rows, liteAnalyzer(signalCount, rows));
    }
    Comparison comparison;
    comparison.name = "decode Lite, " + std::to_string(signalCount) + " signals";
    comparison.aim = 2;
    comparison.size = Rows;
    comparison.otherSize = Rows / 10;
    comparison.work = [=](benchmark::State& state) {
        Stream const& stream = streams->at(int(state.range(0)));
        VekCmdLiteAnalyzer const& analyzer = *analyzers->at(int(state.range(0)));
        for (auto _ : state)
            benchmark::DoNotOptimize(analyzer.handleTdoData(stream.bits));
    };
    comparison.limit = [=](benchmark::State& state) {
        Stream const& stream = streams->at(int(state.range(0)));
        for (auto _ : state)
            benchmark::DoNotOptimize(transposed(stream));
    };
    comparison.agree = [=] {
        Stream const& stream = streams->at(Rows / 10);
        return sameBits(analyzers->at(Rows / 10)->handleTdoData(stream.bits), stream);
    };
    return comparison;
}

/// The element of a window of 64 signals, from its arrays.
Comparison windowOf64()
{
    constexpr int SignalCount = 64;
    QList<SignalItem> const items = signalItems(SignalCount);
    auto const decoded = std::make_shared<std::map<int, QList<WaveMonitor::SignalData>>>();
    for (int rows : {Rows, Rows / 10}) {
        auto const arrays = transposed(liteStream(SignalCount, rows));
        QList<QBitArray> bits;
        for (auto const& array : arrays)
            bits.append(QBitArray::fromBits(reinterpret_cast<char const*>(array.get()), rows));
        decoded->emplace(rows, namedSignals(items, bits));
    }
    Comparison comparison;
    comparison.name = "Window element, 1,000,000 x 64";
    comparison.aim = 2;
    comparison.size = Rows;
    comparison.otherSize = Rows / 10;
    comparison.work = [=](benchmark::State& state) {
        QList<WaveMonitor::SignalData> const& data = decoded->at(int(state.range(0)));
        for (auto _ : state) {
            QDomDocument document;
            benchmark::DoNotOptimize(windowElement(document, TriggerPos, items, data));
        }
    };
    // The limit: as many strings of that length.
    comparison.limit = [=](benchmark::State& state) {
        for (auto _ : state) {
            QList<QString> texts;
            for (int i = 0; i < SignalCount; ++i)
                texts.append(QString(int(state.range(0)), QLatin1Char('0')));
            benchmark::DoNotOptimize(texts);
        }
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Comparison> comparisons;
    for (int signalCount : {16, 32, 64, 128})
        comparisons.push_back(standard(signalCount));
    for (int signalCount : {16, 32, 64, 128})
        comparisons.push_back(lite(signalCount));
    comparisons.push_back(windowOf64());
    return bench::run(comparisons, argc, argv);
}
