#include "trigger/staticfit.h"

#include <algorithm>

namespace VEK::Trigger {
namespace {

enum class Truth { No, Yes, Open };

Truth opposite(Truth truth)
{
    return truth == Truth::Open ? truth : truth == Truth::Yes ? Truth::No : Truth::Yes;
}

Truth truthOf(Formula const& formula, std::function<Truth(int)> const& valueOf)
{
    switch (formula.kind) {
    case Formula::False:
    case Formula::True:
        return formula.kind == Formula::True ? Truth::Yes : Truth::No;
    case Formula::Variable:
        return valueOf(formula.variable);
    case Formula::Not:
        return opposite(truthOf(formula.children.front(), valueOf));
    default:
        break;
    }
    Truth result = formula.kind == Formula::And ? Truth::Yes : Truth::No;
    for (Formula const& child : formula.children) {
        Truth const truth = truthOf(child, valueOf);
        if (formula.kind == Formula::Xor) {
            if (truth == Truth::Open)
                return truth;
            result = truth == Truth::Yes ? opposite(result) : result;
        } else if (truth == (formula.kind == Formula::And ? Truth::No : Truth::Yes)) {
            return truth; // whatever the others are
        } else if (truth == Truth::Open) {
            result = truth;
        }
    }
    return result;
}

} // namespace

bool StaticFit::run(std::vector<Formula> const& wanted, QVector<Demand> const& demands)
{
    m_wanted = wanted;
    m_demands = demands;
    m_roles.clear();
    return place(0);
}

/// A demand that no unit has comes first, one that several need last.
QVector<Role> StaticFit::rolesOf(int unit) const
{
    QVector<Role> seated;
    QVector<Role> roles;
    for (int i = 0; i < m_demands.size(); ++i) {
        if (!m_demands.at(i).candidates.contains(unit))
            continue;
        bool const isSeated = std::any_of(m_roles.begin(), m_roles.end(),
                                          [i](Role const& role) { return role.demand == i; });
        QVector<Role>& list = isSeated ? seated : roles;
        list.append({unit, i, false});
        if (!m_demands.at(i).leaf.isCounted())
            list.append({unit, i, true});
    }
    roles << Role{unit, Role::Always, false} << Role{unit, Role::Never, false};
    roles += seated;
    std::stable_partition(roles.begin(), roles.end(),
                          [this](Role const& role) { return m_isKept(role, m_demands); });
    return roles;
}

bool StaticFit::place(int at)
{
    if (++m_effort > MaxEffort || !mayBeRight())
        return false;
    if (at == m_units.size())
        return true;
    for (Role const& role : rolesOf(m_units.at(at))) {
        m_roles.append(role);
        if (place(at + 1))
            return true;
        m_roles.removeLast();
    }
    return false;
}

/// For all that the demands can be, units without a role being open. With all roles it is right.
bool StaticFit::mayBeRight() const
{
    for (int row = 0; row < 1 << m_demands.size(); ++row) {
        auto const demand = [&](int i) -> bool { return row >> i & 1; };
        auto const output = [&](int unit) {
            for (Role const& role : m_roles) {
                if (role.unit != unit)
                    continue;
                bool const isTrue = role.demand < 0 ? role.demand == Role::Always
                                                    : demand(role.demand) != role.isOpposite;
                return isTrue ? Truth::Yes : Truth::No;
            }
            return Truth::Open;
        };
        for (std::size_t step = 0; step < m_built.size(); ++step) {
            Truth const truth = truthOf(m_built[step], output);
            if (truth != Truth::Open && (truth == Truth::Yes) != evaluate(m_wanted[step], demand))
                return false;
        }
    }
    return true;
}

} // namespace VEK::Trigger
