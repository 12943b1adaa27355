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
    findRuns();
    return true;
}

void BusSamples::findRuns()
{
    // Where any member differs from its sample before, 64 samples a word.
    QVector<quint64> changes((m_length + WordBits - 1) / WordBits, 0);
    for (QBitArray const& member : qAsConst(m_members)) {
        for (int word = 0; word < changes.size(); ++word) {
            qint64 const time = qint64(word) * WordBits;
            changes[word] |= VEK::packedBits(member, time) ^ VEK::packedBits(member, time - 1);
        }
    }
    if (m_length > 0)
        changes[0] |= 1;
    if (int const used = m_length % WordBits)
        changes.last() &= (quint64(1) << used) - 1;
    int count = 0;
    for (quint64 word : qAsConst(changes))
        count += int(qPopulationCount(word));
    m_runStarts = QVector<int>();
    m_runStarts.reserve(count);
    for (int word = 0; word < changes.size(); ++word) {
        for (quint64 left = changes.at(word); left; left &= left - 1)
            m_runStarts.append(word * WordBits + int(qCountTrailingZeroBits(left)));
    }
}

QBitArray BusSamples::sample(int time) const
{
    QBitArray bits(width());
    int i = 0;
    for (QBitArray const& member : m_members)
        bits.setBit(i++, time < member.size() && member.testBit(time));
    return bits;
}

int BusSamples::runAt(int time) const
{
    auto const next = std::upper_bound(m_runStarts.begin(), m_runStarts.end(), time);
    return int(next - m_runStarts.begin()) - 1;
}

int BusSamples::runEnd(int run) const
{
    return run + 1 < m_runStarts.size() ? m_runStarts.at(run + 1) : m_length;
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
