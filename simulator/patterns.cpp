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
            row[std::size_t(signal / 64)] |= SampleTable::bitOf(signal);
    }
}

bool nextNoise(quint32& state)
{
    bool const out = state & 1;
    state = state >> 1 ^ (out ? 0x80200003u : 0u);
    return out;
}

} // namespace

SampleTable samplePattern(Pattern const& pattern, int signalCount)
{
    SampleTable table(signalCount);
    quint32 noise = pattern.seed;
    std::vector<quint64> row(std::size_t(table.wordsPerRow()));
    for (qint64 k = 0; signalCount > 0 && k < pattern.samples; ++k) {
        std::fill(row.begin(), row.end(), 0);
        if (pattern.kind == Pattern::Counter)
            putNumber(row, signalCount, quint64(k));
        else if (pattern.kind == Pattern::WalkingOne)
            row[std::size_t(k % signalCount / 64)] |= SampleTable::bitOf(int(k % signalCount));
        for (int i = 0; pattern.kind == Pattern::Lfsr && i < signalCount; ++i) {
            if (nextNoise(noise))
                row[std::size_t(i / 64)] |= SampleTable::bitOf(i);
        }
        table.append(row.data());
    }
    return table;
}

} // namespace VEK::Simulator
