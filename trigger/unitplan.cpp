#include "trigger/unitplan.h"

#include "image/expression.h"
#include "trigger/binding.h"
#include "trigger/trigger.h"

#include <algorithm>

namespace VEK {

using Trigger::BoundTrigger;
using Trigger::Leaf;
using Trigger::LeafGroup;

namespace {

/// The signals of a port that watches these nets: a bus where they are just one.
QList<SignalItem> itemsFor(QStringList const& nets, SxCore const& core)
{
    QList<SignalItem> items;
    for (SignalItem const& item : core.dataSignalList) {
        QStringList names;
        for (SignalItem const& single : flatSignals({item}))
            names << single.name;
        if (names == nets)
            return {item};
    }
    for (SignalItem const& single : core.dataSignals())
        if (nets.contains(single.name))
            items << single;
    std::sort(items.begin(), items.end(), [&nets](SignalItem const& a, SignalItem const& b) {
        return nets.indexOf(a.name) < nets.indexOf(b.name);
    });
    return items;
}

MatchType typeFor(Leaf const& leaf)
{
    if (!leaf.isNumber)
        return leaf.needsEdges() ? MatchBasicEdges : MatchBasic;
    bool const isRange = leaf.func == FuncInRange || leaf.func == FuncNotInRange;
    return isRange ? MatchRange : MatchExtended;
}

/// Bits of a counter that can count so far.
int counterWidthFor(int count)
{
    int width = 1;
    while (width < 16 && (1 << width) < count)
        ++width;
    return width;
}

class Planner
{
public:
    explicit Planner(SxCore& core) : m_core(core) {}

    /// One that takes any value.
    void addConstant() { addUnit(Leaf(), {m_core.dataSignals().first().name}, false); }

    /// False when the core has no unit or port left.
    bool add(LeafGroup const& group, QVector<Leaf> const& leaves)
    {
        QStringList nets;
        bool needsEdges = false;
        for (int const place : group.leaves) {
            for (QString const& net : leaves.at(place).nets)
                if (!nets.contains(net))
                    nets << net;
            needsEdges = needsEdges || leaves.at(place).needsEdges();
        }
        for (int const place : group.leaves)
            if (!addUnit(leaves.at(place), nets, needsEdges))
                return false;
        return true;
    }

private:
    TriggerPort* portFor(QStringList const& nets)
    {
        for (TriggerPort* port : qAsConst(m_core.triggers)) {
            QStringList wired;
            for (SignalItem const& item : port->singleSignals())
                wired << item.name;
            if (wired.isEmpty())
                port->signalList = itemsFor(nets, m_core);
            if (wired.isEmpty() || wired == nets)
                return port;
        }
        return nullptr;
    }

    bool addUnit(Leaf const& leaf, QStringList const& nets, bool needsEdges)
    {
        MatchUnit* const unit = m_core.matchUnit(m_units);
        TriggerPort* const port = unit ? portFor(nets) : nullptr;
        if (!port)
            return false;
        ++m_units;
        unit->enabled = true;
        unit->trigger = port;
        unit->matchType = needsEdges && !leaf.isNumber ? MatchBasicEdges : typeFor(leaf);
        unit->counterEnable = leaf.isCounted();
        if (leaf.isCounted())
            unit->counterWidth = counterWidthFor(leaf.count);
        return true;
    }

    SxCore& m_core;
    int m_units = 0;
};

/// Tests that one unit does leave others without work.
void dropIdleUnits(SxCore& core)
{
    for (MatchUnit* unit : qAsConst(core.matchUnits)) {
        QString const name = QStringLiteral("M%1").arg(unit->index);
        bool const isNamed =
            std::any_of(core.expressions.begin(), core.expressions.end(),
                        [&name](QString const& text) { return tokensOf(text).contains(name); });
        if (!isNamed)
            *unit = MatchUnit(unit->core, unit->index);
    }
}

} // namespace

QList<TriggerError> planUnits(QString const& text, SxCore& core)
{
    TriggerSyntax const syntax = parseTrigger(text);
    if (!syntax.isOk())
        return syntax.errors;
    BoundTrigger const bound = Trigger::bindTrigger(syntax, core);
    if (!bound.errors.isEmpty())
        return bound.errors;
    Planner planner(core);
    core.expressionType = ExpressionDynamic;
    for (Trigger::Formula const& step : bound.steps) {
        for (LeafGroup const& group : Trigger::groupsOf(step, bound.leaves))
            if (!planner.add(group, bound.leaves))
                return {{0, text.size(),
                         QStringLiteral("this takes more than %1 units").arg(CoreUnitCount)}};
        core.expressions << QStringLiteral("M0"); // a step's place; the text comes with compiling
    }
    if (core.enabledMatchUnits().isEmpty()) // "always" takes one all the same
        planner.addConstant();
    CompiledTrigger const compiled = compileTrigger(text, core);
    if (!compiled.isOk())
        return compiled.errors;
    applyTrigger(compiled, core);
    core.expressionEnabled.clear();
    dropIdleUnits(core);
    if (core.expressions.size() > 1)
        core.expressionType = ExpressionStatic;
    return {};
}

} // namespace VEK
