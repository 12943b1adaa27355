#pragma once

#include "simulator/matchlogic.h"

#include <functional>
#include <map>
#include <vector>

namespace VEK::Simulator {

/// The tables of a dynamic core, by expression number; one that was never written is false.
using TableMap = std::map<unsigned, TruthTable>;

/// What the registers of a core say about its trigger.
struct TriggerSetup
{
    std::function<QBitArray(unsigned address)> field; ///< A register's content, zeros by default.
    unsigned usedUnits = 0;           ///< Of a dynamic core: a bit for each unit that was set up.
    TableMap const* tables = nullptr; ///< Of a dynamic core.
    quint64 stages = 1;               ///< Expressions that must fire one after the other.
};

/// The match units of a core and the sequence of its expressions, sample by sample.
class TriggerLogic
{
public:
    /// The core and the tables must outlive this object.
    TriggerLogic(BuiltCore const& core, TriggerSetup const& setup);

    /// Begins with the first stage and full counters; `before` is the row of the sample before the
    /// next one.
    void restart(quint64 const* before);

    /// Takes one sample; true when the last stage fires on it. While not looking only the units
    /// and their counters run.
    bool sample(quint64 const* row, bool isLooking);

    struct Unit
    {
        MatchLogic logic;
        int number;           ///< Of the unit in its core.
        int port;             ///< Place in `ports`.
        unsigned combination; ///< Bit of the unit in a table's index.
    };

    /// The units that take part, in ascending order of their numbers, and what they watch.
    std::vector<Unit> const& units() const { return m_units; }
    std::vector<PortWires> const& ports() const { return m_ports; }
    /// Of the last sample: units that matched, by their bit in a table's index, and the index.
    unsigned matched() const { return m_matched; }
    unsigned fired() const { return m_fired; }
    /// The stage that is waited for, and how many there are.
    quint64 stage() const { return m_stage; }
    quint64 stages() const { return m_stages; }
    /// The table of a stage; null: it never fires.
    TruthTable const* table(quint64 stage) const;
    bool alwaysFires() const { return m_alwaysFires; }

private:
    void addUnit(int number, unsigned combination, TriggerSetup const& setup);
    void enterStage(quint64 stage);

    BuiltCore const& m_core;
    TableMap const* m_tables;
    quint64 m_stages;
    std::vector<Unit> m_units;
    std::vector<PortWires> m_ports;
    std::vector<int> m_portPlaces; ///< Place in `m_ports` of each built port, or -1.
    unsigned m_matched = 0;
    unsigned m_fired = 0;
    quint64 m_stage = 0;
    TruthTable const* m_table = nullptr; ///< Of the stage; null: it never fires.
    bool m_alwaysFires = false;          ///< A static core that was built without an expression.
};

} // namespace VEK::Simulator
