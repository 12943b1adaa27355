#pragma once

#include <QBitArray>
#include <QList>

namespace VEK {

/// Where the records of a read-back stand in its stream. Row 0 is at the end of the stream and each
/// further row `stride` bits before it; bits that would lie before the stream read as 0.
struct RecordLayout
{
    qint64 firstSignal; ///< Position of signal 0 in row 0.
    int stride;         ///< Bits between two rows.
    int signalCount;    ///< Signals in a row, at consecutive positions.
    int rows;
};

/// One array for each signal, in signal order; bit i of each is that signal in row
/// (`start` + i) mod rows. `start` lies within the rows.
QList<QBitArray> signalArrays(QBitArray const& stream, RecordLayout const& layout, int start);

} // namespace VEK
