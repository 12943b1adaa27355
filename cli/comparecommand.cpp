#include "cli/command.h"
#include "cli/comparison.h"
#include "cli/exitstatus.h"
#include "cli/manifestreader.h"
#include "results/wholefile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <future>
#include <memory>

namespace VEK::Cli {
namespace {

struct Words
{
    std::string golden;
    std::string made;
    std::string align;
    std::string edge;
    std::vector<std::string> ignored;
    std::vector<std::string> masks;
    std::vector<std::string> clocks;
    std::string configuration;
    std::string junit;
    std::string manifest;
    int from = 0;
    int to = 0;
    int window = 0;
    int core = 0;
    bool json = false;
};

Failure usage(QString const& message)
{
    return {Status::Usage, message};
}

/// A number such as 0xF0, 0b1101 or 12 as bits, the highest first.
QBitArray parseMask(QString const& text)
{
    bool const isBinary = text.startsWith(QLatin1String("0b"), Qt::CaseInsensitive);
    bool const isHex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    int const digitBits = isBinary ? 1 : 4;
    QString const digits =
        isBinary || isHex ? text.mid(2) : QString::number(text.toULongLong(), 16);
    bool ok = !digits.isEmpty();
    if (!isBinary && !isHex)
        text.toULongLong(&ok);
    QBitArray mask(digits.size() * digitBits);
    for (int i = 0; i < digits.size() && ok; ++i) {
        int const digit = QString(digits.at(i)).toInt(&ok, isBinary ? 2 : 16);
        for (int bit = 0; bit < digitBits; ++bit)
            mask.setBit(i * digitBits + bit, digit >> (digitBits - 1 - bit) & 1);
    }
    if (!ok)
        throw usage(QStringLiteral("--mask: \"%1\" is no number such as 0xF0 or 0b1101").arg(text));
    return mask;
}

/// A window of one of the files.
struct Chosen
{
    int core = 0;
    int window = 0;
    CapturedWindow data;
};

class Comparing
{
public:
    Comparing(Words const& words, CLI::App const& command) : m_words(words), m_command(command)
    {
        if (isGiven("--from"))
            m_settings.from = words.from;
        if (isGiven("--to"))
            m_settings.to = words.to;
        if (m_settings.from && m_settings.to && words.from > words.to)
            throw usage(
                QStringLiteral("--from %1 lies behind --to %2").arg(words.from).arg(words.to));
        for (std::string const& name : words.ignored)
            m_settings.ignored << textOf(name);
        for (std::string const& word : words.masks) {
            QString const text = textOf(word);
            int const at = text.lastIndexOf(QLatin1Char('='));
            if (at < 1)
                throw usage(
                    QStringLiteral("--mask: \"%1\" is not of the form NAME=BITS").arg(text));
            m_settings.masks.insert(text.left(at), parseMask(text.mid(at + 1)));
        }
    }

    int exec()
    {
        QString const golden = textOf(m_words.golden);
        QString const made = textOf(m_words.made);
        // both at once: reading is most of the work
        std::future<CaptureFile> other = std::async(
            std::launch::async, [&] { return readCaptureFile(golden, hintsFor(QString())); });
        QString const manifest = textOf(m_words.manifest);
        CaptureFile const file = readCaptureFile(made, hintsFor(manifest));
        QList<Chosen> const expected = chosenOf(other.get(), golden);
        compareAll(expected, chosenOf(file, made));
        if (!m_words.junit.empty())
            writeJUnit();
        if (!m_words.manifest.empty())
            addComparison(textOf(m_words.manifest), keptOutcome());
        tell();
        return int(m_failures ? Status::Differs : Status::Done);
    }

private:
    bool isGiven(char const* option) const { return m_command.count(option) > 0; }
    CaptureHints hintsFor(QString const& manifest) const;
    QList<Chosen> chosenOf(CaptureFile const& file, QString const& path);
    void compareAll(QList<Chosen> const& golden, QList<Chosen> const& made);
    void compareOne(QString const& title, Chosen const& golden, Chosen const& made);
    void tellUnpaired(QString const& title, char const* what);
    int alignmentOf(CapturedWindow const& window, QString const& path, bool isGolden) const;
    void writeJUnit() const;
    QJsonObject outcome() const;
    QJsonObject keptOutcome() const;
    void tell() const;

    Words const& m_words;
    CLI::App const& m_command;
    ComparisonSettings m_settings;
    QStringList m_lines;
    QStringList m_warnings;
    QJsonArray m_windows;
    QByteArray m_cases;
    int m_caseCount = 0;
    int m_failures = 0;
};

CaptureHints Comparing::hintsFor(QString const& manifest) const
{
    CaptureHints hints;
    for (std::string const& clock : m_words.clocks) {
        if (!hints.times.parse(textOf(clock)))
            hints.clock = textOf(clock);
    }
    hints.configuration = textOf(m_words.configuration);
    hints.manifest = manifest;
    if (isGiven("--core"))
        hints.core = m_words.core;
    return hints;
}

/// The windows of a file that are meant; --window picks among several only.
QList<Chosen> Comparing::chosenOf(CaptureFile const& file, QString const& path)
{
    m_warnings << file.warnings;
    QList<Chosen> chosen;
    for (CoreCapture const& core : file.cores) {
        for (int window = 0; window < core.windows.size(); ++window) {
            bool const isMeant = !isGiven("--window") || window == m_words.window ||
                                 file.format != QLatin1String("rsx");
            if (isMeant)
                chosen << Chosen{core.index, window, core.windows.at(window)};
        }
    }
    if (chosen.isEmpty())
        throw usage(QStringLiteral("%1: it has no window %2").arg(path).arg(m_words.window));
    return chosen;
}

void Comparing::compareAll(QList<Chosen> const& golden, QList<Chosen> const& made)
{
    if (golden.size() == 1 && made.size() == 1) {
        compareOne(QString(), golden.first(), made.first());
        return;
    }
    if (golden.size() == 1 || made.size() == 1)
        throw usage(QStringLiteral("%1 has several windows: --window and --core say which one is "
                                   "meant")
                        .arg(textOf(golden.size() > 1 ? m_words.golden : m_words.made)));
    auto const titleOf = [](Chosen const& window) {
        return QStringLiteral("core %1 window %2").arg(window.core).arg(window.window);
    };
    auto const find = [&](QList<Chosen> const& among, Chosen const& wanted) {
        return std::find_if(among.begin(), among.end(), [&](Chosen const& one) {
            return one.core == wanted.core && one.window == wanted.window;
        });
    };
    for (Chosen const& window : golden) {
        auto const other = find(made, window);
        if (other == made.end())
            tellUnpaired(titleOf(window), "missing");
        else
            compareOne(titleOf(window), window, *other);
    }
    for (Chosen const& window : made) {
        if (find(golden, window) == golden.end())
            tellUnpaired(titleOf(window), "added");
    }
}

void Comparing::tellUnpaired(QString const& title, char const* what)
{
    QString const kind = QLatin1String(what);
    m_lines << title + QStringLiteral(": ") + kind;
    m_windows.append(QJsonObject{{QStringLiteral("window"), title},
                                 {QStringLiteral("equal"), false},
                                 {QStringLiteral("lengths"), kind}});
    m_cases += "    <testcase classname=\"" + title.toUtf8() +
               "\" name=\"samples\"><failure message=\"" + what + "\"/></testcase>\n";
    ++m_caseCount;
    ++m_failures;
}

void Comparing::compareOne(QString const& title, Chosen const& golden, Chosen const& made)
{
    Comparison const comparison(golden.data, alignmentOf(golden.data, textOf(m_words.golden), true),
                                made.data, alignmentOf(made.data, textOf(m_words.made), false),
                                m_settings);
    QString const head = title.isEmpty() ? QString() : title + QStringLiteral(": ");
    for (QString const& line : comparison.lines())
        m_lines << head + line;
    QJsonObject object = comparison.json();
    object.insert(QStringLiteral("window"), title);
    m_windows.append(object);
    m_cases += comparison.cases(title.isEmpty() ? textOf(m_words.made) : title);
    m_caseCount += comparison.outcomes().size() + 1;
    m_failures += comparison.failures();
}

/// The sample that is taken for the trigger.
int Comparing::alignmentOf(CapturedWindow const& window, QString const& path, bool isGolden) const
{
    if (isGiven("--align")) {
        QStringList const parts = textOf(m_words.align).split(QLatin1Char(','));
        bool ok = parts.size() <= 2;
        int const sample = parts.at(isGolden ? 0 : parts.size() - 1).toInt(&ok);
        if (!ok || parts.size() > 2 || sample < 0)
            throw usage(QStringLiteral("--align: \"%1\" is no sample, and no two such as 64,80")
                            .arg(textOf(m_words.align)));
        return sample;
    }
    if (isGiven("--by-edge")) {
        QString const name = textOf(m_words.edge);
        QList<QBitArray> const bits = samplesOf(window, name);
        if (bits.size() != 1)
            throw usage(
                QStringLiteral("--by-edge: %1 has no signal %2 of one bit").arg(path, name));
        for (int sample = 1; sample < window.length(); ++sample) {
            if (bits.first().testBit(sample) && !bits.first().testBit(sample - 1))
                return sample;
        }
        throw usage(QStringLiteral("--by-edge: %1 never rises in %2").arg(name, path));
    }
    if (!window.trigger)
        throw usage(QStringLiteral("%1: nothing tells the sample of the trigger; --align SAMPLE or "
                                   "--by-edge NAME says where the captures meet")
                        .arg(path));
    return *window.trigger;
}

void Comparing::writeJUnit() const
{
    QString const path = textOf(m_words.junit);
    QByteArray const text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n"
                            "  <testsuite name=\"vek compare\" tests=\"" +
                            QByteArray::number(m_caseCount) + "\" failures=\"" +
                            QByteArray::number(m_failures) + "\">\n" + m_cases +
                            "  </testsuite>\n</testsuites>\n";
    QString error;
    if (!writeWholeFile(path, text, error))
        throw Failure{Status::Output, QStringLiteral("%1 can't be written: %2").arg(path, error)};
}

QJsonObject Comparing::outcome() const
{
    return {{QStringLiteral("golden"), textOf(m_words.golden)},
            {QStringLiteral("new"), textOf(m_words.made)},
            {QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
            {QStringLiteral("equal"), m_failures == 0},
            {QStringLiteral("windows"), m_windows}};
}

/// In the manifest, which others read from elsewhere, the files are named as its own are.
QJsonObject Comparing::keptOutcome() const
{
    QDir const folder = QFileInfo(textOf(m_words.manifest)).absoluteDir();
    auto const relative = [&](std::string const& path) {
        return folder.relativeFilePath(QFileInfo(textOf(path)).absoluteFilePath());
    };
    QJsonObject kept = outcome();
    kept.insert(QStringLiteral("golden_file"), relative(m_words.golden));
    kept.insert(QStringLiteral("new_file"), relative(m_words.made));
    return kept;
}

void Comparing::tell() const
{
    for (QString const& warning : m_warnings)
        printWarning(warning);
    QStringList lines = m_lines;
    if (lines.isEmpty())
        lines << QStringLiteral("equal");
    if (m_words.json)
        lines =
            QStringList{QString::fromUtf8(QJsonDocument(outcome()).toJson(QJsonDocument::Compact))};
    for (QString const& line : qAsConst(lines)) {
        if (!printLine(line))
            throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
    }
}

void addAlignment(CLI::App& command, Words& words)
{
    auto* const align = command.add_option(
        "--align", words.align,
        "The sample where the captures meet, instead of the trigger: of both, or GOLDEN,NEW");
    align->type_name("SAMPLE");
    command
        .add_option("--by-edge", words.edge, "They meet at the first rising edge of this signal")
        ->type_name("NAME")
        ->excludes(align);
    command.add_option("--from", words.from, "First sample, counted from the trigger");
    command.add_option("--to", words.to, "Last sample, counted from the trigger");
    command.add_option("--window", words.window, "The window of sessions that is meant, from 0")
        ->check(CLI::NonNegativeNumber);
    command.add_option("--core", words.core, "The index of the core that is meant")
        ->check(CLI::NonNegativeNumber);
}

void addReading(CLI::App& command, Words& words)
{
    command
        .add_option("--clock", words.clocks,
                    "Clock of plain files, such as 50MHz, or its name in a simulator's dump")
        ->type_name("CLOCK")
        ->take_all()
        ->allow_extra_args(false);
    command
        .add_option("--configuration", words.configuration,
                    "Configuration that gives both captures names and buses")
        ->type_name("FILE");
    command
        .add_option("--ignore", words.ignored,
                    "A signal or bus that does not count; may be repeated")
        ->type_name("NAME")
        ->take_all()
        ->allow_extra_args(false);
    command
        .add_option("--mask", words.masks,
                    "The bits of a bus that count, such as addr=0xF0; may be repeated")
        ->type_name("NAME=BITS")
        ->take_all()
        ->allow_extra_args(false);
}

} // namespace

void addCompareCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command =
        program.add_subcommand("compare", "Compare a capture with a golden one");
    auto const words = std::make_shared<Words>();
    command->add_option("golden", words->golden, "The capture as it should be")
        ->required()
        ->type_name("GOLDEN");
    command->add_option("new", words->made, "The capture to be looked at")
        ->required()
        ->type_name("NEW");
    addAlignment(*command, *words);
    addReading(*command, *words);
    command->add_option("--junit", words->junit, "Write a report as JUnit XML")->type_name("FILE");
    command->add_option("--manifest", words->manifest, "Manifest of the run that gets the outcome")
        ->type_name("FILE");
    command->add_flag("--json", words->json, "Print the outcome as JSON");
    command->footer(statusHelp().toStdString());
    command->callback([&chosen, words, command] {
        chosen = [words, command] { return Comparing(*words, *command).exec(); };
    });
}

} // namespace VEK::Cli
