#include "wavemonitor/timemarks.h"

#include <QtAlgorithms>

#include <algorithm>

namespace WaveMonitor {

namespace {
constexpr quint64 kAllOnes = ~quint64(0);
} // namespace

void TimeMarks::reset(int size)
{
    m_size = std::max(size, 0);
    m_words.fill(0, m_size / 64 + 1);
}

void TimeMarks::insert(qint64 time)
{
    if (time >= 0 && time < m_size) {
        m_words[static_cast<int>(time / 64)] |= quint64(1) << (time % 64);
    }
}

bool TimeMarks::contains(int time) const
{
    return time >= 0 && time < m_size && (m_words[time / 64] >> (time % 64) & 1) != 0;
}

int TimeMarks::previous(int time) const
{
    int const last = std::min(time, m_size) - 1;
    if (last < 0) {
        return -1;
    }
    int word = last / 64;
    quint64 bits = m_words[word] & (kAllOnes >> (63 - last % 64));
    while (bits == 0 && word > 0) {
        bits = m_words[--word];
    }
    return bits == 0 ? -1 : word * 64 + 63 - static_cast<int>(qCountLeadingZeroBits(bits));
}

int TimeMarks::next(int time) const
{
    return time >= m_size ? -1 : scanUp(std::max(time + 1, 0), 0);
}

int TimeMarks::firstFree(int time) const
{
    return scanUp(std::max(time, 0), kAllOnes);
}

/// The first time from `from` on whose bit, exclusive or `flip`, is set, or -1.
int TimeMarks::scanUp(int from, quint64 flip) const
{
    if (from >= m_size) {
        return -1;
    }
    int word = from / 64;
    quint64 bits = (m_words[word] ^ flip) & (kAllOnes << (from % 64));
    while (bits == 0 && word + 1 < m_words.size()) {
        bits = m_words[++word] ^ flip;
    }
    if (bits == 0) {
        return -1;
    }
    int const time = word * 64 + static_cast<int>(qCountTrailingZeroBits(bits));
    return time < m_size ? time : -1;
}

} // namespace WaveMonitor
