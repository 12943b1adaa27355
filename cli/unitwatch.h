#pragma once

#include "cli/matchwords.h"

namespace VEK::Cli {

/// How often something was so, with its first and last sample.
struct Sighting
{
    qint64 count = 0;
    qint64 first = -1;
    qint64 last = -1;

    void add(qint64 sample)
    {
        first = count++ ? first : sample;
        last = sample;
    }
    /// Takes in what another one has seen.
    void add(Sighting const& other);
};

/// The values that a group of signals took: each one while they are few, else their bounds.
class ValueSet
{
public:
    static constexpr std::size_t MaxValues = 8;

    void add(quint64 value);
    /// "0x10, 0x11 and 0x12", or "more than 8 values from 0x00 to 0xFF".
    QString text(int width) const;
    /// In ascending order; empty when they are too many.
    std::vector<quint64> values() const;
    quint64 lowest() const { return m_lowest; }
    quint64 highest() const { return m_highest; }

private:
    std::vector<quint64> m_values;
    quint64 m_lowest = ~quint64(0);
    quint64 m_highest = 0;
    quint64 m_last = 0;
    bool m_hasMore = false;
};

/// How near a match unit came that has not matched yet. The memory that it takes is bounded.
class UnitWatch
{
public:
    explicit UnitWatch(MatchWords const& text);

    /// A sample on which the unit did not match.
    void take(qint64 sample, Simulator::MatchLogic const& logic, Simulator::PortWires const& port);

    /// Samples of an "equal" unit on which the same terms failed, no more than on any other sample.
    struct Miss
    {
        quint64 terms = 0;          ///< The ones that failed; bit i is term i.
        Sighting seen;              ///< On how many samples just these failed.
        int bits = 0;               ///< That were wrong on the nearest of them...
        qint64 sample = -1;         ///< ...which is this one.
        std::vector<quint64> wrong; ///< Its wrong positions.
        std::vector<quint64> now;
        std::vector<quint64> before;
    };
    /// A value beside the bounds of a comparing unit.
    struct Extreme
    {
        qint64 sample = -1; ///< -1: there was none.
        std::vector<quint64> value;
    };

    /// The commonest first.
    std::vector<Miss> misses() const;
    /// On how many samples each term held.
    std::vector<qint64> const& held() const { return m_held; }
    Extreme const& below() const { return m_below; }
    Extreme const& above() const { return m_above; }
    ValueSet const& values(std::size_t group) const { return m_values[group]; }

private:
    void takeEqual(qint64 sample, Simulator::MatchLogic const& logic,
                   Simulator::PortWires const& port);
    void takeMiss(qint64 sample, quint64 failing, Simulator::PortWires const& port);
    void takeNumber(qint64 sample, Simulator::MatchLogic const& logic,
                    Simulator::PortWires const& port);

    MatchWords const& m_text;
    std::vector<qint64> m_held;
    std::vector<quint64> m_wrong; ///< Of the sample that is looked at.
    std::vector<quint64> m_seen;  ///< What the port showed before; empty at first.
    int m_fewest;                 ///< Failing terms of `m_misses`.
    std::vector<Miss> m_misses;
    Extreme m_below;
    Extreme m_above;
    std::vector<ValueSet> m_values;
};

} // namespace VEK::Cli
