#pragma once

#include "check/elementcheck.h"
#include "model/signallist.h"

namespace VEK {

/// Tells what is wrong with a `SignalList`: signals that are dropped, buses with members that are
/// none, names that are missing or stand twice.
void checkSignalList(QDomElement const& signalList, ListForm form, FindingList& list);

} // namespace VEK
