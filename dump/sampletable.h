#pragma once

#include <QString>

#include <vector>

namespace VEK::Dump {

/// What the signals of one core do: a row of bits for each edge of its sample clock. Packed, one
/// bit a signal; signal i of a row is bit 63 - i % 64 of word i / 64, so that a bus whose first
/// signal is the highest reads as a number.
class SampleTable
{
public:
    SampleTable() = default;
    explicit SampleTable(int signalCount) : m_signals(signalCount), m_words(wordsFor(signalCount))
    {}

    static int wordsFor(int bits) { return (bits + 63) / 64; }
    static quint64 bitOf(int signal) { return quint64(1) << (63 - signal % 64); }

    int signalCount() const { return m_signals; }
    int wordsPerRow() const { return m_words; }
    qint64 rowCount() const { return m_rows; }

    /// The words of a row that is there.
    quint64 const* row(qint64 index) const { return m_data.data() + index * m_words; }
    bool bit(qint64 index, int signal) const { return row(index)[signal / 64] & bitOf(signal); }

    /// Makes room for so many rows in all.
    void reserve(qint64 rows) { m_data.reserve(std::size_t(rows * m_words)); }
    /// Appends `wordsPerRow` words.
    void append(quint64 const* row)
    {
        m_data.insert(m_data.end(), row, row + m_words);
        ++m_rows;
    }

private:
    int m_signals = 0;
    int m_words = 0;
    qint64 m_rows = 0;
    std::vector<quint64> m_data;
};

/// What the cores of a bench see.
struct SampledStimulus
{
    std::vector<SampleTable> tables; ///< One for each core.
    QString warning; ///< What the user should know about it; empty when all is well.
};

/// All tables of a bench together hold no more than this many bytes.
constexpr qint64 MaxTableBytes = qint64(1) << 30;

} // namespace VEK::Dump
