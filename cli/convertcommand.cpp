#include "cli/capturefile.h"
#include "cli/command.h"
#include "cli/exitstatus.h"
#include "cli/knowncores.h"
#include "cli/windowwriter.h"
#include "model/bits.h"
#include "results/sessionfile.h"
#include "results/wholefile.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>
#include <memory>

namespace VEK::Cli {
namespace {

struct Words
{
    std::vector<std::string> files;
    std::vector<std::string> clocks;
    std::string configuration;
    std::string manifest;
    int trigger = 0;
    int window = 0;
    int core = 0;
    bool plain = false;
    bool json = false;
};

Failure usage(QString const& message)
{
    return {Status::Usage, message};
}

/// What is written: all of a session, or one window.
class Conversion
{
public:
    Conversion(Words const& words, CLI::App const& command) : m_words(words)
    {
        for (std::string const& clock : words.clocks) {
            if (!m_hints.times.parse(textOf(clock)))
                m_hints.clock = textOf(clock);
        }
        m_hints.configuration = textOf(words.configuration);
        m_hints.manifest = textOf(words.manifest);
        if (command.count("--trigger"))
            m_hints.trigger = words.trigger;
        if (command.count("--core"))
            m_hints.core = words.core;
        m_hasWindow = command.count("--window") > 0;
        m_target = textOf(words.files.back());
        m_format = captureFormat(m_target);
    }

    int exec()
    {
        checkTarget();
        for (std::size_t i = 0; i + 1 < m_words.files.size(); ++i)
            read(textOf(m_words.files[i]));
        if (m_format == QLatin1String("rsx"))
            writeSession();
        else
            writeWindow();
        tell();
        return int(Status::Done);
    }

private:
    QString pathFor(QString const& ending) const;
    void checkTarget() const;
    void read(QString const& path);
    void select(CaptureFile& file, QString const& path) const;
    WindowFacts factsOf(CoreCapture const& core, CapturedWindow const& window) const;
    int triggerOf(CapturedWindow const& window) const;
    void writeWindow();
    void writeSession();
    QDomElement elementOf(CoreCapture const& core, QDomDocument& document) const;
    void tell() const;

    Words const& m_words;
    CaptureHints m_hints;
    bool m_hasWindow = false;
    QString m_target;
    QString m_format;
    QList<CoreCapture> m_cores;
    QByteArray m_configuration;
    QStringList m_warnings;
    QStringList m_written;
};

QString Conversion::pathFor(QString const& ending) const
{
    QFileInfo const target(m_target);
    if (ending != QLatin1String("channels"))
        return m_target;
    return target.path() + QLatin1Char('/') + target.completeBaseName() + QLatin1Char('.') + ending;
}

/// No file that is read is written.
void Conversion::checkTarget() const
{
    if (m_format.isEmpty())
        throw usage(QStringLiteral("%1: what is written ends in .csv, .vcd, .rsx, .prn or .raw")
                        .arg(m_target));
    if (m_words.plain && m_format != QLatin1String("csv") && m_format != QLatin1String("vcd"))
        throw usage(QStringLiteral("--plain is for .csv and .vcd"));
    if (m_words.files.size() > 2 && m_format != QLatin1String("rsx"))
        throw usage(QStringLiteral("several windows make one .rsx only"));
    QStringList sources{m_hints.configuration, m_hints.manifest};
    for (std::size_t i = 0; i + 1 < m_words.files.size(); ++i)
        sources << textOf(m_words.files[i]);
    for (QString const& ending : endingsOf(m_format)) {
        QFileInfo const target(pathFor(ending));
        for (QString const& source : qAsConst(sources)) {
            if (!source.isEmpty() && target.exists() && target == QFileInfo(source))
                throw usage(QStringLiteral("%1 is read, and can't be written as well")
                                .arg(target.filePath()));
        }
    }
}

/// Windows of further files follow those of the first.
void Conversion::read(QString const& path)
{
    CaptureFile file = readCaptureFile(path, m_hints);
    select(file, path);
    m_warnings << file.warnings;
    if (m_cores.isEmpty()) {
        m_cores = file.cores;
        m_configuration = file.configuration;
        return;
    }
    for (CoreCapture const& more : qAsConst(file.cores)) {
        auto const known =
            std::find_if(m_cores.begin(), m_cores.end(),
                         [&](CoreCapture const& core) { return core.place == more.place; });
        if (known == m_cores.end()) {
            m_cores << more;
            continue;
        }
        CapturedWindow const& first = known->windows.first();
        for (CapturedWindow const& window : more.windows) {
            if (window.length() != first.length() ||
                window.samples.size() != first.samples.size() || window.trigger != first.trigger)
                throw usage(QStringLiteral("%1: its windows are not as those of the first file: "
                                           "samples, signals and trigger have to agree")
                                .arg(path));
            known->windows << window;
        }
    }
}

void Conversion::select(CaptureFile& file, QString const& path) const
{
    for (CoreCapture& core : file.cores) {
        if (!m_hasWindow)
            continue;
        if (m_words.window >= core.windows.size())
            throw usage(QStringLiteral("%1: core %2 has %3 windows, counted from 0")
                            .arg(path)
                            .arg(core.index)
                            .arg(core.windows.size()));
        core.windows = {core.windows.at(m_words.window)};
    }
    if (m_format == QLatin1String("rsx"))
        return;
    if (file.cores.size() > 1)
        throw usage(QStringLiteral("%1: it has %2 cores: --core says which one is meant")
                        .arg(path)
                        .arg(file.cores.size()));
    if (file.cores.first().windows.size() > 1)
        throw usage(QStringLiteral("%1: it has %2 windows: --window says which one is meant")
                        .arg(path)
                        .arg(file.cores.first().windows.size()));
}

/// Tables and raw samples do without it.
int Conversion::triggerOf(CapturedWindow const& window) const
{
    bool const isNeeded = m_format == QLatin1String("vcd") || m_format == QLatin1String("rsx");
    if (isNeeded && !window.trigger)
        throw usage(QStringLiteral("nothing tells the sample of the trigger: no manifest beside "
                                   "the file does; --trigger N says it"));
    return window.trigger.value_or(0);
}

WindowFacts Conversion::factsOf(CoreCapture const& core, CapturedWindow const& window) const
{
    WindowFacts facts;
    facts.trigger = triggerOf(window);
    facts.module = core.module;
    facts.clock = core.clock;
    facts.layout = window.layout;
    facts.samples = namedSignals(flatSignals(window.layout), window.samples);
    quint64 step = window.timeStep;
    QString unit = window.timeUnit;
    if (step >= 1000 && step % 1000 == 0 && unit == QLatin1String("ns")) {
        unit = QStringLiteral("us");
        step /= 1000;
    }
    if (step > 0 && step <= quint64(std::numeric_limits<int>::max())) {
        facts.timeUnit = unit;
        facts.timeStep = int(step);
    }
    return facts;
}

void Conversion::writeWindow()
{
    CoreCapture const& core = m_cores.first();
    CapturedWindow const& window = core.windows.first();
    WindowFacts const facts = factsOf(core, window);
    SampleClock const clock = m_hints.times.isKnown() ? m_hints.times : window.clock;
    for (QString const& ending : endingsOf(m_format)) {
        QString error;
        if (!writeWholeFile(pathFor(ending), windowWriter(ending, facts, m_words.plain, clock),
                            error))
            throw Failure{Status::Output,
                          QStringLiteral("%1 can't be written: %2").arg(pathFor(ending), error)};
        m_written << pathFor(ending);
    }
}

QDomElement Conversion::elementOf(CoreCapture const& core, QDomDocument& document) const
{
    CapturedWindow all = core.windows.first();
    for (int i = 0; i < all.samples.size() && core.windows.size() > 1; ++i) {
        QList<QBitArray> parts;
        for (CapturedWindow const& window : core.windows)
            parts << window.samples.at(i);
        all.samples[i] = combine(parts);
    }
    QDomElement const element = windowElement(document, triggerOf(all), all.layout,
                                              namedSignals(flatSignals(all.layout), all.samples));
    element.firstChildElement(DOM_TAG_TRIGGER_POSITION)
        .setAttribute(DOM_ATTR_TRIGGER_SEGMENTS, core.windows.size());
    return element;
}

void Conversion::writeSession()
{
    if (m_configuration.isEmpty()) {
        CoreCapture const& core = m_cores.first();
        m_configuration = KnownCores::made(core.module, core.clock, core.windows).text();
    }
    QDomDocument document;
    QList<SessionWindow> windows;
    for (CoreCapture const& core : qAsConst(m_cores))
        windows << SessionWindow{core.place, elementOf(core, document)};
    QString error;
    if (!VEK::writeSession(m_target, m_configuration, windows, SessionNote, error))
        throw Failure{Status::Output,
                      QStringLiteral("%1 can't be written: %2").arg(m_target, error)};
    m_written << m_target;
}

void Conversion::tell() const
{
    for (QString const& warning : m_warnings)
        printWarning(warning);
    QStringList lines = m_written;
    if (m_words.json) {
        QJsonObject const object{
            {QStringLiteral("written"), QJsonArray::fromStringList(m_written)},
            {QStringLiteral("samples"), m_cores.first().windows.first().length()},
            {QStringLiteral("windows"), m_cores.first().windows.size()},
            {QStringLiteral("warnings"), QJsonArray::fromStringList(m_warnings)}};
        lines =
            QStringList{QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact))};
    }
    for (QString const& line : qAsConst(lines)) {
        if (!printLine(line))
            throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
    }
}

} // namespace

void addConvertCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command =
        program.add_subcommand("convert", "Write a capture in another format");
    auto const words = std::make_shared<Words>();
    command
        ->add_option("files", words->files,
                     "What is read, and last what is written; the endings tell the formats: .csv, "
                     ".vcd, .rsx, .prn, .raw. Several files make the windows of one .rsx")
        ->required()
        ->expected(2, 4096)
        ->type_name("IN... OUT");
    command->add_flag("--plain", words->plain, "CSV or VCD in the profile that other tools read");
    command->add_option("--window", words->window, "The window that is meant, from 0")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--core", words->core, "The index of the core that is meant")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--trigger", words->trigger, "Sample of the trigger")
        ->check(CLI::NonNegativeNumber);
    command
        ->add_option("--clock", words->clocks,
                     "Frequency for times of plain files, such as 50MHz, or the name of the clock "
                     "at which a simulator's dump is sampled; may be repeated for both")
        ->type_name("CLOCK")
        ->take_all()
        ->allow_extra_args(false);
    command
        ->add_option("--configuration", words->configuration,
                     "Configuration that gives names and buses, and the core of a session")
        ->type_name("FILE");
    command->add_option("--manifest", words->manifest, "Manifest of the run")->type_name("FILE");
    command->add_flag("--json", words->json, "Print what was written as JSON");
    command->footer(statusHelp().toStdString());
    command->callback([&chosen, words, command] {
        chosen = [words, command] { return Conversion(*words, *command).exec(); };
    });
}

} // namespace VEK::Cli
