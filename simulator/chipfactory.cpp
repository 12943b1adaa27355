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

/// A design, and what its cores see.
struct LoadedBench
{
    bool isLite = false;
    BuiltLiteCore liteCore;
    std::vector<BuiltCore> cores;
    Dump::SampledStimulus stimulus;
};

bool readDesign(Bench const& bench, LoadedBench& loaded, QString& error)
{
    switch (vekModeFromVekConfigFile(bench.design)) {
    case VekModeStandard:
        return readStandardDesign(bench.design, loaded.cores, error);
    case VekModeLite:
        loaded.isLite = true;
        return readLiteDesign(bench.design, bench.device, loaded.liteCore, error);
    case VekModeUnknown:
        break;
    }
    error = QStringLiteral("%1: this is no configuration file that can be read").arg(bench.design);
    return false;
}

bool loadBench(Bench const& bench, LoadedBench& loaded, QString& error)
{
    if (!readDesign(bench, loaded, error))
        return false;
    std::vector<WatchedCore> watched;
    if (loaded.isLite)
        watched.push_back({loaded.liteCore.signalNames, loaded.liteCore.sampleClock});
    for (BuiltCore const& core : loaded.cores)
        watched.push_back({core.signalNames, core.sampleClock});
    return sampleStimulus(bench, watched, loaded.stimulus, error);
}

} // namespace

std::unique_ptr<Chip> buildChip(Bench const& bench, QString& warning, QString& error)
{
    LoadedBench loaded;
    if (!loadBench(bench, loaded, error))
        return nullptr;
    warning = loaded.stimulus.warning;
    if (loaded.isLite)
        return std::make_unique<LiteChip>(std::move(loaded.liteCore),
                                          std::move(loaded.stimulus.tables.front()));
    return std::make_unique<StandardChip>(
        std::move(loaded.cores), std::move(loaded.stimulus.tables), takesOneMore(bench.device));
}

bool countSamples(Bench const& bench, std::vector<qint64>& samples, QString& warning,
                  QString& error)
{
    LoadedBench loaded;
    if (!loadBench(bench, loaded, error))
        return false;
    warning = loaded.stimulus.warning;
    for (Dump::SampleTable const& table : loaded.stimulus.tables)
        samples.push_back(table.rowCount());
    return true;
}

} // namespace VEK::Simulator
