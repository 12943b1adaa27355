#pragma once

#include <QBitArray>
#include <QList>

namespace WaveMonitor {

/// Searches for value changes over packed bits, 64 samples at a step.

/// A row as its bits over time: one array for a signal, one for each member of a bus. The row's
/// values change wherever one of them does. Bits past an array's end read as 0.
struct RowSamples
{
    QList<QBitArray> arrays;
    int length = 0; ///< In samples.
};

/// The first sample after `time`, below `length`, whose bit differs from the one at `time`; -1 if
/// there is none or `time` is no sample.
int nextChange(QBitArray const& bits, int time, int length);

/// The first sample of the run that holds `time` - 1, or -1 if that run begins the data or `time`
/// lies outside of 1 to `length` - 1.
int previousChange(QBitArray const& bits, int time, int length);

/// The same for a whole row.
int nextChange(RowSamples const& row, int time);
int previousChange(RowSamples const& row, int time);

} // namespace WaveMonitor
