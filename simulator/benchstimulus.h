#pragma once

#include "dump/vcdsampler.h"
#include "simulator/bench.h"

namespace VEK::Simulator {

/// What a core watches, in the names of the design.
struct WatchedCore
{
    QStringList signalNames;
    QString sampleClock;
};

/// Reads the stimulus of a bench, dump or pattern, for some cores. False with an `error` for one
/// that can't be used, or is too large; `stimulus.warning` tells what is missing of it.
bool sampleStimulus(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::SampledStimulus& stimulus, QString& error);

/// The same row by row, of any length: request i of `take` is core i, whose rows come in their
/// order. False with an empty `error` where `take` has ended it.
bool streamStimulus(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::RowSink const& take, QString& warning, QString& error);

} // namespace VEK::Simulator
