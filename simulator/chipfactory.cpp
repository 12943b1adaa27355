#include "simulator/chipfactory.h"

#include "model/vekfile.h"
#include "simulator/bench.h"
#include "simulator/benchstimulus.h"
#include "simulator/devices.h"
#include "simulator/litechip.h"
#include "simulator/standardchip.h"

namespace VEK::Simulator {
namespace {

/// What a bench says was built.
struct BuiltDesign
{
    bool isLite = false;
    BuiltLiteCore liteCore;
    std::vector<BuiltCore> cores;
    std::vector<WatchedCore> watched;
};

bool readCores(Bench const& bench, BuiltDesign& design, QString& error)
{
    switch (vekModeFromVekConfigFile(bench.design)) {
    case VekModeStandard:
        return readStandardDesign(bench.design, design.cores, error);
    case VekModeLite:
        design.isLite = true;
        return readLiteDesign(bench.design, bench.device, design.liteCore, error);
    case VekModeUnknown:
        break;
    }
    error = QStringLiteral("%1: this is no configuration file that can be read").arg(bench.design);
    return false;
}

bool readDesign(Bench const& bench, BuiltDesign& design, QString& error)
{
    if (!readCores(bench, design, error))
        return false;
    if (design.isLite)
        design.watched.push_back({design.liteCore.signalNames, design.liteCore.sampleClock});
    for (BuiltCore const& core : design.cores)
        design.watched.push_back({core.signalNames, core.sampleClock});
    return true;
}

} // namespace

std::unique_ptr<Chip> buildChip(Bench const& bench, QString& warning, QString& error)
{
    BuiltDesign design;
    Dump::SampledStimulus stimulus;
    if (!readDesign(bench, design, error) ||
        !sampleStimulus(bench, design.watched, stimulus, error))
        return nullptr;
    warning = stimulus.warning;
    if (design.isLite)
        return std::make_unique<LiteChip>(std::move(design.liteCore),
                                          std::move(stimulus.tables.front()));
    return std::make_unique<StandardChip>(std::move(design.cores), std::move(stimulus.tables),
                                          takesOneMore(bench.device));
}

bool countSamples(Bench const& bench, std::vector<qint64>& samples, QString& warning,
                  QString& error)
{
    BuiltDesign design;
    if (!readDesign(bench, design, error))
        return false;
    samples.assign(design.watched.size(), 0);
    auto const count = [&samples](int core, quint64 const*) {
        ++samples[std::size_t(core)];
        return true;
    };
    return streamStimulus(bench, design.watched, count, warning, error);
}

} // namespace VEK::Simulator
