#pragma once

#include "cli/expressiongap.h"

namespace VEK::Cli {

/// Why a core's trigger does not fire, or that it does, in one sentence. `expressions` are the
/// texts of its expressions, in their order.
QString explainSentence(TriggerWatch const& watch, QStringList const& expressions);

/// The bits of all units in a table's index.
unsigned unitBits(TriggerWatch const& watch);

/// "M3".
QString unitName(Simulator::TriggerLogic::Unit const& unit);

} // namespace VEK::Cli
