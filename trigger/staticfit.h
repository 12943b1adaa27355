#pragma once

#include "trigger/assignment.h"

#include <functional>

namespace VEK::Trigger {

/// What one unit of a static core does: a demand or its opposite, or nothing that changes.
struct Role
{
    static constexpr int Always = -1;
    static constexpr int Never = -2;

    int unit = 0;
    int demand = Always; ///< Or Always or Never.
    bool isOpposite = false;
};

/// Gives the units of built expressions such roles that the expressions mean what a text says.
class StaticFit
{
public:
    /// Whether a unit has that role already. Those are tried first: nothing changes without need.
    using IsKept = std::function<bool(Role const&, QVector<Demand> const&)>;

    /// `built` are formulas over units, `units` all that they name.
    StaticFit(std::vector<Formula> const& built, QVector<int> const& units, IsKept const& isKept)
        : m_built(built), m_units(units), m_isKept(isKept)
    {}

    /// `wanted` are formulas over demands, as many as there are built ones.
    bool run(std::vector<Formula> const& wanted, QVector<Demand> const& demands);
    QVector<Role> const& roles() const { return m_roles; }
    bool isGivenUp() const { return m_effort > MaxEffort; }

private:
    static constexpr int MaxEffort = 20000;

    QVector<Role> rolesOf(int unit) const;
    bool place(int at);
    bool mayBeRight() const;

    std::vector<Formula> const& m_built;
    QVector<int> m_units;
    IsKept m_isKept;
    std::vector<Formula> m_wanted;
    QVector<Demand> m_demands;
    QVector<Role> m_roles;
    int m_effort = 0;
};

} // namespace VEK::Trigger
