#pragma once

#include "dump/vcdsampler.h"
#include "simulator/benchstimulus.h"

#include <QStringList>

namespace VEK::Cli {

/// Shows the samples of a capture in the place of a stimulus: row by row what the core with that
/// index has captured of the signals that it watches, window after window. Signals that were not
/// captured are 0, and told. Throws a Failure for a file that can't be read or has nothing of the
/// core.
void showCapture(QString const& path, QString const& configuration, int coreIndex,
                 Simulator::WatchedCore const& watched,
                 std::function<void(quint64 const* row)> const& take, QStringList& warnings);

} // namespace VEK::Cli
