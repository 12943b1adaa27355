#include "cli/command.h"
#include "cli/coreoptions.h"
#include "cli/exitstatus.h"
#include "cli/explain.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <memory>

namespace VEK::Cli {
namespace {

/// The words of the command line, as they were given.
struct Words
{
    std::string configuration;
    std::string vcd;
    std::string clock;
    std::string bench;
    std::string capture;
    CoreWords core;
    std::string device;
    bool json = false;
};

Failure usage(QString const& message)
{
    return {Status::Usage, message + QStringLiteral(" Try vek explain --help.")};
}

ExplainSettings settingsFrom(Words const& words)
{
    ExplainSettings settings;
    settings.configuration = textOf(words.configuration);
    settings.vcd = textOf(words.vcd);
    settings.clock = textOf(words.clock);
    settings.bench = textOf(words.bench);
    settings.device = textOf(words.device);
    settings.capture = textOf(words.capture);
    settings.cores = coresOf(words.core);
    settings.overrides = overridesOf(words.core);
    if (int(words.vcd.empty()) + int(words.bench.empty()) + int(words.capture.empty()) != 2)
        throw usage(QStringLiteral("One of --vcd, --bench and --capture is needed."));
    if (!settings.clock.isEmpty() && settings.vcd.isEmpty())
        throw usage(QStringLiteral("--clock: a clock is a signal of --vcd."));
    return settings;
}

bool firesAll(Explanations const& told)
{
    return std::all_of(told.cores.begin(), told.cores.end(),
                       [](Explanation const& core) { return core.fires; });
}

QString jsonFrom(Explanations const& told)
{
    QJsonArray cores;
    for (Explanation const& core : told.cores)
        cores.append(core.json);
    QJsonObject const root{{QStringLiteral("fires"), firesAll(told)},
                           {QStringLiteral("cores"), cores},
                           {QStringLiteral("warnings"), QJsonArray::fromStringList(told.warnings)},
                           {QStringLiteral("sentence"), sentenceOf(told)}};
    return QString::fromUtf8(QJsonDocument(root).toJson().trimmed());
}

int run(Words const& words)
{
    Explanations const told = explain(settingsFrom(words));
    for (QString const& warning : told.warnings)
        printWarning(warning);
    if (!printLine(words.json ? jsonFrom(told) : textOf(told)))
        throw Failure{Status::Output, QStringLiteral("Standard output can't be written.")};
    return int(firesAll(told) ? Status::Done : Status::Differs);
}

} // namespace

void addExplainCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command =
        program.add_subcommand("explain", "Tell why a trigger does not fire, or that it does");
    auto const words = std::make_shared<Words>();
    command->add_option("configuration", words->configuration, "Configuration, .vek or .rsx")
        ->required()
        ->type_name("FILE");
    command->add_option("--vcd", words->vcd, "Dump of a simulation with the signals of the cores")
        ->type_name("FILE");
    command
        ->add_option("--clock", words->clock,
                     "Sample clock of all cores in the dump (default: each core's own)")
        ->type_name("NAME");
    command->add_option("--bench", words->bench, "Bench file of the simulated chip")
        ->type_name("FILE");
    command
        ->add_option("--capture", words->capture,
                     "Capture of the core, such as a forced one: .csv, .rsx, .vcd, .prn, .raw")
        ->type_name("FILE");
    addCoreOptions(*command, words->core);
    command->add_option("--device", words->device, "Model of the device")
        ->envname("VEK_DEVICE")
        ->type_name("MODEL");
    command->add_flag("--json", words->json, "Print one JSON document");
    command->footer("Status 0: the trigger of every core and window fires; 1: one never does.\n\n" +
                    statusHelp().toStdString());
    command->callback([&chosen, words] { chosen = [words] { return run(*words); }; });
}

} // namespace VEK::Cli
