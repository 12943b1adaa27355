#pragma once

#include "results/capturedwindow.h"

namespace VEK::Cli {

/// How a dump is to be sampled.
struct DumpSampling
{
    QString clock;     ///< Name of the sample clock in a simulator's dump.
    SampleClock times; ///< Of a plain dump of ours, when known.
    int samples = 0;   ///< In a plain dump of ours, when known.
    QStringList nets;  ///< Of a simulator's dump, all when empty.
    bool eachChange =
        false; ///< A sample for each time of a change where nothing tells the samples.
};

/// What a value change dump holds.
struct DumpWindow
{
    enum Kind { Captured, Plain, Simulated };

    Kind kind = Simulated;
    QString module; ///< Of a capture.
    QString clock;  ///< Of a capture, or the one of the sampling.
    CapturedWindow window;
    QStringList warnings;
};

/// Reads a dump: one of `exportVCD` at the edges of its own clock, one of `exportPlainVcd` at its
/// times, any other at the rising edges of the clock that is named. Throws a Failure. With
/// `eachChange` a dump that lacks a clock has a sample for each time of a change, with a warning.
///
/// The times of a plain dump tell the samples when the number of samples or the clock is known, or
/// when a sample is one nanosecond, as it is written without a clock.
DumpWindow readDumpWindow(QString const& path, DumpSampling const& sampling);

} // namespace VEK::Cli
