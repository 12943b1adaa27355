#pragma once

#include "check/elementcheck.h"

namespace VEK {

class SxCore;

/// Tells what is wrong with the trigger ports, the match units and the expressions of a core.
/// `core` is what the reader made of `element`.
void checkTrigger(QDomElement const& element, SxCore const& core, FindingList& list);

/// Why `text` can't be an expression of a core, or null. The text is in upper case, as a core holds
/// it. Names the unit or the character.
QString expressionProblem(QString const& text, SxCore const& core);

} // namespace VEK
