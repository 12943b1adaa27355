#pragma once

#include "cli/triggerwatch.h"

namespace VEK::Cli {

/// What kept an expression from being true over some samples. Units are bits of a table's index.
struct ExpressionGap
{
    bool canBeTrue = false; ///< For any outputs of its units.
    unsigned units = 0;     ///< The ones that it depends on.
    /// On how many samples a change of this unit alone would have made it true, by bit number.
    std::vector<Sighting> alone;
    unsigned nearest = 0; ///< The outputs that came nearest and were there most often...
    unsigned missing = 0; ///< ...the units that would have had to change...
    Sighting seen;        ///< ...and the samples that lacked just these.
};

/// `units`: the bits of the units that there are; no other ever is 1.
ExpressionGap gapOf(Simulator::TruthTable const& table, unsigned units,
                    CombinationCounts const& outputs);

} // namespace VEK::Cli
