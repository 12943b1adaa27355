#include "cli/command.h"
#include "cli/exitstatus.h"
#include "cli/explain.h"
#include "cli/newdesign.h"
#include "cli/rehearsaldesk.h"
#include "cli/run.h"
#include "dump/netlist.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <memory>

namespace VEK::Cli {
namespace {

struct Words
{
    std::string dump;
    std::vector<std::string> patterns;
    std::string scope;
    std::string clock;
    std::string output;
    std::string position = "25%";
    std::string trigger;
    std::string device = "TK-501";
    std::vector<std::string> formats{"csv"};
    int depth = 1024;
    int windows = 1;
    int units = 0;
    bool lite = false;
    bool plain = false;
    bool view = false;
};

/// A clock must be given; this tells which one it may be.
Failure clockNeeded(QString const& dump)
{
    QFile file(dump);
    std::vector<Dump::Net> nets;
    QString warning;
    QString error;
    if (!file.open(QIODevice::ReadOnly) || !Dump::listNets(file, nets, warning, error))
        return {Status::Configuration,
                QStringLiteral("%1: %2").arg(dump, error.isEmpty() ? file.errorString() : error)};
    QStringList clocks;
    for (Dump::Net const& net : nets)
        if (net.looksLikeClock)
            clocks << QString::fromUtf8(net.variable.path);
    return {Status::Usage, clocks.isEmpty()
                               ? QStringLiteral("--clock is needed, and no net looks like one")
                               : QStringLiteral("--clock is needed; these look like clocks: %1")
                                     .arg(clocks.join(QStringLiteral(", ")))};
}

NewDesign designFrom(Words const& words)
{
    NewDesign design;
    design.dump = textOf(words.dump);
    if (words.clock.empty())
        throw clockNeeded(design.dump);
    design.scope = textOf(words.scope);
    design.clock = textOf(words.clock);
    for (std::string const& pattern : words.patterns)
        design.patterns << textOf(pattern);
    if (design.patterns.isEmpty())
        design.patterns << QStringLiteral("*");
    design.depth = words.depth;
    design.windows = words.windows;
    design.position = textOf(words.position);
    design.trigger = textOf(words.trigger);
    design.units = words.units;
    design.isLite = words.lite;
    design.device = textOf(words.device);
    design.prefix =
        words.output.empty() ? QFileInfo(design.dump).completeBaseName() : textOf(words.output);
    return design;
}

void tell(bool isWritten)
{
    if (!isWritten)
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
}

int makeNew(Words const& words)
{
    MadeDesign const made = makeDesign(designFrom(words));
    tell(printLine(made.configuration));
    tell(printLine(made.bench));
    tell(printLine(QStringLiteral("%1 signals, windows of %2 samples, the trigger at %3. For "
                                  "rehearsals: this describes no core that was built. Next:")
                       .arg(made.signalCount)
                       .arg(made.amount)
                       .arg(made.position)));
    tell(printLine(
        QStringLiteral("  vek explain %1 --bench %2").arg(made.configuration, made.bench)));
    tell(
        printLine(QStringLiteral("  VEK_BENCH=%2 vek run %1").arg(made.configuration, made.bench)));
    return int(Status::Done);
}

/// The viewer beside this program. Throws a Failure where it can't show anything.
QString viewer()
{
    QString const program = QCoreApplication::applicationDirPath() + QStringLiteral("/vek-view");
    if (!QFileInfo(program).isExecutable())
        throw Failure{Status::Usage, QStringLiteral("--view: there is no vek-view beside this "
                                                    "program; the package vek-workbench has it")};
    bool const hasDisplay = qEnvironmentVariableIsSet("DISPLAY") ||
                            qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
                            qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    if (!hasDisplay)
        throw Failure{Status::Usage, QStringLiteral("--view: there is no display")};
    return program;
}

/// Ends with what the trigger did.
int rehearse(Words const& words)
{
    QString const program = words.view ? viewer() : QString();
    NewDesign const design = designFrom(words);
    MadeDesign const rehearsed = makeDesign(design);
    RunSettings settings;
    settings.configuration = rehearsed.configuration;
    settings.output = design.prefix;
    settings.formats.clear();
    for (std::string const& format : words.formats)
        settings.formats << textOf(format).toLower();
    QString const session = QStringLiteral("rsx");
    if (words.view && !settings.formats.contains(session))
        settings.formats << session; // all windows in one
    settings.plain = words.plain;
    settings.cableWord = QStringLiteral("FT2CH");
    settings.capture.givesUp = true;
    RehearsalDesk const desk(rehearsed.bench, settings.capture);
    if (!desk.warning().isEmpty())
        printWarning(desk.warning());
    int const status = Run(settings).exec();
    if (status == int(Status::Done) || status == int(Status::NoTrigger)) {
        ExplainSettings explained;
        explained.configuration = rehearsed.configuration;
        explained.bench = rehearsed.bench;
        tell(printLine(textOf(explain(explained))));
    }
    QString const made = design.prefix + QLatin1Char('.') + session;
    if (words.view && status == int(Status::Done) && !QProcess::startDetached(program, {made}))
        throw Failure{Status::Output, QStringLiteral("%1 can't be started").arg(program)};
    return status;
}

void addDesignOptions(CLI::App& command, Words& words)
{
    command.add_option("dump", words.dump, "Value change dump of a simulation, .vcd")
        ->required()
        ->type_name("FILE");
    command
        .add_option("nets", words.patterns,
                    "Nets to capture, with * and ?, whole or from a scope on (default: all)")
        ->type_name("PATTERN");
    command
        .add_option("--clock", words.clock,
                    "Sample clock, a net of the dump; see vek nets --clocks")
        ->type_name("NAME");
    command
        .add_option("--scope", words.scope, "Nets below this scope only, without it in their names")
        ->type_name("SCOPE");
    command
        .add_option("-o,--output", words.output,
                    "Prefix of the configuration, its bench and the windows (default: the dump's "
                    "name)")
        ->type_name("PREFIX");
    command.add_option("--depth", words.depth, "Samples of the core's memory (default 1024)")
        ->check(CLI::Range(8, 65536));
    command.add_option("--windows", words.windows, "Number of windows (default 1)")
        ->check(CLI::Range(1, 8192));
    command
        .add_option("--position", words.position,
                    "Trigger position, samples or a share of the window (default 25%)")
        ->type_name("POSITION");
    command
        .add_option("--trigger", words.trigger,
                    "What to wait for, such as 'state == 5 & valid rises' (default: the first "
                    "sample)")
        ->type_name("TEXT");
    command.add_option("--units", words.units, "Further match units, for triggers to come")
        ->check(CLI::Range(0, 16));
    command.add_flag("--lite", words.lite, "A Lite core, which has no trigger");
    command.add_option("--device", words.device, "Model of the device (default TK-501)")
        ->type_name("MODEL");
}

} // namespace

void addNewCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command = program.add_subcommand(
        "new", "Make a configuration and its bench from a simulation's dump, for rehearsals");
    auto const words = std::make_shared<Words>();
    addDesignOptions(*command, *words);
    command->footer("The configuration describes no core that was built: it is for rehearsals.");
    command->callback([&chosen, words] { chosen = [words] { return makeNew(*words); }; });
}

void addRehearseCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command = program.add_subcommand(
        "rehearse", "Capture from a simulation's dump as a core would, with a trigger as text");
    auto const words = std::make_shared<Words>();
    addDesignOptions(*command, *words);
    command
        ->add_option("--format", words->formats,
                     "What is written: csv, vcd, rsx, raw (default csv)")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember({"csv", "vcd", "rsx", "raw"}, CLI::ignore_case))
        ->type_name("LIST");
    command->add_flag("--plain", words->plain,
                      "CSV and VCD in the profiles that other tools read without a recipe");
    command->add_flag("--view", words->view, "Open the windows in vek-view");
    command->footer(
        "The simulated chip runs in this program: no cable and no server is touched.\n\n" +
        statusHelp().toStdString());
    command->callback([&chosen, words] { chosen = [words] { return rehearse(*words); }; });
}

} // namespace VEK::Cli
