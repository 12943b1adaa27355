#pragma once

#include <QBitArray>
#include <QString>

namespace WaveMonitor {

/// One decoded signal of a capture. Unrelated to `VEK::SignalData`, the column of an export.
struct SignalData
{
    int id = 0;     ///< Position among the core's data signals, from 0.
    QString name;   ///< The signal's name in the design.
    QString text;   ///< Display name; may be empty.
    QBitArray data; ///< One bit a sample; bit i is the sample at time index i.
};

} // namespace WaveMonitor
