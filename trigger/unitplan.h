#pragma once

#include "trigger/syntax.h"

namespace VEK {

/// Gives a core that is still to be built the trigger ports, match units and expressions that a
/// text needs, and sets them to it: units of the simplest type that can do each test, counters as
/// wide as the counts. `core` has its signals, and neither ports nor units in use. Several steps
/// make a static core, since no file holds which dynamic expressions are on. Empty when that is
/// done; else what is wrong with the text, and the core is of no use.
QList<TriggerError> planUnits(QString const& text, SxCore& core);

} // namespace VEK
