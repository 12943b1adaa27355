#pragma once

#include "model/capturecore.h"

namespace VEK::Trigger {

/// Whether the core gets values for the unit: it is enabled, and bound to a port with signals.
bool isInUse(MatchUnit const* unit);

/// What a unit in use compares, as its registers have it: what a file says in other words, or
/// wrongly, is gone.
struct Comparison
{
    MatchFunc func = FuncEqual;
    QString value0; ///< Conditions of == and !=, else a number.
    QString value1; ///< The upper bound of a range, else empty.
    int count = 1;
    bool inRow = false;
};

Comparison comparisonOf(MatchUnit const& unit);
bool operator==(Comparison const& a, Comparison const& b);

} // namespace VEK::Trigger
