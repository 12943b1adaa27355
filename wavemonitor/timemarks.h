#pragma once

#include <QVector>

namespace WaveMonitor {

/// A set of sample times, one bit a sample, walked 64 samples at a time.
class TimeMarks
{
public:
    /// Empties the set and makes room for the times 0 .. size - 1.
    void reset(int size);

    /// Adds a time; one outside the room is ignored.
    void insert(qint64 time);
    bool contains(int time) const;

    /// The greatest marked time before `time`, or -1.
    int previous(int time) const;
    /// The smallest marked time after `time`, or -1.
    int next(int time) const;
    /// The smallest time at or after `time` that is not marked, or -1.
    int firstFree(int time) const;

private:
    int scanUp(int from, quint64 flip) const;

    QVector<quint64> m_words;
    int m_size = 0;
};

} // namespace WaveMonitor
