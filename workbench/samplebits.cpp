#include "workbench/samplebits.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

template <typename Join>
void join(QVector<quint64>& words, QVector<quint64> const& others, Join join)
{
    std::transform(words.cbegin(), words.cend(), others.cbegin(), words.begin(), join);
}

/// Where the number is at one side of the bound: the first bit from the top that is not the bound's
/// decides, and it is `decisive` there.
SampleBits isAtSide(QVector<SampleBits> const& bits, QString const& bound, bool decisive)
{
    SampleBits result(bits.first().size(), false);
    SampleBits equal(bits.first().size(), true);
    for (int i = 0; i < bits.size(); ++i) {
        bool const isOne = bound.at(i) == QLatin1Char('1');
        SampleBits const same = isOne ? bits.at(i) : ~bits.at(i);
        if (isOne != decisive) {
            SampleBits decided = equal;
            decided &= ~same;
            result |= decided;
        }
        equal &= same;
    }
    return result;
}

} // namespace

SampleBits::SampleBits(int samples, bool value)
    : m_words((samples + 63) / 64, value ? ~quint64(0) : 0), m_size(samples)
{}

SampleBits::SampleBits(QBitArray const& bits) : SampleBits(bits.size(), false)
{
    std::memcpy(m_words.data(), bits.bits(), std::size_t(bits.size() + 7) / 8);
    qFromLittleEndian<quint64>(m_words.constData(), m_words.size(), m_words.data());
}

SampleBits SampleBits::operator~() const
{
    SampleBits result = *this;
    for (quint64& word : result.m_words)
        word = ~word;
    return result;
}

SampleBits& SampleBits::operator&=(SampleBits const& other)
{
    join(m_words, other.m_words, [](quint64 a, quint64 b) { return a & b; });
    return *this;
}

SampleBits& SampleBits::operator|=(SampleBits const& other)
{
    join(m_words, other.m_words, [](quint64 a, quint64 b) { return a | b; });
    return *this;
}

SampleBits& SampleBits::operator^=(SampleBits const& other)
{
    join(m_words, other.m_words, [](quint64 a, quint64 b) { return a ^ b; });
    return *this;
}

SampleBits SampleBits::before() const
{
    SampleBits result(m_size, false);
    quint64 carry = 0;
    for (int i = 0; i < m_words.size(); ++i) {
        result.m_words[i] = m_words.at(i) << 1 | carry;
        carry = m_words.at(i) >> 63;
    }
    return result;
}

void SampleBits::set(int sample, bool value)
{
    quint64 const bit = quint64(1) << sample % 64;
    quint64& word = m_words[sample / 64];
    word = value ? word | bit : word & ~bit;
}

/// The first sample from `sample` on with that value; the size without one.
int SampleBits::next(int sample, bool value) const
{
    for (int i = sample / 64; i < m_words.size(); ++i) {
        quint64 word = value ? m_words.at(i) : ~m_words.at(i);
        if (i == sample / 64)
            word &= ~quint64(0) << sample % 64;
        if (word)
            return std::min(m_size, 64 * i + int(qCountTrailingZeroBits(word)));
    }
    return m_size;
}

QVector<int> SampleBits::stretches(int least, int windowLength) const
{
    QVector<int> starts;
    for (int start = next(0, true); start < m_size;) {
        int const window = start / windowLength * windowLength + windowLength;
        int const end = std::min({next(start, false), window, m_size});
        if (end - start > least)
            starts.append(start);
        start = next(end, true);
    }
    return starts;
}

SampleBits isAbove(QVector<SampleBits> const& bits, QString const& bound)
{
    return isAtSide(bits, bound, true);
}

SampleBits isBelow(QVector<SampleBits> const& bits, QString const& bound)
{
    return isAtSide(bits, bound, false);
}
