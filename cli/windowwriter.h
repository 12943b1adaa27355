#pragma once

#include "results/sampleclock.h"
#include "results/signaldata.h"

#include "model/capturecore.h"

#include <QList>
#include <QString>

#include <functional>

class QIODevice;

namespace VEK::Cli {

/// One window, and what its core says of it.
struct WindowFacts
{
    int trigger = 0;
    QString module;
    QString clock;
    QList<SignalItem> layout;
    QList<WaveMonitor::SignalData> samples; ///< One for each of `flatSignals(layout)`.
    QString timeUnit = QStringLiteral("us");
    int timeStep = 1; ///< In CSV and PRN.
};

/// Writes a file into a device; false once that refuses bytes.
using FileWriter = std::function<bool(QIODevice&)>;

/// The writer of a window's file: "csv", "vcd", "prn", "raw" or "channels", the former two in
/// the profile for other tools when `plain` is set, with times by `clock`.
FileWriter windowWriter(QString const& ending, WindowFacts const& window, bool plain,
                        SampleClock const& clock);

/// The endings of a format's files.
QStringList endingsOf(QString const& format);

/// What tells a session of ours, which the next run replaces, from a user's own.
inline QString const SessionNote = QStringLiteral(" written by vek run ");

} // namespace VEK::Cli
