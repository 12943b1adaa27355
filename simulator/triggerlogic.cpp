#include "simulator/triggerlogic.h"

#include "image/registermap.h"

namespace VEK::Simulator {

TriggerLogic::TriggerLogic(BuiltCore const& core, TriggerSetup const& setup)
    : m_core(core), m_tables(setup.tables), m_stages(setup.stages),
      m_portPlaces(core.ports.size(), -1),
      m_alwaysFires(!core.isDynamic && core.expressions.empty())
{
    unsigned rank = 0;
    for (int i = 0; i < BuiltCore::Units; ++i) {
        if (!core.isDynamic) {
            if (core.expressionUnits >> i & 1)
                addUnit(i, 1u << i, setup);
        } else if (setup.usedUnits >> i & 1) {
            addUnit(i, 1u << rank++, setup);
        }
    }
}

/// A unit that was not built keeps its bit of the index, which is then always 0.
void TriggerLogic::addUnit(int number, unsigned combination, TriggerSetup const& setup)
{
    BuiltUnit const& built = m_core.units[number];
    if (built.port < 0)
        return;
    int& place = m_portPlaces[std::size_t(built.port)];
    if (place < 0) {
        place = int(m_ports.size());
        m_ports.emplace_back(m_core.ports[std::size_t(built.port)]);
    }
    unsigned const base = Register::MatchUnitBase + unsigned(number) * Register::MatchUnitStep;
    MatchLogic::Registers const registers{
        setup.field(base + Register::MatchUnitA), setup.field(base + Register::MatchUnitB),
        setup.field(base + Register::MatchUnitC), setup.field(base + Register::MatchUnitControl),
        setup.field(base + Register::MatchUnitCounter)};
    int const width = m_ports[std::size_t(place)].width();
    m_units.push_back({MatchLogic(registers, width, built.hasCounter), number, place, combination});
}

void TriggerLogic::restart(quint64 const* before)
{
    for (Unit& unit : m_units)
        unit.logic.reload();
    for (PortWires& port : m_ports)
        port.sample(before);
    enterStage(0);
}

bool TriggerLogic::sample(quint64 const* row, bool isLooking)
{
    for (PortWires& port : m_ports)
        port.sample(row);
    unsigned matched = 0;
    unsigned fired = 0;
    for (Unit& unit : m_units) {
        bool const isMatch = unit.logic.matches(m_ports[std::size_t(unit.port)]);
        matched |= isMatch ? unit.combination : 0;
        fired |= unit.logic.count(isMatch) ? unit.combination : 0;
    }
    m_matched = matched;
    m_fired = fired;
    if (!isLooking)
        return false;
    if (m_alwaysFires)
        return true;
    if (!m_table || !m_table->at(fired))
        return false;
    enterStage(m_stage + 1);
    return m_stage == m_stages;
}

void TriggerLogic::enterStage(quint64 stage)
{
    m_stage = stage;
    m_table = table(stage);
}

TruthTable const* TriggerLogic::table(quint64 stage) const
{
    if (!m_core.isDynamic) {
        bool const isBuilt = stage < m_core.expressions.size();
        return isBuilt ? &m_core.expressions[std::size_t(stage)] : nullptr;
    }
    if (!m_tables)
        return nullptr;
    auto const table = m_tables->find(unsigned(stage));
    return table == m_tables->end() ? nullptr : &table->second;
}

} // namespace VEK::Simulator
