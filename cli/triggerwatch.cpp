#include "cli/triggerwatch.h"

namespace VEK::Cli {

using Simulator::CaptureSetup;
using Simulator::StandardCore;
using Simulator::TriggerLogic;
using Simulator::TruthTable;

void CombinationCounts::clear()
{
    for (unsigned const combination : m_used)
        m_seen[combination] = Sighting();
    m_used.clear();
}

Sighting CombinationCounts::with(unsigned mask) const
{
    Sighting all;
    for (unsigned const combination : m_used)
        if ((combination & mask) == mask)
            all.add(m_seen[combination]);
    return all;
}

Sighting CombinationCounts::with(TruthTable const& table) const
{
    Sighting all;
    for (unsigned const combination : m_used)
        if (table.at(combination))
            all.add(m_seen[combination]);
    return all;
}

TriggerWatch::TriggerWatch(StandardCore const& core, CaptureSetup const& setup,
                           std::function<TriggerPort const*(int unit)> const& port)
    : m_setup(setup), m_flow(setup), m_trigger(core.trigger())
{
    Simulator::BuiltCore const& built = core.built();
    for (TriggerLogic::Unit const& unit : m_trigger.units()) {
        QStringList names;
        int const place = built.units[unit.number].port;
        for (int const position : built.ports[std::size_t(place)].positions)
            names << built.signalNames.at(position);
        m_units.push_back(
            {MatchWords(unit.logic, groupsOf(names, port(unit.number)), names.size()), {}, {}});
        m_unmatched |= unit.combination;
    }
    for (UnitStory& unit : m_units) // where they stay
        unit.watch = std::make_unique<UnitWatch>(unit.text);
}

void TriggerWatch::take(quint64 const* row)
{
    if (m_samples == 0)
        m_trigger.restart(row); // the first sample of all has no edges
    bool const isLooking = !m_flow.isDone() && m_flow.isWaiting() && m_flow.isLooking();
    quint64 const stage = m_trigger.stage();
    bool const fires = m_trigger.sample(row, isLooking);
    noteUnits();
    noteStep(stage, fires, isLooking);
    ++m_samples;
    if (m_flow.isDone() || !m_flow.take(fires))
        return;
    m_trigger.restart(row);
    m_firedInStep.clear();
    if (!m_flow.isDone())
        m_steps.clear();
}

void TriggerWatch::noteUnits()
{
    m_matched.add(m_trigger.matched(), m_samples);
    m_fired.add(m_trigger.fired(), m_samples);
    std::vector<TriggerLogic::Unit> const& units = m_trigger.units();
    for (std::size_t i = 0; i < units.size(); ++i) {
        TriggerLogic::Unit const& unit = units[i];
        if (m_unmatched & unit.combination) {
            if (m_trigger.matched() & unit.combination) {
                m_unmatched &= ~unit.combination;
                m_units[i].watch.reset();
            } else {
                m_units[i].watch->take(m_samples, unit.logic,
                                       m_trigger.ports()[std::size_t(unit.port)]);
            }
        }
        if (!unit.logic.hasCounter())
            continue;
        bool const fires = m_trigger.fired() & unit.combination;
        quint64 const counted = fires ? unit.logic.needed() : unit.logic.counted();
        Counter& counter = m_units[i].counter;
        if (counted > counter.highest)
            counter = {counted, m_samples};
    }
}

void TriggerWatch::noteStep(quint64 stageBefore, bool fires, bool isLooking)
{
    if (fires)
        m_triggers.push_back(m_samples);
    if (m_trigger.stage() != stageBefore) {
        m_steps.push_back(m_samples);
        m_firedInStep.clear();
    } else if (isLooking) {
        m_firedInStep.add(m_trigger.fired(), m_samples);
    }
}

} // namespace VEK::Cli
