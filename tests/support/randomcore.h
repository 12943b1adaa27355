#pragma once

#include "model/capturecore.h"

#include <QRandomGenerator>

#include <memory>

/// Standard cores with anything in them that the model can hold, for tests that compare two ways
/// of reading a core.
namespace randomcore {

/// Reproducible choices on top of a seeded generator.
class Draw
{
public:
    explicit Draw(quint32 seed) : m_random(seed) {}

    int below(int n) { return m_random.bounded(n); }
    bool chance(int percent) { return below(100) < percent; }
    QChar oneOf(QString const& characters) { return characters.at(below(characters.size())); }
    int from(QList<int> const& numbers) { return numbers.at(below(numbers.size())); }

private:
    QRandomGenerator m_random;
};

inline VEK::SignalItem signalItem(Draw& draw, bool captured, bool mayBeBus = true)
{
    VEK::SignalItem item;
    item.captureEnable = captured;
    item.name = QStringLiteral("top/u%1/n<%2>&").arg(draw.below(9)).arg(draw.below(99));
    item.text = draw.chance(40) ? "\u00e9 \"x\" <y" : "";
    if (mayBeBus && draw.chance(30)) {
        for (int i = draw.chance(10) ? 60 : 1 + draw.below(5); i > 0; --i)
            item.signalList.append(signalItem(draw, captured, false));
    }
    return item;
}

inline void fillUnit(Draw& draw, VEK::MatchUnit& unit)
{
    unit.enabled = draw.chance(60);
    unit.matchType = VEK::MatchType(draw.below(8));
    unit.func = VEK::MatchFunc(draw.chance(90) ? draw.below(8) : draw.below(100) - 50);
    unit.counterEnable = draw.chance(40);
    unit.counterWidth = draw.below(draw.chance(90) ? 20 : 90);
    unit.counter = draw.chance(90) ? draw.below(5000) : draw.below(INT_MAX) - INT_MAX / 2;
    unit.continuous = draw.chance(50);
    for (int i = draw.below(12); i > 0; --i) {
        unit.value0 += draw.oneOf("01XRFBN01r?");
        unit.value1 += draw.chance(70) ? QString(draw.oneOf("01X")) : QString();
    }
    if (draw.chance(80))
        unit.trigger = unit.core->getTrigger(draw.below(VEK::CoreUnitCount));
}

/// A core as a file may describe it; no expressions.
inline std::unique_ptr<VEK::SxCore> core(Draw& draw)
{
    auto core = std::make_unique<VEK::SxCore>(draw.below(40));
    core->sampleClock = "top/clk";
    core->trigType = draw.below(3);
    core->expressionType = draw.below(2);
    core->exImplementation = core->expressionType ? draw.below(4) : 0;
    core->implementation = draw.below(4);
    core->storageDepth = 1024 << draw.below(4);
    core->captureAmount = draw.below(5000) - (draw.chance(10) ? 5000 : 0);
    core->triggerPos = draw.below(6000);
    core->windowNum = draw.below(9);
    core->moduleName = draw.chance(50) ? "top" : "";
    core->captureInitDataEnabled = draw.chance(50);
    for (int i = draw.below(12); i > 0; --i) {
        core->allSignalList.append(signalItem(draw, draw.chance(70)));
        if (core->allSignalList.last().captureEnable)
            core->dataSignalList.append(core->allSignalList.last());
    }
    for (VEK::TriggerPort* port : qAsConst(core->triggers)) {
        for (int i = draw.chance(50) ? draw.below(5) : 0; i > 0; --i)
            port->signalList.append(signalItem(draw, true));
    }
    for (VEK::MatchUnit* unit : qAsConst(core->matchUnits))
        fillUnit(draw, *unit);
    return core;
}

} // namespace randomcore
