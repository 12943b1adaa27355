#pragma once

#include "model/capturecore.h"
#include "results/sampleclock.h"

#include <QBitArray>
#include <QList>
#include <QString>

#include <optional>

namespace VEK {

/// One window of one core, as a file tells it.
struct CapturedWindow
{
    QList<SignalItem> layout; ///< Signals, and buses with their members.
    QList<QBitArray>
        samples; ///< For each of `flatSignals(layout)`, one bit a sample; equally long.
    std::optional<int> trigger; ///< Its sample.
    QString timeUnit;           ///< Of the times in the file; empty when it has none.
    quint64 timeStep = 0;       ///< Units from a sample to the next.
    SampleClock clock;          ///< When the file's times tell it.

    /// Number of samples.
    int length() const { return samples.isEmpty() ? 0 : samples.first().size(); }
};

/// What viewers and tables call a signal or a bus: the user's name, else the design's.
inline QString labelOf(SignalItem const& item)
{
    return item.text.isEmpty() ? item.name : item.text;
}

} // namespace VEK
