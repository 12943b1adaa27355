#pragma once

#include "capture/capture.h"

#include <QByteArray>

#include <functional>

namespace VEK::Cli {

/// Runs a configuration against a server that has no chip: whatever is armed has captured at once,
/// and all its samples are 0. `take` gets each frame that a run of it sends, in order. Works on a
/// folder of its own and so touches no cable and no server. `capture` must have no run on.
/// Throws a Failure.
void runDry(Capture& capture, CaptureSettings settings,
            std::function<void(QByteArray const& frame)> const& take);

} // namespace VEK::Cli
