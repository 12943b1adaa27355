#pragma once

#include "cli/overrides.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace VEK::Cli {

/// The words of the command line that choose cores and set them for once.
struct CoreWords
{
    std::vector<int> cores;
    std::optional<int> position;
    std::optional<int> amount;
    std::optional<int> windows;
    std::string expression;
    std::vector<std::string> matches;
    std::optional<std::string> trigger;
};

/// Adds the options to a command; `words` must live as long as it.
void addCoreOptions(CLI::App& command, CoreWords& words);

/// The indexes of the cores that were chosen; empty for all.
QList<int> coresOf(CoreWords const& words);

Overrides overridesOf(CoreWords const& words);

} // namespace VEK::Cli
