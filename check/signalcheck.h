#pragma once

#include "check/elementcheck.h"

namespace VEK {

/// Whose `SignalList` it is.
enum class SignalOwner { StandardCore, LiteCore, Port };

/// Tells what is wrong with a `SignalList`: signals that are dropped, buses with members that are
/// none, names that are missing or stand twice.
void checkSignalList(QDomElement const& signalList, SignalOwner owner, FindingList& list);

} // namespace VEK
