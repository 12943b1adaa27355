#include "trigger/assignment.h"
#include "trigger/comparison.h"
#include "trigger/staticfit.h"
#include "trigger/trigger.h"

#include <algorithm>

namespace VEK {
namespace {

using namespace Trigger;

bool isUsable(MatchUnit const& unit)
{
    return unit.index >= 0 && unit.index < CoreUnitCount && isInUse(&unit);
}

/// The value of a unit for one condition a bit, its port's first signal leftmost.
QString conditionsFor(Leaf const& leaf, TriggerPort const& port)
{
    QString value;
    for (SignalItem const& item : port.singleSignals())
        value += leaf.bits.value(item.name, QLatin1Char('X'));
    return value;
}

UnitSetting unitSetting(Leaf const& leaf, bool isOpposite, MatchUnit const& unit)
{
    UnitSetting setting;
    setting.unit = unit.index;
    setting.func = leaf.unitFunc(isOpposite);
    setting.value0 = leaf.isNumber ? leaf.value0 : conditionsFor(leaf, *unit.trigger);
    setting.value1 = leaf.value1;
    // one bit's opposite is a value, too, and is what a user would set
    if (!leaf.isNumber && isOpposite && !leaf.isCounted()) {
        Leaf turned = leaf;
        complement(turned);
        setting.func = turned.unitFunc();
        setting.value0 = conditionsFor(turned, *unit.trigger);
    }
    setting.counter = leaf.count;
    setting.continuous = leaf.isCounted() && leaf.inRow;
    return setting;
}

/// Whether a unit does that already.
bool isSet(UnitSetting const& setting, MatchUnit const& unit)
{
    MatchUnit changed = unit;
    setUnit(setting, changed);
    return comparisonOf(changed) == comparisonOf(unit);
}

class Compiler
{
public:
    Compiler(QString const& text, SxCore const& core)
        : m_text(text), m_core(core), m_isStatic(core.expressionType != ExpressionDynamic)
    {}

    CompiledTrigger run()
    {
        TriggerSyntax const syntax = parseTrigger(m_text);
        m_result.errors = syntax.errors;
        if (!m_result.isOk())
            return m_result;
        m_bound = bindTrigger(syntax, m_core);
        m_result.errors = m_bound.errors;
        if (m_result.isOk())
            findUnits();
        if (m_result.isOk())
            checkSteps();
        if (m_result.isOk())
            checkLeaves();
        if (m_result.isOk())
            assign();
        std::sort(m_result.units.begin(), m_result.units.end(),
                  [](UnitSetting const& a, UnitSetting const& b) { return a.unit < b.unit; });
        std::stable_sort(
            m_result.errors.begin(), m_result.errors.end(),
            [](TriggerError const& a, TriggerError const& b) { return a.position < b.position; });
        return m_result;
    }

private:
    void tell(TriggerPlace place, QString const& message)
    {
        m_result.errors.append({place.position, place.length, message});
    }

    void tellAll(QString const& message) { tell({0, m_text.size()}, message); }

    QString quoted(TriggerPlace place) const
    {
        return QLatin1Char('`') + m_text.mid(place.position, place.length) + QLatin1Char('`');
    }

    /// A static core has no use for units that its expressions don't name.
    void findUnits()
    {
        for (QString const& expression : m_core.expressions) {
            std::optional<Formula> const formula = parseUnits(expression);
            if (m_isStatic && !formula) {
                tellAll(QStringLiteral("the core is static, and its expression \"%1\" is not valid")
                            .arg(expression));
                return;
            }
            if (formula)
                m_built.push_back(*formula);
            for (int unit : unitsOf(expression))
                if (!m_builtUnits.contains(unit))
                    m_builtUnits.append(unit);
        }
        std::sort(m_builtUnits.begin(), m_builtUnits.end());
        for (MatchUnit* unit : m_core.matchUnits) {
            if (isUsable(*unit) && (!m_isStatic || m_builtUnits.contains(unit->index)))
                m_units.append(unit);
        }
        for (int unit : m_isStatic ? m_builtUnits : QVector<int>()) {
            MatchUnit const* const used = m_core.matchUnit(unit);
            if (!used || !isUsable(*used))
                tellAll(QStringLiteral("the core is static, and its expressions name M%1, which is "
                                       "not in use")
                            .arg(unit));
        }
    }

    void checkSteps()
    {
        int const count = int(m_bound.steps.size());
        int const built = m_core.expressions.size();
        bool const isAlways = count == 1 && m_bound.steps.front().kind == Formula::True;
        if (m_isStatic && built == 0 && !isAlways)
            tellAll(QStringLiteral("the core is static and has no expression: it always triggers, "
                                   "whatever its units say"));
        else if (m_isStatic && built > 0 && count != built)
            tellAll(
                QStringLiteral("the core is static: it triggers in %1, %2, and this text has %3")
                    .arg(steps(built), m_core.expressions.join(QLatin1String(" then ")),
                         steps(count)));
        else if (!m_isStatic && count > std::max(1, built))
            tell(m_bound.places.at(std::max(1, built)),
                 QStringLiteral("the core has room for %1, as many as its file has expressions")
                     .arg(steps(std::max(1, built))));
    }

    static QString steps(int count)
    {
        return count == 1 ? QStringLiteral("1 step") : QStringLiteral("%1 steps").arg(count);
    }

    QVector<LeafGroup> groups() const
    {
        QVector<LeafGroup> all;
        for (Formula const& step : m_bound.steps)
            all += groupsOf(step, m_bound.leaves);
        return all;
    }

    void checkLeaves()
    {
        for (LeafGroup const& group : groups()) {
            for (int index : group.leaves) {
                Leaf const& leaf = m_bound.leaves.at(index);
                bool const isPossible =
                    std::any_of(m_units.begin(), m_units.end(),
                                [&](MatchUnit const* unit) { return canTest(*unit, leaf); });
                if (!isPossible)
                    tell(leaf.place, quoted(leaf.place) + QStringLiteral(": ") +
                                         whatIsMissing(leaf, m_units, m_core));
            }
        }
    }

    void assign()
    {
        DemandSearch search(m_bound.leaves, m_units);
        auto const accept = [&](Demands const& demands) {
            return m_isStatic ? fitStatic(demands) : fitDynamic(demands);
        };
        if (search.run(groups(), accept))
            return;
        if (m_longStep >= 0) {
            tell(m_bound.places.at(m_longStep),
                 QStringLiteral("the core stops short in an expression this long: use fewer tests, "
                                "or bring them into another form"));
            return;
        }
        QString const effort = search.isGivenUp() || m_isGivenUp
                                   ? QStringLiteral(" (the search was given up: there are too many "
                                                    "ways to try them all)")
                                   : QString();
        if (!tellCrowd(effort))
            tellBuilt(effort);
    }

    std::vector<Formula> stepsOver(Demands const& demands,
                                   std::function<Formula(int, bool)> const& literal) const
    {
        std::function<Formula(Formula const&)> const replace = [&](Formula const& formula) {
            if (formula.kind == Formula::Variable) {
                Share const share = demands.shares.at(formula.variable);
                return literal(share.demand, share.isOpposite);
            }
            std::vector<Formula> children;
            for (Formula const& child : formula.children)
                children.push_back(replace(child));
            if (formula.kind == Formula::Not)
                return children.front().negated();
            return children.empty() ? formula : Formula::join(formula.kind, children);
        };
        std::vector<Formula> result;
        for (Formula const& step : m_bound.steps)
            result.push_back(replace(step));
        return result;
    }

    bool fitDynamic(Demands const& demands)
    {
        QVector<int> const units = matching(demands.demands);
        std::vector<Formula> const formulas = stepsOver(demands, [&](int demand, bool isOpposite) {
            Formula const unit = Formula::of(units.at(demand));
            return isOpposite ? unit.negated() : unit;
        });
        if (m_units.isEmpty())
            return fitWithoutUnits(formulas);
        QStringList expressions;
        for (std::size_t i = 0; i < formulas.size(); ++i) {
            QString const expression = expressionFor(overUnits(formulas[i]));
            if (expression.isEmpty()) {
                m_longStep = int(i);
                return false;
            }
            expressions.append(expression);
        }
        for (int i = 0; i < units.size(); ++i)
            m_result.units.append(
                unitSetting(demands.demands.at(i).leaf, false, *m_core.matchUnit(units.at(i))));
        int const count = expressions.size();
        for (int i = 0; i < std::max(count, m_core.expressions.size()); ++i) {
            m_result.expressionEnabled.append(i < count);
            if (i >= count)
                expressions.append(m_core.expressions.at(i));
        }
        m_result.expressions = expressions;
        if (count > 1) {
            m_result.notes << QStringLiteral(
                "a sequence of a dynamic core holds in memory only: its file has no place for it");
            m_result.notes << SequenceNote;
        }
        return true;
    }

    /// No table, no test: such a core always triggers.
    bool fitWithoutUnits(std::vector<Formula> const& formulas)
    {
        bool const isAlways = formulas.size() == 1 && formulas.front().kind == Formula::True;
        if (!isAlways)
            tellAll(QStringLiteral("the core has no match unit in use: it always triggers"));
        m_result.expressions = m_core.expressions;
        for (int i = 0; i < m_core.expressions.size(); ++i)
            m_result.expressionEnabled.append(false);
        return true;
    }

    /// A table has at least one unit.
    Formula overUnits(Formula const& formula)
    {
        if (formula.kind > Formula::True)
            return formula;
        Formula const unit = Formula::of(m_units.first()->index);
        Formula::Kind const kind = formula.kind == Formula::True ? Formula::Or : Formula::And;
        return {kind, 0, {unit, unit.negated()}};
    }

    bool fitStatic(Demands const& demands)
    {
        m_result.expressions = m_core.expressions;
        if (m_built.empty())
            return true;
        auto const isKept = [this](Role const& role, QVector<Demand> const& all) {
            return isSet(settingFor(role, all), *m_core.matchUnit(role.unit));
        };
        StaticFit fit(m_built, m_builtUnits, isKept);
        std::vector<Formula> const wanted = stepsOver(demands, [](int demand, bool isOpposite) {
            Formula const variable = Formula::of(demand);
            return isOpposite ? variable.negated() : variable;
        });
        bool const isDone = fit.run(wanted, demands.demands);
        m_isGivenUp = m_isGivenUp || fit.isGivenUp();
        if (!isDone)
            return false;
        for (Role const& role : fit.roles())
            m_result.units.append(settingFor(role, demands.demands));
        if (m_bound.steps.size() > 1)
            m_result.notes << SequenceNote;
        return true;
    }

    UnitSetting settingFor(Role const& role, QVector<Demand> const& demands) const
    {
        Leaf constant; // watches nothing: any value will do
        constant.isNegated = role.demand == Role::Never;
        Leaf const& leaf = role.demand < 0 ? constant : demands.at(role.demand).leaf;
        return unitSetting(leaf, role.isOpposite, *m_core.matchUnit(role.unit));
    }

    /// The first test for which no unit is left. False when there are units for all.
    bool tellCrowd(QString const& effort)
    {
        QVector<LeafGroup> some;
        for (LeafGroup const& group : groups()) {
            some.append(LeafGroup{group.kind, {}});
            for (int index : group.leaves) {
                some.last().leaves.append(index);
                DemandSearch search(m_bound.leaves, m_units);
                if (search.run(some, [](Demands const&) { return true; }))
                    continue;
                Leaf const& leaf = m_bound.leaves.at(index);
                tell(leaf.place,
                     QStringLiteral("%1: other tests of this text take every unit that could do "
                                    "it; it %2%3")
                         .arg(quoted(leaf.place), whatIsMissing(leaf, m_units, m_core), effort));
                return true;
            }
        }
        return false;
    }

    void tellBuilt(QString const& effort)
    {
        QStringList needed;
        auto const test = [](int leaf, bool isNegated) -> Operand {
            QString const name = QStringLiteral("T%1").arg(leaf + 1);
            return {isNegated ? QLatin1Char('!') + name : name,
                    isNegated ? Formula::Not : Formula::Variable};
        };
        for (Formula const& step : m_bound.steps)
            needed.append(textOf(step, test, Style()));
        tellAll(
            QStringLiteral("the core is static: %1 is built into it, and no values of its units "
                           "make that what the text says; it needs a dynamic core, or one built "
                           "with %2 (T1 for the first test)%3")
                .arg(m_core.expressions.join(QLatin1String(" then ")),
                     needed.join(QLatin1String(" then ")), effort));
    }

    static inline QString const SequenceNote = QStringLiteral(
        "that several expressions fire one after the other is how the simulated chip reads them");

    QString const& m_text;
    SxCore const& m_core;
    bool m_isStatic;
    bool m_isGivenUp = false;
    int m_longStep = -1; ///< Of which no form was found that the core evaluates.
    BoundTrigger m_bound;
    QList<MatchUnit*> m_units;
    std::vector<Formula> m_built;
    QVector<int> m_builtUnits;
    CompiledTrigger m_result;
};

} // namespace

CompiledTrigger compileTrigger(QString const& text, SxCore const& core)
{
    return Compiler(text, core).run();
}

} // namespace VEK
