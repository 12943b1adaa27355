#include "simulator/patterns.h"

#include <algorithm>
#include <array>

namespace VEK::Simulator {
namespace {

constexpr int WordBits = 64;

/// The number `value` in the last bits of a zeroed row of `signalCount` signals, zeros in front.
void putNumber(std::vector<quint64>& row, int signalCount, quint64 value)
{
    std::size_t const last = row.size() - 1;
    int const bits = signalCount - int(last) * WordBits;
    row[last] = value << (WordBits - bits);
    if (last > 0 && bits < WordBits)
        row[last - 1] = value >> bits;
}

/// The bits of the shift register, 64 at a time. Squaring a recurrence over bits doubles its
/// distances, so that each word is the sum of those words before it whose bits would be summed.
class Noise
{
public:
    explicit Noise(quint32 seed)
    {
        for (quint64& word : m_last) {
            for (int i = 0; i < WordBits; ++i)
                word = word << 1 | quint64(nextBit(seed));
        }
    }

    /// The next bits in the highest of a word, the first one highest, zeros behind; up to 64.
    quint64 take(int count)
    {
        quint64 bits = m_word;
        if (count <= m_left) {
            drop(count);
        } else {
            int const missing = count - m_left;
            m_word = nextWord();
            bits |= m_word >> (count - missing);
            m_left = WordBits;
            drop(missing);
        }
        return bits & ~quint64(0) << (WordBits - count);
    }

private:
    static constexpr unsigned Stages = 32;

    static bool nextBit(quint32& state)
    {
        bool const out = state & 1;
        state = state >> 1 ^ (out ? 0x80200003u : 0u);
        return out;
    }

    quint64 nextWord()
    {
        quint64& place = m_last[m_at % Stages];
        if (m_at >= Stages)
            place ^= m_last[(m_at - 22) % Stages] ^ m_last[(m_at - 2) % Stages] ^
                     m_last[(m_at - 1) % Stages];
        ++m_at;
        return place;
    }

    void drop(int count)
    {
        m_word = count < WordBits ? m_word << count : 0;
        m_left -= count;
    }

    std::array<quint64, Stages> m_last{}; ///< Word k at k modulo their number.
    quint64 m_at = 0;                     ///< The next word.
    quint64 m_word = 0;                   ///< What is left of the one before.
    int m_left = 0;
};

} // namespace

void streamPattern(Pattern const& pattern, int signalCount,
                   std::function<bool(quint64 const* row)> const& take)
{
    if (signalCount < 1)
        return;
    Noise noise(pattern.seed);
    std::vector<quint64> row(std::size_t(Dump::SampleTable::wordsFor(signalCount)));
    for (qint64 k = 0; k < pattern.samples; ++k) {
        std::fill(row.begin(), row.end(), 0);
        if (pattern.kind == Pattern::Counter)
            putNumber(row, signalCount, quint64(k));
        else if (pattern.kind == Pattern::WalkingOne)
            row[std::size_t(k % signalCount / 64)] |=
                Dump::SampleTable::bitOf(int(k % signalCount));
        for (int i = 0; pattern.kind == Pattern::Lfsr && i < signalCount; i += WordBits)
            row[std::size_t(i / WordBits)] = noise.take(std::min(signalCount - i, WordBits));
        if (!take(row.data()))
            return;
    }
}

Dump::SampleTable samplePattern(Pattern const& pattern, int signalCount)
{
    Dump::SampleTable table(signalCount);
    table.reserve(signalCount < 1 ? 0 : pattern.samples);
    streamPattern(pattern, signalCount, [&table](quint64 const* row) {
        table.append(row);
        return true;
    });
    return table;
}

} // namespace VEK::Simulator
