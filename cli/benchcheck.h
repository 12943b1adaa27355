#pragma once

#include "check/finding.h"

namespace VEK::Cli {

/// Tells what is wrong with a bench file: what the simulated chip would refuse or warn of, a device
/// that is none, a stimulus that is shorter than a window of its design. The line is always 0.
QList<Finding> checkBench(QString const& path);

} // namespace VEK::Cli
