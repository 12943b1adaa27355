#pragma once

#include "benchmarks/samples.h"

#include <QByteArray>

/// The limits of the exports: tight writers for windows of at most 64 signals, from packed bits
/// into one buffer, with one write. They know the window beforehand and take no other characters.
namespace bench {

class TightWriter
{
public:
    /// Every bus has 16 members; `busWidth` 0 for no buses.
    TightWriter(Samples const& samples, int busWidth);

    /// A file of rows: `head`, then for each sample the time from `firstTime` on and its values.
    /// `Separator` stands in front of every value, `end` behind the last.
    template <int SeparatorSize>
    bool writeTable(QString const& path, QByteArray const& head, char const* separator,
                    QByteArray const& end, quint64 firstTime);

    /// A value change dump behind its head, with the clock's level 1.
    bool writeDump(QString const& path, QByteArray const& head, quint64 timeStep);

private:
    void loadBlock(int block);
    bool flush(QString const& path, char const* end) const;

    Samples const& m_samples;
    int const m_busWidth;
    std::vector<char> m_buffer;
    quint64 m_rows[64]; ///< The samples of 64 rows, bit i for signal i.
};

} // namespace bench
