// A search over a capture, beside a bare look at all of its bits.

#include "benchmarks/comparison.h"
#include "workbench/wavesearch.h"

#include <QRandomGenerator>

using bench::Comparison;

namespace {

constexpr int Samples = 1000000;
constexpr int Signals = 64;

SearchedSamples makeSamples()
{
    QRandomGenerator random(1);
    SearchedSamples searched;
    searched.length = searched.windowLength = Samples;
    VEK::SignalItem bus;
    bus.name = QStringLiteral("bus");
    for (int i = 0; i < Signals; ++i) {
        VEK::SignalItem member;
        member.name = QStringLiteral("bus[%1]").arg(Signals - 1 - i);
        bus.signalList << member;
        QBitArray bits(Samples);
        for (int t = 0; t < Samples; ++t)
            bits.setBit(t, random.generate() & 1);
        searched.samples.insert(member.name, bits);
    }
    searched.items << bus;
    return searched;
}

/// The two highest bits differ in just these values.
QString const Condition = QStringLiteral("bus in 0x4000000000000000..0xBFFFFFFFFFFFFFFF");

/// Looks at every bit once, and lists where a stretch begins.
QVector<int> tightSearch(SearchedSamples const& searched)
{
    int ones = 0;
    for (QBitArray const& bits : searched.samples)
        ones += bits.count(true);
    benchmark::DoNotOptimize(ones);
    QBitArray const found = searched.samples.value(QStringLiteral("bus[63]")) ^
                            searched.samples.value(QStringLiteral("bus[62]"));
    QVector<int> hits;
    for (int t = 0; t < found.size(); ++t)
        if (found.at(t) && (t == 0 || !found.at(t - 1)))
            hits << t;
    return hits;
}

} // namespace

int main(int argc, char** argv)
{
    SearchedSamples const searched = makeSamples();
    Comparison comparison;
    comparison.name = "search for a range, 1,000,000 x 64";
    comparison.aim = 2;
    comparison.size = Samples;
    comparison.work = [&searched](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(findSamples(Condition, 0, searched).hits.size());
    };
    comparison.limit = [&searched](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(tightSearch(searched).size());
    };
    comparison.agree = [&searched] {
        return findSamples(Condition, 0, searched).hits == tightSearch(searched);
    };
    return bench::run({comparison}, argc, argv);
}
