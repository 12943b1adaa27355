#pragma once

#include "cli/exitstatus.h"
#include "trigger/syntax.h"

namespace VEK::Cli {

/// All that is wrong with the text of --trigger, each with its place. `core` stands in front of
/// every message, and may be empty. There is one error at least.
Failure triggerFailure(QString const& text, QList<TriggerError> const& errors,
                       QString const& core = QString());

} // namespace VEK::Cli
