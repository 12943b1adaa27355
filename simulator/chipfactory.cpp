#include "simulator/chipfactory.h"

#include "dump/vcdsampler.h"
#include "model/vekfile.h"
#include "simulator/bench.h"
#include "simulator/devices.h"
#include "simulator/litechip.h"
#include "simulator/standardchip.h"

#include <QStringList>

namespace VEK::Simulator {
namespace {

/// The name that the dump has for a name of the design: mapped whole, or the part in front of its
/// index, or the same within the scope.
QString dumpName(Bench const& bench, QString const& name)
{
    auto const whole = bench.names.constFind(name);
    if (whole != bench.names.constEnd())
        return whole.value();
    int const bracket = name.lastIndexOf(QLatin1Char('['));
    if (bracket > 0) {
        auto const vector = bench.names.constFind(name.left(bracket).trimmed());
        if (vector != bench.names.constEnd())
            return vector.value() + name.mid(bracket);
    }
    return bench.scope.isEmpty() ? name : bench.scope + QLatin1Char('.') + name;
}

/// What a core watches, in the names of the design.
struct WatchedCore
{
    QStringList signalNames;
    QString sampleClock;
};

bool samplePatterns(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::SampledStimulus& stimulus, QString& error)
{
    qint64 bytes = 0;
    for (WatchedCore const& core : cores)
        bytes += bench.pattern.samples * Dump::SampleTable::wordsFor(core.signalNames.size()) * 8;
    if (bytes > Dump::MaxTableBytes) {
        error = QStringLiteral("the pattern takes more than %1 bytes").arg(Dump::MaxTableBytes);
        return false;
    }
    for (WatchedCore const& core : cores)
        stimulus.tables.push_back(samplePattern(bench.pattern, core.signalNames.size()));
    return true;
}

bool sampleStimulus(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::SampledStimulus& stimulus, QString& error)
{
    if (bench.vcd.isEmpty())
        return samplePatterns(bench, cores, stimulus, error);
    std::vector<Dump::SampleRequest> requests;
    for (WatchedCore const& core : cores) {
        Dump::SampleRequest request;
        for (QString const& name : core.signalNames)
            request.signalNames.append(dumpName(bench, name));
        request.clock = bench.clock.isEmpty() ? dumpName(bench, core.sampleClock) : bench.clock;
        if (bench.clock.isEmpty() && core.sampleClock.isEmpty()) {
            error = QStringLiteral("a core has no sample clock, nor has the bench");
            return false;
        }
        requests.push_back(request);
    }
    return Dump::sampleVcdFile(bench.vcd, requests, stimulus, error);
}

std::unique_ptr<Chip> buildLiteChip(Bench const& bench, QString& warning, QString& error)
{
    BuiltLiteCore core;
    Dump::SampledStimulus stimulus;
    if (!readLiteDesign(bench.design, bench.device, core, error) ||
        !sampleStimulus(bench, {{core.signalNames, core.sampleClock}}, stimulus, error))
        return nullptr;
    warning = stimulus.warning;
    return std::make_unique<LiteChip>(std::move(core), std::move(stimulus.tables.front()));
}

std::unique_ptr<Chip> buildStandardChip(Bench const& bench, QString& warning, QString& error)
{
    std::vector<BuiltCore> cores;
    std::vector<WatchedCore> watched;
    Dump::SampledStimulus stimulus;
    if (!readStandardDesign(bench.design, cores, error))
        return nullptr;
    for (BuiltCore const& core : cores)
        watched.push_back({core.signalNames, core.sampleClock});
    if (!sampleStimulus(bench, watched, stimulus, error))
        return nullptr;
    warning = stimulus.warning;
    return std::make_unique<StandardChip>(std::move(cores), std::move(stimulus.tables),
                                          takesOneMore(bench.device));
}

} // namespace

std::unique_ptr<Chip> buildChip(Bench const& bench, QString& warning, QString& error)
{
    switch (vekModeFromVekConfigFile(bench.design)) {
    case VekModeStandard:
        return buildStandardChip(bench, warning, error);
    case VekModeLite:
        return buildLiteChip(bench, warning, error);
    case VekModeUnknown:
        break;
    }
    error = QStringLiteral("%1: this is no configuration file that can be read").arg(bench.design);
    return nullptr;
}

} // namespace VEK::Simulator
