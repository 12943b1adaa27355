#pragma once

#include <QBitArray>
#include <QList>
#include <QVector>

namespace WaveMonitor {

/// How often a row changes in any part of a capture, told in constant time. It takes 32 bits for
/// each 512 samples, a sixteenth of a signal's own bits and less of a bus's. A copy of it is the
/// same one.
class ChangeCounts
{
public:
    ChangeCounts() = default;
    /// `members` as in `BusSamples::setMembers`. Takes a step for each 64 samples and member.
    explicit ChangeCounts(QList<QBitArray> const& members);

    /// In samples.
    int length() const { return m_length; }

    /// How many of the samples `begin` to `end` - 1 differ from the one before.
    int count(int begin, int end) const;

    /// Another number for each that was built; 0 for none.
    quint64 serial() const { return m_serial; }

private:
    quint64 changes(qint64 begin, int count) const;
    int countBefore(int time) const;

    QList<QBitArray> m_members;
    QVector<quint32> m_before; ///< Changes before each block of samples.
    int m_length = 0;
    quint64 m_serial = 0;
};

} // namespace WaveMonitor
