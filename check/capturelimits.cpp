#include "check/capturelimits.h"

#include "acquire/datamanager.h"
#include "model/capturecore.h"

namespace VEK {
namespace {

/// Samples of a window that are read: Standard cores are read in whole sections.
int readSamples(int captureAmount)
{
    int const section = DataManager::SectionSamples;
    return captureAmount <= section ? captureAmount : captureAmount / section * section;
}

/// Samples that the chip takes by itself behind the trigger, of a static core and of a dynamic one.
int ownSamples(SxCore const& core)
{
    return core.expressionType == ExpressionDynamic ? 4 : 3;
}

QString positionProblem(SxCore const& core)
{
    int const amount = core.captureAmount;
    if (core.triggerPos < 0 || core.triggerPos >= amount)
        return QStringLiteral("trigger position %1 lies outside of %2 samples")
            .arg(core.triggerPos)
            .arg(amount);
    return QString();
}

} // namespace

QList<LimitProblem> limitProblems(SxCore const& core)
{
    QList<LimitProblem> problems;
    auto const add = [&problems](char const* attribute, QString const& message, bool isError) {
        problems.append({QString::fromLatin1(attribute), message, isError});
    };
    int const amount = core.captureAmount;
    int const read = readSamples(amount);
    int const share = core.storageDepth / int(fixedWindowNum(unsigned(core.windowNum)));
    if (amount > share)
        add("capture_amount",
            QStringLiteral("%1 samples are more than the %2 of a window's memory")
                .arg(amount)
                .arg(share),
            true);
    if (read < amount)
        add("capture_amount",
            QStringLiteral("of %1 samples only %2 are read, a multiple of %3")
                .arg(amount)
                .arg(read)
                .arg(DataManager::SectionSamples),
            false);
    QString const position = positionProblem(core);
    if (!position.isEmpty())
        add("trigger_pos", position, true);
    else if (core.triggerPos > amount - ownSamples(core))
        add("trigger_pos",
            QStringLiteral(
                "trigger position %1 leaves less than the %2 samples that the chip takes "
                "by itself")
                .arg(core.triggerPos)
                .arg(ownSamples(core)),
            false);
    if (core.index < 0 || core.index >= CoreSelects)
        add("index",
            QStringLiteral("the chain tells only the cores 0 to %1 apart").arg(CoreSelects - 1),
            true);
    return problems;
}

} // namespace VEK
