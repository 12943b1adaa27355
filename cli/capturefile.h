#pragma once

#include "results/capturedwindow.h"
#include "results/sampleclock.h"

#include <QStringList>

#include <optional>

namespace VEK::Cli {

/// What helps to read a file that does not tell all of a capture. Nothing need be set.
struct CaptureHints
{
    QString clock;              ///< Name of the sample clock in a simulator's dump.
    SampleClock times;          ///< Frequency behind the times of a plain file.
    std::optional<int> trigger; ///< Sample of the trigger, whatever the files say.
    QString manifest;           ///< Of the run; else the manifests beside the file are looked at.
    QString configuration;      ///< Gives names, buses and the session's configuration.
    std::optional<int> core;    ///< Index of the one core that is meant.
    bool eachChange = false;    ///< A dump without a clock has a sample for each time of a change.
};

/// What a file holds of one core.
struct CoreCapture
{
    int place = 0;  ///< Among the cores of the configuration.
    int index = 0;  ///< The core's own.
    QString module; ///< "capture" when nothing tells.
    QString clock;  ///< "sample_clock" when nothing tells.
    QList<CapturedWindow> windows;
};

/// A capture from any file that `vek run` or an export writes, or from a simulator.
struct CaptureFile
{
    /// One of "csv", "vcd", "rsx", "prn", "raw".
    QString format;
    QList<CoreCapture> cores; ///< Not empty, with a window each.
    QByteArray configuration; ///< As a run writes it into a session; empty when nothing tells.
    QStringList warnings;     ///< What was left out.
};

/// The format that a file's name tells: its ending. Empty for any other.
QString captureFormat(QString const& path);

/// Reads a file whole. A window's trigger comes from the hint, the file itself or the manifest, in
/// this order. Throws a Failure with the file's name: `Status::Configuration` for a file that can't
/// be read or is broken, `Status::Usage` when a hint is missing.
CaptureFile readCaptureFile(QString const& path, CaptureHints const& hints);

/// The samples of a signal or of a bus's nets, by display name or name in the design, the highest
/// bit first; empty when the window has none of that name.
QList<QBitArray> samplesOf(CapturedWindow const& window, QString const& name);

} // namespace VEK::Cli
