#include "wavemonitor/waves/bussamples.h"

#include "model/bits.h"

#include <QtAlgorithms>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr int WordBits = 64;

/// Whether both show the same memory, which holds the same bits as long as both exist.
bool shareStorage(QList<QBitArray> const& a, QList<QBitArray> const& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](QBitArray const& left, QBitArray const& right) {
                          return left.size() == right.size() && left.bits() == right.bits();
                      });
}

} // namespace

bool BusSamples::setMembers(QList<QBitArray> const& members)
{
    if (shareStorage(members, m_members))
        return false;
    m_members = members;
    m_length = members.isEmpty() ? 0 : members.first().size();
    return true;
}

QVector<int> BusSamples::changes(int begin, int end) const
{
    constexpr int Steps = WordBits - 1; // pairs of neighbours in a word
    begin = std::max(begin, 0);
    end = std::min(end, m_length);
    QVector<int> found(std::max(end - begin, 0));
    int* next = found.data();
    for (; begin < end; begin += Steps) {
        quint64 changes = 0;
        for (QBitArray const& member : m_members) {
            quint64 const word = VEK::packedBits(member, qint64(begin) - 1);
            changes |= word ^ word >> 1;
        }
        int const count = std::min(Steps, end - begin);
        changes = (begin == 0 ? changes | 1 : changes) & ((quint64(1) << count) - 1);
        for (; changes; changes &= changes - 1)
            *next++ = begin + int(qCountTrailingZeroBits(changes));
    }
    found.resize(int(next - found.data()));
    return found;
}

QBitArray BusSamples::sample(int time) const
{
    QBitArray bits(width());
    int i = 0;
    for (QBitArray const& member : m_members)
        bits.setBit(i++, time < member.size() && member.testBit(time));
    return bits;
}

void BusSamples::numbers(int time, quint64 (&numbers)[64]) const
{
    int const bits = numberWidth();
    std::fill(std::begin(numbers), std::end(numbers), quint64(0));
    for (int i = 0; i < bits; ++i) // the first member is the highest bit
        numbers[bits - 1 - i] = VEK::packedBits(m_members.at(i), time);
    VEK::transpose(numbers);
}

} // namespace WaveMonitor
