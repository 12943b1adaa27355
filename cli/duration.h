#pragma once

#include <QString>

namespace VEK::Cli {

/// A time in ms from a text such as "30s", "500ms", "2m", "1.5h" or "30", which are seconds. False
/// for any other text, and for a time of more than 24 days.
bool parseDuration(QString const& text, int& ms);

} // namespace VEK::Cli
