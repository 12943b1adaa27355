#include "cli/explain.h"

#include "cli/capturedrows.h"
#include "cli/configuration.h"
#include "cli/exitstatus.h"
#include "cli/overrides.h"
#include "image/expressionimage.h"
#include "image/registerimage.h"
#include "simulator/benchstimulus.h"
#include "simulator/devices.h"
#include "simulator/litechip.h"
#include "simulator/standardchip.h"

namespace VEK::Cli {

using Simulator::Bench;
using Simulator::BuiltCore;
using Simulator::StandardChip;
using Simulator::StandardCore;
using Simulator::WatchedCore;

namespace {

Failure invalid(QString const& message)
{
    return {Status::Configuration, message};
}

/// The bench that the settings name, or one that stands for their dump.
Bench benchOf(ExplainSettings const& settings)
{
    Bench bench;
    QString error;
    if (settings.bench.isEmpty()) {
        bench.vcd = settings.vcd;
        bench.clock = settings.clock;
        bench.device = settings.device;
        return bench;
    }
    if (!Simulator::readBench(settings.bench, bench, error))
        throw invalid(error);
    if (bench.design.isEmpty())
        throw invalid(QStringLiteral("%1: it names no design").arg(settings.bench));
    return bench;
}

void checkClock(Bench const& bench, WatchedCore const& core)
{
    if (!bench.vcd.isEmpty() && bench.clock.isEmpty() && core.sampleClock.isEmpty())
        throw invalid(QStringLiteral("a core has no sample clock: give --clock NAME"));
}

/// Shows the samples to `take`, core by core of `watched`.
void showSamples(Bench const& bench, std::vector<WatchedCore> const& watched,
                 Dump::RowSink const& take, QStringList& warnings)
{
    for (WatchedCore const& core : watched)
        checkClock(bench, core);
    QString warning;
    QString error;
    if (!Simulator::streamStimulus(bench, watched, take, warning, error))
        throw invalid(error);
    if (!warning.isEmpty())
        warnings << warning;
}

/// The cores as they were built: the bench tells of them, else the configuration itself.
std::vector<BuiltCore> builtCores(Bench const& bench, Capture const& capture)
{
    std::vector<BuiltCore> built;
    QString error;
    if (!bench.design.isEmpty()) {
        if (!Simulator::readStandardDesign(bench.design, built, error))
            throw invalid(error);
        return built;
    }
    for (SxCore const* core : capture.cores()) {
        built.emplace_back();
        if (!Simulator::buildCore(*core, built.back(), error))
            throw invalid(QStringLiteral("core %1: %2").arg(core->index).arg(error));
    }
    return built;
}

/// A Standard configuration in a simulated chip, without its samples.
class ProgrammedChip
{
public:
    ProgrammedChip(std::vector<BuiltCore> const& built, QString const& device)
        : m_chip(built, tablesFor(built), Simulator::takesOneMore(device))
    {
        m_chip.powerUp();
    }

    /// Sends the words of a run. Gives the core that has taken them.
    StandardCore const& program(SxCore const& core, QString const& device, int fileKind)
    {
        for (QBitArray const& word : generateRegisterBit(&core, device, fileKind))
            m_chip.write(word);
        forEachExpressionTable(&core, [this](QList<QBitArray> const& words) {
            for (QBitArray const& word : words)
                m_chip.write(word);
        });
        if (!m_chip.selected())
            throw invalid(QStringLiteral("the design has no core %1").arg(core.index));
        return *m_chip.selected();
    }

private:
    static std::vector<Dump::SampleTable> tablesFor(std::vector<BuiltCore> const& built)
    {
        std::vector<Dump::SampleTable> tables;
        for (BuiltCore const& core : built)
            tables.emplace_back(core.signalNames.size());
        return tables;
    }

    StandardChip m_chip;
};

/// What the core's expressions are called: those of a static one are part of its design.
QStringList expressionsOf(BuiltCore const& built, SxCore const& core)
{
    if (built.isDynamic)
        return core.expressions.isEmpty() ? QStringList{QStringLiteral("(none, always true)")}
                                          : core.expressions;
    return built.expressions.empty() ? QStringList{QStringLiteral("(none, always true)")}
                                     : built.expressionTexts;
}

/// What of a configuration the design leaves out.
QStringList differences(BuiltCore const& built, SxCore const& core)
{
    QStringList texts;
    QString const name = QStringLiteral("core %1: ").arg(core.index);
    for (MatchUnit const* unit : core.enabledMatchUnits()) {
        int const place =
            unit->index < BuiltCore::Units && unit->index >= 0 ? built.units[unit->index].port : -1;
        if (!unit->trigger)
            continue;
        QStringList wanted;
        for (SignalItem const& item : unit->trigger->singleSignals())
            wanted << item.name;
        QStringList wired;
        if (place >= 0) {
            for (int const position : built.ports[std::size_t(place)].positions)
                wired << built.signalNames.at(position);
        }
        if (!wanted.isEmpty() && wanted != wired)
            texts << name + QStringLiteral("in the design M%1 watches %2")
                                .arg(unit->index)
                                .arg(wired.isEmpty() ? QStringLiteral("nothing")
                                                     : wired.join(QStringLiteral(", ")));
    }
    if (!built.isDynamic && built.expressionTexts != core.expressions)
        texts << name + QStringLiteral("the design was built with other expressions: %1")
                            .arg(built.expressionTexts.join(QStringLiteral(", ")));
    return texts;
}

Explanations explainStandard(ExplainSettings const& settings, Bench const& bench,
                             Capture const& capture)
{
    Explanations told;
    QList<int> const places = placesOf(capture, settings.cores);
    told.warnings = apply(settings.overrides, capture, places) + checkCores(capture, places);
    std::vector<BuiltCore> const built = builtCores(bench, capture);
    ProgrammedChip chip(built, bench.device);
    bool const isSession =
        settings.configuration.endsWith(QLatin1String(".rsx"), Qt::CaseInsensitive);
    std::vector<StandardCore const*> chosen;
    for (int const place : places)
        chosen.push_back(&chip.program(*capture.cores().at(place), settings.device,
                                       isSession ? FileKindRsx : FileKindVek));
    std::vector<std::unique_ptr<TriggerWatch>> watches;
    std::vector<WatchedCore> watched;
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        SxCore const& core = *capture.cores().at(places.at(int(i)));
        auto const port = [&core](int unit) -> TriggerPort const* {
            MatchUnit const* const described = core.matchUnit(unit);
            return described ? described->trigger : nullptr;
        };
        told.warnings << differences(chosen[i]->built(), core);
        watched.push_back({chosen[i]->built().signalNames, chosen[i]->built().sampleClock});
        watches.push_back(
            std::make_unique<TriggerWatch>(*chosen[i], chosen[i]->captureSetup(), port));
    }
    auto const take = [&watches](int i, quint64 const* row) {
        watches[std::size_t(i)]->take(row);
        return true;
    };
    if (settings.capture.isEmpty())
        showSamples(bench, watched, take, told.warnings);
    for (std::size_t i = 0; !settings.capture.isEmpty() && i < watched.size(); ++i)
        showCapture(
            settings.capture, settings.configuration, capture.cores().at(places.at(int(i)))->index,
            watched[i], [&take, i](quint64 const* row) { take(int(i), row); }, told.warnings);
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        SxCore const& core = *capture.cores().at(places.at(int(i)));
        told.cores << explanationOf(*watches[i], expressionsOf(chosen[i]->built(), core));
        told.cores.back().title = QStringLiteral("core %1").arg(core.index);
        told.cores.back().json.insert(QStringLiteral("core"), core.index);
    }
    return told;
}

/// There is nothing to wait for: what can go wrong is the stimulus alone.
Explanations explainLite(ExplainSettings const& settings, Bench const& bench,
                         Capture const& capture)
{
    apply(settings.overrides, capture, placesOf(capture, settings.cores));
    checkCores(capture, {0});
    if (!settings.capture.isEmpty())
        throw Failure{Status::Usage, QStringLiteral("--capture: a Lite core has no trigger")};
    QString const design = bench.design.isEmpty() ? settings.configuration : bench.design;
    Simulator::BuiltLiteCore core;
    QString error;
    if (!Simulator::readLiteDesign(design, bench.device, core, error))
        throw invalid(error);
    Explanations told;
    qint64 samples = 0;
    auto const count = [&samples](int, quint64 const*) { return ++samples > 0; };
    showSamples(bench, {{core.signalNames, core.sampleClock}}, count, told.warnings);
    if (samples < core.amount)
        told.warnings << QStringLiteral("the stimulus has %1 samples, the core captures %2")
                             .arg(samples)
                             .arg(core.amount);
    Explanation explanation;
    explanation.title = QStringLiteral("lite core");
    explanation.fires = true;
    explanation.sentence = QStringLiteral("A Lite core has neither match units nor expressions: it "
                                          "captures %1 samples as soon as it is armed.")
                               .arg(core.amount);
    explanation.json = {{QStringLiteral("core"), 0},
                        {QStringLiteral("mode"), QStringLiteral("Lite")},
                        {QStringLiteral("samples"), samples},
                        {QStringLiteral("fires"), true},
                        {QStringLiteral("sentence"), explanation.sentence}};
    told.cores << explanation;
    return told;
}

} // namespace

Explanations explain(ExplainSettings const& settings)
{
    Capture capture;
    openConfiguration(settings.configuration, capture);
    Bench const bench = benchOf(settings);
    return capture.liteCore() ? explainLite(settings, bench, capture)
                              : explainStandard(settings, bench, capture);
}

QString sentenceOf(Explanations const& told)
{
    QStringList sentences;
    for (Explanation const& core : told.cores)
        sentences << (told.cores.size() > 1
                          ? QStringLiteral("%1: %2").arg(core.title, core.sentence)
                          : core.sentence);
    return sentences.join(QLatin1Char('\n'));
}

QString textOf(Explanations const& told)
{
    QStringList lines;
    for (Explanation const& core : told.cores) {
        qint64 const samples = qint64(core.json.value(QStringLiteral("samples")).toDouble());
        lines << QStringLiteral("%1: %2 samples").arg(core.title).arg(samples);
        for (QString const& line : core.lines)
            lines << QStringLiteral("  ") + line;
    }
    lines << sentenceOf(told);
    return lines.join(QLatin1Char('\n'));
}

} // namespace VEK::Cli
