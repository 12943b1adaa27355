#include "check/configurationcheck.h"
#include "cli/benchcheck.h"
#include "cli/command.h"
#include "cli/exitstatus.h"
#include "model/standardfile.h"
#include "model/vekfile.h"
#include "trigger/trigger.h"

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
    std::string configuration;
    std::string bench;
    bool json = false;
};

/// A file that was looked at, and what was found.
struct CheckedFile
{
    QString path;
    QList<Finding> findings;
};

/// What a core waits for, in words.
struct CoreTrigger
{
    int core;
    QString text;
    QStringList notes;
};

/// Of a file that can be read.
QList<CoreTrigger> triggersOf(QString const& path)
{
    QList<CoreTrigger> triggers;
    if (vekModeFromVekConfigFile(path) != VekModeStandard)
        return triggers;
    QString id;
    QList<SxCore*> const cores = readVEKConfigFromXml(path, id, nullptr, nullptr);
    for (SxCore const* core : cores)
        triggers.append({core->index, triggerText(*core), triggerNotes(*core)});
    qDeleteAll(cores);
    return triggers;
}

CheckedFile checkFile(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure{Status::Configuration,
                      QStringLiteral("%1: %2").arg(path, file.errorString())};
    return {path, checkConfiguration(file.readAll())};
}

QString severityWord(Finding const& finding)
{
    return finding.severity == Severity::Error ? QStringLiteral("error")
                                               : QStringLiteral("warning");
}

QJsonObject toJson(QString const& path, Finding const& finding)
{
    QJsonObject json{{QStringLiteral("file"), path},
                     {QStringLiteral("severity"), severityWord(finding)},
                     {QStringLiteral("message"), finding.message}};
    if (finding.line > 0)
        json.insert(QStringLiteral("line"), finding.line);
    if (!finding.element.isEmpty())
        json.insert(QStringLiteral("element"), finding.element);
    if (!finding.attribute.isEmpty())
        json.insert(QStringLiteral("attribute"), finding.attribute);
    return json;
}

bool printJson(QList<CheckedFile> const& files, QList<CoreTrigger> const& triggers, int errors,
               int warnings)
{
    QJsonArray findings;
    for (CheckedFile const& file : files)
        for (Finding const& finding : file.findings)
            findings << toJson(file.path, finding);
    QJsonArray texts;
    for (CoreTrigger const& trigger : triggers)
        texts << QJsonObject{{QStringLiteral("core"), trigger.core},
                             {QStringLiteral("text"), trigger.text},
                             {QStringLiteral("notes"), QJsonArray::fromStringList(trigger.notes)}};
    QJsonObject const json{{QStringLiteral("errors"), errors},
                           {QStringLiteral("triggers"), texts},
                           {QStringLiteral("warnings"), warnings},
                           {QStringLiteral("findings"), findings}};
    return printLine(QString::fromUtf8(QJsonDocument(json).toJson()).trimmed());
}

QString counted(int count, QString const& what)
{
    QString const text = QStringLiteral("%1 %2").arg(count).arg(what);
    return count == 1 ? text : text + QLatin1Char('s');
}

QString lineOf(QString const& path, Finding const& finding)
{
    QString const place =
        finding.line > 0 ? QStringLiteral("%1:%2").arg(path).arg(finding.line) : path;
    return QStringLiteral("%1: %2: %3").arg(place, severityWord(finding), finding.text());
}

bool printText(QList<CheckedFile> const& files, QList<CoreTrigger> const& triggers, int errors,
               int warnings)
{
    bool isWritten = true;
    for (CheckedFile const& file : files)
        for (Finding const& finding : file.findings)
            isWritten &= printLine(lineOf(file.path, finding));
    for (CoreTrigger const& trigger : triggers) {
        isWritten &=
            printLine(QStringLiteral("core %1 waits for: %2").arg(trigger.core).arg(trigger.text));
        for (QString const& note : trigger.notes)
            isWritten &= printLine(QStringLiteral("  ") + note);
    }
    QString summary = QStringLiteral("nothing found");
    if (errors + warnings > 0)
        summary = counted(errors, QStringLiteral("error")) + QStringLiteral(", ") +
                  counted(warnings, QStringLiteral("warning"));
    return isWritten & printLine(QStringLiteral("%1: %2").arg(files.first().path, summary));
}

int check(Words const& words)
{
    QList<CheckedFile> files{checkFile(textOf(words.configuration))};
    if (!words.bench.empty())
        files << CheckedFile{textOf(words.bench), checkBench(textOf(words.bench))};
    int errors = 0;
    int all = 0;
    for (CheckedFile const& file : qAsConst(files)) {
        all += file.findings.size();
        errors += int(
            std::count_if(file.findings.begin(), file.findings.end(), [](Finding const& finding) {
                return finding.severity == Severity::Error;
            }));
    }
    QList<CoreTrigger> const triggers = triggersOf(files.first().path);
    bool const isWritten = words.json ? printJson(files, triggers, errors, all - errors)
                                      : printText(files, triggers, errors, all - errors);
    if (!isWritten)
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
    return int(errors > 0 ? Status::Differs : Status::Done);
}

} // namespace

void addCheckCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command = program.add_subcommand(
        "check", "Tell what readers of a configuration put up with; status 1 when it has errors");
    auto const words = std::make_shared<Words>();
    command->add_option("configuration", words->configuration, "Configuration, .vek or .rsx")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("--bench", words->bench, "Bench file of the simulated chip, looked at as well")
        ->type_name("FILE");
    command->add_flag("--json", words->json, "Print one JSON object");
    command->callback([&chosen, words] { chosen = [words] { return check(*words); }; });
}

} // namespace VEK::Cli
