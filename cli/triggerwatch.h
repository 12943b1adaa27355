#pragma once

#include "cli/unitwatch.h"
#include "simulator/standardcore.h"

#include <functional>
#include <memory>

namespace VEK::Cli {

/// How often each combination of units' outputs was there.
class CombinationCounts
{
public:
    CombinationCounts() : m_seen(std::size_t(1) << Simulator::TruthTable::Units) {}

    void add(unsigned combination, qint64 sample)
    {
        Sighting& seen = m_seen[combination];
        if (seen.count == 0)
            m_used.push_back(combination);
        seen.add(sample);
    }
    void clear();

    std::vector<unsigned> const& combinations() const { return m_used; }
    Sighting const& seen(unsigned combination) const { return m_seen[combination]; }
    /// Those that have all bits of `mask`.
    Sighting with(unsigned mask) const;
    /// Those for which a table is true.
    Sighting with(Simulator::TruthTable const& table) const;

private:
    std::vector<Sighting> m_seen;
    std::vector<unsigned> m_used;
};

/// Runs the trigger of a core over its samples, as the simulated chip does, and notes what its
/// units and expressions did. Samples count from 0. Units are looked at on every sample;
/// expressions step on while the chip waits for a trigger.
class TriggerWatch
{
public:
    /// The core is programmed, and must outlive this object. `port(unit)` describes the port that
    /// a unit watches, or is null.
    TriggerWatch(Simulator::StandardCore const& core, Simulator::CaptureSetup const& setup,
                 std::function<TriggerPort const*(int unit)> const& port);

    void take(quint64 const* row);

    struct Counter
    {
        quint64 highest = 0;
        qint64 sample = -1; ///< On which it was reached first.
    };
    struct UnitStory
    {
        MatchWords text;
        std::unique_ptr<UnitWatch> watch; ///< Of a unit that has not matched; else null.
        Counter counter;
    };

    Simulator::TriggerLogic const& trigger() const { return m_trigger; }
    qint64 samples() const { return m_samples; }
    quint32 windows() const { return m_setup.windows; }
    bool isDone() const { return m_triggers.size() == m_setup.windows; }
    /// The trigger's sample of each window that has one.
    std::vector<qint64> const& triggers() const { return m_triggers; }
    /// The samples on which the expressions of the window that waits, or of the last one, fired.
    std::vector<qint64> const& steps() const { return m_steps; }
    /// By place in `trigger().units()`.
    std::vector<UnitStory> const& units() const { return m_units; }

    CombinationCounts const& matched() const { return m_matched; }
    CombinationCounts const& fired() const { return m_fired; }
    /// Outputs since the expression is waited for that has not fired, where it was looked at.
    CombinationCounts const& firedInStep() const { return m_firedInStep; }

private:
    void noteUnits();
    void noteStep(quint64 stageBefore, bool fires, bool isLooking);

    Simulator::CaptureSetup m_setup;
    Simulator::CaptureFlow m_flow;
    Simulator::TriggerLogic m_trigger;
    std::vector<UnitStory> m_units;
    unsigned m_unmatched = 0; ///< Units that have not matched, by their bit in an index.
    qint64 m_samples = 0;
    std::vector<qint64> m_triggers;
    std::vector<qint64> m_steps;
    CombinationCounts m_matched;
    CombinationCounts m_fired;
    CombinationCounts m_firedInStep;
};

} // namespace VEK::Cli
