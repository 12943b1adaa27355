#pragma once

#include "capture/capture.h"

#include <QStringList>

namespace VEK::Cli {

/// Opens a configuration. Throws a Failure, with the reader's words, for one that no run can be
/// made of.
void openConfiguration(QString const& path, Capture& capture);

/// Looks at the cores that are to run, given by their places. Throws a Failure for what can't be
/// captured; gives warnings about what will not come as the configuration says.
QStringList checkCores(Capture const& capture, QList<int> const& places);

} // namespace VEK::Cli
