#include "simulator/patterns.h"

#include <algorithm>

namespace VEK::Simulator {
namespace {

/// The number `value` in the last bits of a row of `signalCount` signals, zeros in front.
void putNumber(std::vector<quint64>& row, int signalCount, quint64 value)
{
    for (int bit = 0; bit < std::min(signalCount, 64); ++bit) {
        int const signal = signalCount - 1 - bit;
        if (value >> bit & 1)
            row[std::size_t(signal / 64)] |= Dump::SampleTable::bitOf(signal);
    }
}

/// The next `count` bits (1 to 64), the first of them highest. Without a branch on a bit, which no
/// processor foresees.
quint64 nextNoise(quint32& state, int count)
{
    quint64 word = 0;
    for (int i = 0; i < count; ++i) {
        quint32 const out = state & 1;
        state = state >> 1 ^ ((0u - out) & 0x80200003u);
        word = word << 1 | out;
    }
    return word << (64 - count);
}

} // namespace

Dump::SampleTable samplePattern(Pattern const& pattern, int signalCount)
{
    Dump::SampleTable table(signalCount);
    quint32 noise = pattern.seed;
    std::vector<quint64> row(std::size_t(table.wordsPerRow()));
    for (qint64 k = 0; signalCount > 0 && k < pattern.samples; ++k) {
        std::fill(row.begin(), row.end(), 0);
        if (pattern.kind == Pattern::Counter)
            putNumber(row, signalCount, quint64(k));
        else if (pattern.kind == Pattern::WalkingOne)
            row[std::size_t(k % signalCount / 64)] |=
                Dump::SampleTable::bitOf(int(k % signalCount));
        for (int i = 0; pattern.kind == Pattern::Lfsr && i < signalCount; i += 64)
            row[std::size_t(i / 64)] = nextNoise(noise, std::min(64, signalCount - i));
        table.append(row.data());
    }
    return table;
}

} // namespace VEK::Simulator
