#include "wavemonitor/waves/changecounts.h"

#include "model/bits.h"

#include <QtAlgorithms>

#include <algorithm>
#include <atomic>

namespace WaveMonitor {

namespace {

constexpr int WordBits = 64;
constexpr int Block = 512;

} // namespace

ChangeCounts::ChangeCounts(QList<QBitArray> const& members)
    : m_members(members), m_length(members.isEmpty() ? 0 : members.first().size())
{
    static std::atomic<quint64> built{0};
    m_serial = ++built;
    m_before.reserve(m_length / Block + 1);
    quint32 before = 0;
    for (qint64 begin = 0; begin < m_length; begin += WordBits) {
        if (begin % Block == 0)
            m_before.append(before);
        before +=
            qPopulationCount(changes(begin, int(std::min<qint64>(WordBits, m_length - begin))));
    }
}

/// One bit for each of up to 64 samples.
quint64 ChangeCounts::changes(qint64 begin, int count) const
{
    quint64 found = 0;
    for (QBitArray const& member : m_members)
        found |= VEK::packedBits(member, begin, count) ^ VEK::packedBits(member, begin - 1, count);
    return begin == 0 ? found & ~quint64(1) : found; // the first sample has none before it
}

int ChangeCounts::countBefore(int time) const
{
    if (time <= 0)
        return 0;
    int const block = (time - 1) / Block;
    int count = int(m_before.at(block));
    for (int begin = block * Block; begin < time; begin += WordBits)
        count += int(qPopulationCount(changes(begin, std::min(WordBits, time - begin))));
    return count;
}

int ChangeCounts::count(int begin, int end) const
{
    begin = qBound(0, begin, m_length);
    end = qBound(begin, end, m_length);
    return countBefore(end) - countBefore(begin);
}

} // namespace WaveMonitor
