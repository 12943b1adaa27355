#pragma once

#include <QString>

namespace VEK {
class MatchUnit;
class TriggerPort;
} // namespace VEK

namespace VEK::Cli {

/// The signals of a port by the names that users gave them: "valid", "address[7:0]" for a bus, and
/// "{valid, ready}" for several.
QString portText(TriggerPort const& port);

/// What a bound unit looks for: "in range, 0x50 to 0x57, on address[7:0]". Values are hexadecimal,
/// short ones and those with letters binary, first signal leftmost.
QString matchText(MatchUnit const& unit);

} // namespace VEK::Cli
