#pragma once

#include "simulator/bench.h"

#include <QStringList>

namespace VEK::Simulator {

/// The cables of some kinds that are plugged in, in the order of the bench; one of the first kind
/// when the bench lists none.
QList<BenchCable> cablesInSight(Bench const& bench, QStringList const& kinds);

/// A cable as a report names it: kind, name, location and serial number.
QString cableLine(BenchCable const& cable);

} // namespace VEK::Simulator
