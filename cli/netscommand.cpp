#include "cli/command.h"
#include "cli/exitstatus.h"
#include "dump/netlist.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <memory>

namespace VEK::Cli {
namespace {

struct Words
{
    std::string dump;
    std::vector<std::string> patterns;
    bool clocks = false;
    bool json = false;
};

std::vector<Dump::Net> read(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure{Status::Configuration,
                      QStringLiteral("%1: %2").arg(path, file.errorString())};
    std::vector<Dump::Net> nets;
    QString warning;
    QString error;
    if (!Dump::listNets(file, nets, warning, error))
        throw Failure{Status::Configuration, QStringLiteral("%1: %2").arg(path, error)};
    if (!warning.isEmpty())
        printWarning(QStringLiteral("%1: %2").arg(path, warning));
    return nets;
}

bool isWanted(Dump::Net const& net, Words const& words,
              std::vector<Dump::NetPattern> const& patterns)
{
    if (words.clocks && !net.looksLikeClock)
        return false;
    return patterns.empty() ||
           std::any_of(patterns.begin(), patterns.end(), [&net](Dump::NetPattern const& pattern) {
               return pattern.fits(net.variable.path);
           });
}

QString kindOf(Dump::Net const& net)
{
    if (!net.variable.isBits)
        return QStringLiteral("no bits");
    return net.looksLikeClock ? QStringLiteral("clock?") : QString();
}

/// Without its closing ".".
QString scopeOf(Dump::Net const& net)
{
    QString const scope = QString::fromUtf8(net.variable.scope);
    return scope.left(scope.size() - 1);
}

bool printText(std::vector<Dump::Net> const& nets)
{
    bool isWritten = true;
    for (Dump::Net const& net : nets) {
        QString const line = QStringLiteral("%1 %2  %3")
                                 .arg(net.variable.width, 5)
                                 .arg(net.changes, 10)
                                 .arg(QString::fromUtf8(net.variable.path));
        QString const kind = kindOf(net);
        isWritten &= printLine(kind.isEmpty() ? line : line + QStringLiteral("  ") + kind);
    }
    return isWritten;
}

bool printJson(std::vector<Dump::Net> const& nets)
{
    QJsonArray list;
    for (Dump::Net const& net : nets)
        list << QJsonObject{{QStringLiteral("path"), QString::fromUtf8(net.variable.path)},
                            {QStringLiteral("scope"), scopeOf(net)},
                            {QStringLiteral("name"), QString::fromUtf8(net.variable.name)},
                            {QStringLiteral("width"), net.variable.width},
                            {QStringLiteral("changes"), net.changes},
                            {QStringLiteral("bits"), net.variable.isBits},
                            {QStringLiteral("clock"), net.looksLikeClock}};
    QJsonObject const json{{QStringLiteral("nets"), list}};
    return printLine(QString::fromUtf8(QJsonDocument(json).toJson()).trimmed());
}

int nets(Words const& words)
{
    std::vector<Dump::NetPattern> patterns;
    for (std::string const& word : words.patterns)
        patterns.emplace_back(textOf(word));
    std::vector<Dump::Net> found = read(textOf(words.dump));
    found.erase(
        std::remove_if(found.begin(), found.end(),
                       [&](Dump::Net const& net) { return !isWanted(net, words, patterns); }),
        found.end());
    if (!(words.json ? printJson(found) : printText(found)))
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
    return int(found.empty() ? Status::Differs : Status::Done);
}

} // namespace

void addNetsCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command = program.add_subcommand(
        "nets", "List the nets of a simulation's dump: width, changes, name");
    auto const words = std::make_shared<Words>();
    command->add_option("dump", words->dump, "Value change dump, .vcd")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("pattern", words->patterns,
                     "Names, whole or from a scope on, with * and ?; status 1 when none fits")
        ->type_name("PATTERN");
    command->add_flag("--clocks", words->clocks, "Those that look like clocks");
    command->add_flag("--json", words->json, "Print one JSON object");
    command->callback([&chosen, words] { chosen = [words] { return nets(*words); }; });
}

} // namespace VEK::Cli
