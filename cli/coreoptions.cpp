#include "cli/coreoptions.h"

#include "cli/command.h"

namespace VEK::Cli {

void addCoreOptions(CLI::App& command, CoreWords& words)
{
    command.add_option("--core", words.cores, "These cores only, by their indexes")
        ->delimiter(',')
        ->type_name("LIST")
        ->allow_extra_args(false);
    command.add_option("--position", words.position, "Trigger position in a window")
        ->check(CLI::NonNegativeNumber);
    command.add_option("--amount", words.amount, "Samples of a window")->check(CLI::PositiveNumber);
    command.add_option("--windows", words.windows, "Number of windows")->check(CLI::PositiveNumber);
    CLI::Option* const expression =
        command.add_option("--expression", words.expression, "Trigger expression, such as 'M0&M1'")
            ->type_name("TEXT");
    CLI::Option* const match =
        command
            .add_option("--match", words.matches,
                        "Value of a match unit, such as M1=0x5A; may be repeated")
            ->type_name("UNIT=VALUE")
            ->allow_extra_args(false);
    command
        .add_option("--trigger", words.trigger,
                    "The whole trigger by names, such as 'addr in 0x50..0x57 & valid rises'")
        ->type_name("TEXT")
        ->excludes(expression)
        ->excludes(match);
}

QList<int> coresOf(CoreWords const& words)
{
    QList<int> cores;
    for (int const core : words.cores)
        cores << core;
    return cores;
}

Overrides overridesOf(CoreWords const& words)
{
    Overrides overrides;
    overrides.position = words.position;
    overrides.amount = words.amount;
    overrides.windows = words.windows;
    overrides.expression = textOf(words.expression);
    for (std::string const& match : words.matches)
        overrides.matches << textOf(match);
    if (words.trigger)
        overrides.trigger = textOf(*words.trigger);
    return overrides;
}

} // namespace VEK::Cli
