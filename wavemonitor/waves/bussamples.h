#pragma once

#include <QBitArray>
#include <QList>
#include <QVector>

namespace WaveMonitor {

/// The samples of a bus, kept as one array a member, so that they share their storage with the
/// signals of the capture. Equal samples in a row form a run.
class BusSamples
{
public:
    /// `members` are the bits of a value, its highest bit first, one bit a sample each. The first
    /// one says how many samples there are; bits that others lack are 0. Time and memory are linear
    /// in what was given. False if the members share their storage with the present ones: nothing
    /// is done then.
    bool setMembers(QList<QBitArray> const& members);

    int length() const { return m_length; }        ///< In samples.
    int width() const { return m_members.size(); } ///< Bits of a sample.

    /// One bit a member, in their order.
    QBitArray sample(int time) const;

    /// Where the runs begin, ascending; the first one at 0. Empty without samples.
    QVector<int> const& runStarts() const { return m_runStarts; }
    /// The index in `runStarts()` of the run that holds that sample.
    int runAt(int time) const;
    /// One past the last sample of a run.
    int runEnd(int run) const;

    /// Up to 64 samples from `time` on as numbers. Of wider samples only their highest 64 bits.
    void numbers(int time, quint64 (&numbers)[64]) const;
    /// Bits of those numbers.
    int numberWidth() const { return qMin(width(), 64); }

private:
    void findRuns();

    QList<QBitArray> m_members;
    QVector<int> m_runStarts;
    int m_length = 0;
};

} // namespace WaveMonitor
