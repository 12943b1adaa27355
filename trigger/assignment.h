#pragma once

#include "trigger/binding.h"

#include <functional>

namespace VEK::Trigger {

/// Whether the unit, which is bound to a port, can do it: its port, type and counter are built.
bool canTest(MatchUnit const& unit, Leaf const& leaf);

/// What keeps all of the given units from a leaf: which port, type or counter it would need.
QString whatIsMissing(Leaf const& leaf, QList<MatchUnit*> const& units, SxCore const& core);

/// A test for one unit, joined from leaves that it can do at once.
struct Demand
{
    Leaf leaf;
    QVector<int> candidates; ///< Units by number, the least able first.
};

/// Which demand a leaf of the text has become a part of, and whether it takes its opposite.
struct Share
{
    int demand = -1;
    bool isOpposite = false;
};

struct Demands
{
    QVector<Demand> demands;
    QVector<Share> shares; ///< By leaf.
};

/// A unit for each demand, all different; empty when there are not enough.
QVector<int> matching(QVector<Demand> const& demands);

/// Looks for a way to join the leaves of `groups` that `accept` takes, those with the most joined
/// first. Only ways for which there are enough units are offered.
class DemandSearch
{
public:
    using Accept = std::function<bool(Demands const&)>;

    DemandSearch(QVector<Leaf> const& leaves, QList<MatchUnit*> const& units);

    bool run(QVector<LeafGroup> const& groups, Accept const& accept);
    /// It was given up before all ways were tried.
    bool isGivenUp() const { return m_effort > MaxEffort; }

private:
    static constexpr int MaxEffort = 5000;

    struct Cluster
    {
        Leaf leaf;
        QVector<int> candidates;
        int group = 0;
        QVector<int> members; ///< Leaves.
    };

    bool place(int group, int member);
    Demands demandsOf() const;
    QVector<int> candidatesOf(Leaf const& leaf) const;

    QVector<Leaf> const& m_leaves;
    QList<MatchUnit*> const& m_units;
    QVector<LeafGroup> m_groups;
    Accept m_accept;
    QVector<Cluster> m_clusters;
    int m_effort = 0;
};

} // namespace VEK::Trigger
