#pragma once

#include <QBitArray>
#include <QString>
#include <QVector>

#include <cstddef>

/// One truth a sample, 64 at a time: what a search finds row by row is put together with these.
/// Bit i % 64 of word i / 64 is sample i; bits behind the last sample may be anything.
class SampleBits
{
public:
    SampleBits() = default;
    SampleBits(int samples, bool value);
    explicit SampleBits(QBitArray const& bits);

    int size() const { return m_size; }
    bool at(int sample) const { return m_words.at(sample / 64) >> sample % 64 & 1; }

    SampleBits operator~() const;
    SampleBits& operator&=(SampleBits const& other);
    SampleBits& operator|=(SampleBits const& other);
    SampleBits& operator^=(SampleBits const& other);
    /// Each sample's the one before it; the first is false.
    SampleBits before() const;
    void set(int sample, bool value);

    /// Where stretches of true begin that are longer than `least` samples. A stretch ends with its
    /// window.
    QVector<int> stretches(int least, int windowLength) const;

private:
    int next(int sample, bool value) const;

    QVector<quint64> m_words;
    int m_size = 0;
};

/// Where a number is above or below a bound: `bits` are its own, the highest first, `bound` has a
/// "0" or "1" for each.
SampleBits isAbove(QVector<SampleBits> const& bits, QString const& bound);
SampleBits isBelow(QVector<SampleBits> const& bits, QString const& bound);
