#include "trigger/formula.h"

#include "model/capturecore.h"

#include <QRegularExpression>

#include <algorithm>

namespace VEK::Trigger {
namespace {

Formula::Kind dual(Formula::Kind kind)
{
    if (kind == Formula::And)
        return Formula::Or;
    return kind == Formula::Or ? Formula::And : kind;
}

void collect(Formula const& formula, QVector<int>& variables)
{
    if (formula.kind == Formula::Variable && !variables.contains(formula.variable))
        variables.append(formula.variable);
    for (Formula const& child : formula.children)
        collect(child, variables);
}

bool isSame(Formula const& a, Formula const& b)
{
    return a.kind == b.kind && a.variable == b.variable &&
           std::equal(a.children.begin(), a.children.end(), b.children.begin(), b.children.end(),
                      isSame);
}

Formula negation(Formula formula)
{
    Formula result{Formula::Not, 0, {}};
    result.children.push_back(std::move(formula));
    return result;
}

/// a ^ !b is !(a ^ b): the constants among the operands of ^ come to one negation.
Formula joinXor(std::vector<Formula> const& children)
{
    bool isOdd = false;
    std::vector<Formula> kept;
    for (Formula const& child : children) {
        if (child.kind == Formula::True)
            isOdd = !isOdd;
        else if (child.kind == Formula::Xor)
            kept.insert(kept.end(), child.children.begin(), child.children.end());
        else if (child.kind != Formula::False)
            kept.push_back(child);
    }
    if (kept.empty())
        return Formula::constant(isOdd);
    if (isOdd)
        kept.front() = kept.front().negated();
    if (kept.size() == 1)
        return kept.front();
    return {Formula::Xor, 0, kept};
}

} // namespace

Formula Formula::of(int variable)
{
    return {Variable, variable, {}};
}

Formula Formula::join(Kind kind, std::vector<Formula> children)
{
    if (kind == Xor)
        return joinXor(children);
    Kind const neutral = kind == And ? True : False;
    Kind const deciding = kind == And ? False : True;
    std::vector<Formula> kept;
    auto const keep = [&](Formula const& child) {
        bool const isThere = std::any_of(
            kept.begin(), kept.end(), [&](Formula const& other) { return isSame(child, other); });
        if (!isThere)
            kept.push_back(child);
    };
    for (Formula const& child : children) {
        if (child.kind == deciding)
            return constant(deciding == True);
        if (child.kind == kind)
            std::for_each(child.children.begin(), child.children.end(), keep);
        else if (child.kind != neutral)
            keep(child);
    }
    if (kept.empty())
        return constant(neutral == True);
    return kept.size() == 1 ? kept.front() : Formula{kind, 0, kept};
}

Formula Formula::negated() const
{
    switch (kind) {
    case False:
    case True:
        return constant(kind == False);
    case Variable:
        return negation(*this);
    case Not:
        return children.front();
    case Xor: {
        Formula result = *this;
        result.children.front() = result.children.front().negated();
        return result;
    }
    case And:
    case Or:
        break;
    }
    std::vector<Formula> opposites;
    for (Formula const& child : children)
        opposites.push_back(child.negated());
    return join(dual(kind), std::move(opposites));
}

QVector<int> variablesOf(Formula const& formula)
{
    QVector<int> variables;
    collect(formula, variables);
    std::sort(variables.begin(), variables.end());
    return variables;
}

bool evaluate(Formula const& formula, std::function<bool(int)> const& valueOf)
{
    auto const value = [&](Formula const& child) { return evaluate(child, valueOf); };
    switch (formula.kind) {
    case Formula::False:
        return false;
    case Formula::True:
        return true;
    case Formula::Variable:
        return valueOf(formula.variable);
    case Formula::Not:
        return !value(formula.children.front());
    case Formula::And:
        return std::all_of(formula.children.begin(), formula.children.end(), value);
    case Formula::Or:
        return std::any_of(formula.children.begin(), formula.children.end(), value);
    case Formula::Xor:
        break;
    }
    return std::count_if(formula.children.begin(), formula.children.end(), value) % 2 == 1;
}

QBitArray tableOf(Formula const& formula, QVector<int> const& variables)
{
    QBitArray table(1 << variables.size());
    QVector<int> places(std::max(1, variables.isEmpty() ? 1 : variables.last() + 1));
    for (int i = 0; i < variables.size(); ++i)
        places[variables.at(i)] = i;
    for (int row = 0; row < table.size(); ++row) {
        auto const valueOf = [&](int variable) { return row >> places.at(variable) & 1; };
        table.setBit(row, evaluate(formula, valueOf));
    }
    return table;
}

std::optional<Formula> parseUnits(QString const& expression)
{
    static QRegularExpression const tokenForm(QStringLiteral("M1[0-5]|M[0-9]|[!&^|()]|[A-Z]"));
    QStringList tokens;
    for (auto found = tokenForm.globalMatch(expression); found.hasNext();)
        tokens.append(found.next().captured());
    int at = 0;
    int depth = 0;
    constexpr int MaxDepth = 500;
    auto const is = [&](char const* sign) {
        return at < tokens.size() && tokens.at(at) == QLatin1String(sign);
    };
    std::function<std::optional<Formula>(int)> const read =
        [&](int strength) -> std::optional<Formula> {
        constexpr Formula::Kind kinds[] = {Formula::Or, Formula::Xor, Formula::And};
        char const* const signs[] = {"|", "^", "&"};
        if (++depth > MaxDepth)
            return std::nullopt;
        std::optional<Formula> result;
        if (strength < 3) {
            std::vector<Formula> operands;
            do {
                std::optional<Formula> const operand = read(strength + 1);
                if (!operand)
                    return std::nullopt;
                operands.push_back(*operand);
            } while (is(signs[strength]) && ++at);
            result = Formula::join(kinds[strength], operands);
        } else if (is("!")) {
            ++at;
            if (std::optional<Formula> const operand = read(3))
                result = operand->negated();
        } else if (is("(")) {
            ++at;
            result = read(0);
            if (!is(")"))
                return std::nullopt;
            ++at;
        } else if (at < tokens.size() && tokens.at(at).size() > 1) {
            result = Formula::of(tokens.at(at++).midRef(1).toInt());
        }
        --depth;
        return result;
    };
    std::optional<Formula> const result = read(0);
    return at == tokens.size() ? result : std::nullopt;
}

QVector<int> unitsOf(QString const& expression)
{
    static QRegularExpression const unit(QStringLiteral("M(1[0-5]|[0-9])"));
    QVector<int> units;
    for (auto found = unit.globalMatch(expression); found.hasNext();) {
        int const number = found.next().capturedRef(1).toInt();
        if (!units.contains(number))
            units.append(number);
    }
    std::sort(units.begin(), units.end());
    return units;
}

} // namespace VEK::Trigger
