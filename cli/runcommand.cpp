#include "cli/command.h"
#include "cli/coreoptions.h"
#include "cli/duration.h"
#include "cli/exitstatus.h"
#include "cli/run.h"

#include <vector>

namespace VEK::Cli {
namespace {

/// The words of the command line, as they were given.
struct Words
{
    std::string configuration;
    std::string output;
    std::vector<std::string> formats{"csv"};
    std::string clock;
    std::string manifest;
    std::string recording;
    std::vector<std::string> labels;
    CoreWords core;
    std::string cable = "FT2CH";
    std::string location;
    std::string server;
    std::string device;
    std::string wait;
    std::string force;
    std::string patience = "5s";
    std::string queue = "2s";
    int attempt = 1;
    bool plain = false;
    bool attach = false;
    bool paced = false;
    bool progress = false;
};

Failure usage(QString const& message)
{
    return {Status::Usage, message + QStringLiteral(" Try vek run --help.")};
}

int milliseconds(char const* option, std::string const& text)
{
    int ms = CaptureSettings::Never;
    if (!text.empty() && !parseDuration(textOf(text), ms))
        throw usage(QStringLiteral("%1: \"%2\" is no time such as 30s, 500ms, 2m or 1h.")
                        .arg(QLatin1String(option), textOf(text)));
    return ms;
}

QString cableName(QString const& word)
{
    QString const upper = word.toUpper();
    if (upper == QLatin1String("FT2CH"))
        return Server::Ft2chName;
    if (upper == QLatin1String("TR7QZ"))
        return Server::Tr7qzName;
    if (upper == QLatin1String("WINUSB"))
        return Server::WinUsbName;
    if (upper == QLatin1String("LPT"))
        return Server::LptName;
    throw usage(
        QStringLiteral("--cable: \"%1\" is none of FT2CH, TR7QZ, WINUSB and LPT.").arg(word));
}

/// HOST, HOST:PORT, ADDRESS, [ADDRESS]:PORT; an address with colons alone is one of IPv6.
void setServer(QString const& text, CaptureSettings& capture)
{
    if (text.isEmpty())
        return;
    QString host = text;
    QString port;
    int const bracket = text.indexOf(QLatin1Char(']'));
    if (text.startsWith(QLatin1Char('[')) && bracket > 0) {
        host = text.mid(1, bracket - 1);
        port = text.mid(bracket + 1);
    } else if (text.count(QLatin1Char(':')) == 1) {
        host = text.section(QLatin1Char(':'), 0, 0);
        port = text.mid(host.size());
    }
    bool ok = true;
    if (!port.isEmpty())
        capture.port = port.midRef(1).toUShort(&ok);
    if (host.isEmpty() || !ok || capture.port == 0 ||
        (!port.isEmpty() && !port.startsWith(QLatin1Char(':'))))
        throw usage(QStringLiteral("--server: \"%1\" is not of the form HOST[:PORT].").arg(text));
    capture.host = host;
}

void setLabels(std::vector<std::string> const& words, RunSettings& settings)
{
    for (std::string const& word : words) {
        QString const label = textOf(word);
        QString const key = label.section(QLatin1Char('='), 0, 0);
        if (key.isEmpty() || !label.contains(QLatin1Char('=')))
            throw usage(QStringLiteral("--label: \"%1\" is not of the form KEY=VALUE.").arg(label));
        settings.labels.insert(key, label.mid(key.size() + 1));
    }
}

void setFormats(Words const& words, RunSettings& settings)
{
    settings.formats.clear();
    for (std::string const& word : words.formats) {
        QString const format = textOf(word).toLower();
        if (!settings.formats.contains(format))
            settings.formats << format;
    }
    settings.plain = words.plain;
    bool const hasTimes = words.plain || settings.formats.contains(QStringLiteral("raw"));
    if (!words.clock.empty() && !settings.clock.parse(textOf(words.clock)))
        throw usage(QStringLiteral("--clock: \"%1\" is no frequency such as 50MHz.")
                        .arg(textOf(words.clock)));
    if (settings.clock.isKnown() && !hasTimes)
        throw usage(QStringLiteral("--clock: the times of --plain and raw alone come from it."));
}

CaptureSettings captureSettings(Words const& words)
{
    CaptureSettings capture;
    capture.cable = cableName(textOf(words.cable));
    capture.location = textOf(words.location);
    bool isNumber = true;
    capture.location.toUInt(&isNumber);
    if (!capture.location.isEmpty() && !isNumber)
        throw usage(QStringLiteral("--location: \"%1\" is no number.").arg(capture.location));
    capture.device = textOf(words.device);
    setServer(textOf(words.server), capture);
    capture.attach = words.attach;
    if (words.attach && !capture.host.isEmpty())
        throw usage(QStringLiteral("--attach: --server names a server that is there already."));
    capture.wait = milliseconds("--wait", words.wait);
    capture.force = milliseconds("--force-after", words.force);
    capture.patience = milliseconds("--reply-timeout", words.patience);
    capture.queue = milliseconds("--queue", words.queue);
    capture.pacing = words.paced ? Pacing::Timed : Pacing::ByReplies;
    capture.givesUp = true;
    return capture;
}

RunSettings settingsFrom(Words const& words)
{
    RunSettings settings;
    settings.configuration = textOf(words.configuration);
    settings.output = textOf(words.output);
    setFormats(words, settings);
    settings.manifest = textOf(words.manifest);
    settings.recording = textOf(words.recording);
    setLabels(words.labels, settings);
    settings.attempt = words.attempt;
    settings.cores = coresOf(words.core);
    settings.overrides = overridesOf(words.core);
    settings.cableWord = textOf(words.cable).toUpper();
    settings.capture = captureSettings(words);
    settings.progress = words.progress;
    return settings;
}

void addOutputOptions(CLI::App& command, Words& words)
{
    command.add_option("configuration", words.configuration, "Configuration, .vek or .rsx")
        ->required()
        ->type_name("FILE");
    command
        .add_option("-o,--output", words.output,
                    "Prefix of the files; a folder, or what ends in /, takes the configuration's "
                    "name (default: that name)")
        ->type_name("PREFIX");
    command
        .add_option("--format", words.formats, "What is written: csv, vcd, rsx, raw (default csv)")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember({"csv", "vcd", "rsx", "raw"}, CLI::ignore_case))
        ->type_name("LIST");
    command.add_flag("--plain", words.plain,
                     "CSV and VCD in the profiles that other tools read without a recipe");
    command
        .add_option(
            "--clock", words.clock,
            "Frequency of the sample clock, such as 50MHz, for the times of --plain and raw")
        ->type_name("FREQUENCY");
    command.add_option("--manifest", words.manifest, "What the run did, as JSON")
        ->type_name("FILE");
    command.add_option("--label", words.labels, "A label of the manifest; may be repeated")
        ->type_name("KEY=VALUE")
        ->take_all()
        ->allow_extra_args(false);
    command
        .add_option("--record", words.recording,
                    "All that the server is sent and sends, for vek replay")
        ->type_name("FILE");
    command.add_option("--attempt", words.attempt, "Number of this attempt, for the manifest")
        ->check(CLI::PositiveNumber);
}

void addTimeOptions(CLI::App& command, Words& words)
{
    command
        .add_option("--wait", words.wait,
                    "How long to wait for triggers, from arming (default: for ever)")
        ->type_name("TIME");
    command
        .add_option("--force-after", words.force, "Force the trigger after that time from arming")
        ->type_name("TIME");
    command
        .add_option("--reply-timeout", words.patience,
                    "How long the server may owe a reply; 2 ms a written word come on top "
                    "(default 5s)")
        ->type_name("TIME");
    command
        .add_option("--queue", words.queue,
                    "How long to wait for a cable that another run holds (default 2s)")
        ->type_name("TIME");
    command.add_flag("--paced", words.paced,
                     "Pause before each request of a read, for servers that need it");
    command.add_flag("--progress", words.progress,
                     "Tell the steps in plain lines on standard error");
}

void addDeskOptions(CLI::App& command, Words& words)
{
    command.add_option("--cable", words.cable, "FT2CH, TR7QZ, WINUSB or LPT (default FT2CH)")
        ->envname("VEK_CABLE")
        ->type_name("CABLE");
    command.add_option("--location", words.location, "Location of the cable (default: any)")
        ->envname("VEK_LOCATION")
        ->type_name("NUMBER");
    command.add_flag("--attach", words.attach,
                     "Use the server that is at the cable's socket, and start none");
    command
        .add_option("--server", words.server,
                    "JTAG server on another machine (default: one is started here)")
        ->envname("VEK_SERVER")
        ->type_name("HOST[:PORT]");
    command.add_option("--device", words.device, "Model of the device")
        ->envname("VEK_DEVICE")
        ->type_name("MODEL");
}

} // namespace

void addRunCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command = program.add_subcommand("run", "Capture, and write the windows");
    auto const words = std::make_shared<Words>();
    addOutputOptions(*command, *words);
    addTimeOptions(*command, *words);
    addCoreOptions(*command, words->core);
    addDeskOptions(*command, *words);
    command->footer(statusHelp().toStdString());
    command->callback(
        [&chosen, words] { chosen = [words] { return Run(settingsFrom(*words)).exec(); }; });
}

} // namespace VEK::Cli
