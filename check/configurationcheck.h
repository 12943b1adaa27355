#pragma once

#include "check/finding.h"

#include <QByteArray>

namespace VEK {

/// Tells everything of a configuration that the readers silently put up with: what they pass over,
/// cut, fill up or take for something else, and what no core can do. `bytes` is the content of a
/// `.vek` file, or of a session with a configuration in it. In the order of the document; empty
/// when all is well. Takes anything: what is no document at all is one finding.
QList<Finding> checkConfiguration(QByteArray const& bytes);

} // namespace VEK
