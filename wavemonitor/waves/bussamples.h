#pragma once

#include <QBitArray>
#include <QList>
#include <QVector>

namespace WaveMonitor {

/// The samples of a bus, kept as one array a member, so that they share their storage with the
/// signals of the capture. Equal samples in a row form a run. Nothing is built from the samples:
/// where they change is found in the members whenever a part of them is painted.
class BusSamples
{
public:
    /// `members` are the bits of a value, its highest bit first, one bit a sample each. The first
    /// one says how many samples there are; bits that others lack are 0. False if the members share
    /// their storage with the present ones: nothing is done then.
    bool setMembers(QList<QBitArray> const& members);

    int length() const { return m_length; }        ///< In samples.
    int width() const { return m_members.size(); } ///< Bits of a sample.

    QList<QBitArray> const& members() const { return m_members; }

    /// One bit a member, in their order.
    QBitArray sample(int time) const;

    /// The samples from `begin` to below `end` that begin a run, ascending: those that differ from
    /// the one before, and sample 0. What lies outside of the samples is left out. Takes a step for
    /// each 64 samples and member.
    QVector<int> changes(int begin, int end) const;

    /// Up to 64 samples from `time` on as numbers. Of wider samples only their highest 64 bits.
    void numbers(int time, quint64 (&numbers)[64]) const;
    /// Bits of those numbers.
    int numberWidth() const { return qMin(width(), 64); }

private:
    QList<QBitArray> m_members;
    int m_length = 0;
};

} // namespace WaveMonitor
