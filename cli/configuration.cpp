#include "cli/configuration.h"

#include "check/capturelimits.h"
#include "cli/exitstatus.h"
#include "model/vekfile.h"

#include <QFile>
#include <QSet>

namespace VEK::Cli {
namespace {

Failure invalid(QString const& message)
{
    return {Status::Configuration, message};
}

/// What the parser says of a file that is no configuration; null when that is not the matter.
QString parserError(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    ParsedDocument const parsed = parseVekDocument(file.readAll());
    if (!parsed.isOk())
        return parsed.error;
    if (vekModeFromVekConfigFile(path) != VekModeUnknown)
        return QString();
    return QStringLiteral("unknown mode \"%1\"")
        .arg(parsed.config().firstChildElement(QStringLiteral("Mode")).text());
}

void checkAmounts(QString const& core, int amount, int windows)
{
    if (amount < 1)
        throw invalid(QStringLiteral("%1: capture amount %2 is below 1").arg(core).arg(amount));
    if (windows < 1)
        throw invalid(QStringLiteral("%1: window count %2 is below 1").arg(core).arg(windows));
}

QStringList warningsOf(SxCore const& core)
{
    QStringList warnings;
    for (LimitProblem const& problem : limitProblems(core))
        warnings << QStringLiteral("core %1: %2").arg(core.index).arg(problem.message);
    return warnings;
}

} // namespace

void openConfiguration(QString const& path, Capture& capture)
{
    QString const lower = path.toLower();
    if (!lower.endsWith(QLatin1String(".vek")) && !lower.endsWith(QLatin1String(".rsx")))
        throw invalid(QStringLiteral("%1: a configuration's name ends in .vek or .rsx").arg(path));
    QString error;
    if (capture.open(path, error))
        return;
    QString const parser = QFile::exists(path) ? parserError(path) : QString();
    throw invalid(QStringLiteral("%1: %2").arg(path, parser.isEmpty() ? error : parser));
}

QStringList checkCores(Capture const& capture, QList<int> const& places)
{
    QStringList warnings;
    if (SXCore_Lite const* const core = capture.liteCore()) {
        checkAmounts(QStringLiteral("lite core"), core->captureAmount, 1);
        if (flatSignals(core->dataSignalList).isEmpty())
            throw invalid(QStringLiteral("lite core: it captures no signals"));
        return warnings;
    }
    QSet<int> indexes;
    for (int const place : places) {
        SxCore const& core = *capture.cores().at(place);
        checkAmounts(QStringLiteral("core %1").arg(core.index), core.captureAmount, core.windowNum);
        if (indexes.contains(core.index))
            throw invalid(QStringLiteral("two cores have index %1").arg(core.index));
        indexes << core.index;
        warnings << warningsOf(core);
    }
    return warnings;
}

} // namespace VEK::Cli
