#include "image/matchvalue.h"
#include "trigger/comparison.h"
#include "trigger/formula.h"
#include "trigger/lexer.h"
#include "trigger/signalnames.h"
#include "trigger/trigger.h"

#include <algorithm>

namespace VEK {
namespace {

using namespace Trigger;

QString numberText(QString const& bits)
{
    constexpr int MostDecimalBits = 3;
    int const radix = bits.size() <= MostDecimalBits ? 10 : 16;
    return radix == 10 ? changeRadix(bits, 2, 10, 1)
                       : QStringLiteral("0x") + textOfBits(bits, radix);
}

/// A test and its opposite.
struct Part
{
    QString text;
    QString opposite;
    Formula::Kind kind = Formula::Variable;
    Formula::Kind oppositeKind = Formula::Variable;
};

Part edgePart(QString const& name, QChar condition)
{
    QString const word = condition == QLatin1Char('R')   ? QStringLiteral(" rises")
                         : condition == QLatin1Char('F') ? QStringLiteral(" falls")
                                                         : QStringLiteral(" changes");
    Part part{name + word, QStringLiteral("!(") + name + word + QLatin1Char(')'), Formula::Variable,
              Formula::Not};
    if (condition == QLatin1Char('N')) {
        std::swap(part.text, part.opposite);
        std::swap(part.kind, part.oppositeKind);
    }
    return part;
}

Part levelPart(QString const& name, QString const& levels)
{
    if (levels == QLatin1String("1"))
        return {name, QLatin1Char('!') + name, Formula::Variable, Formula::Not};
    if (levels == QLatin1String("0"))
        return {QLatin1Char('!') + name, name, Formula::Not, Formula::Variable};
    QString value = numberText(levels);
    if (levels.contains(QLatin1Char('X')))
        value = QStringLiteral("0b") + levels.toLower();
    return {name + QStringLiteral(" == ") + value, name + QStringLiteral(" != ") + value};
}

class Printer
{
public:
    explicit Printer(SxCore const& core) : m_core(core), m_names(core) {}

    QString run(QStringList const& expressions) const
    {
        QStringList steps;
        for (QString const& expression : expressions)
            steps.append(stepText(expression));
        return steps.join(QLatin1String(" then "));
    }

private:
    QString stepText(QString const& expression) const
    {
        auto const operand = [this](int unit, bool isNegated) { return unitText(unit, isNegated); };
        return textOf(simplified(meaning(expression)), operand,
                      Style{QStringLiteral(" "), false, false});
    }

    /// What the core does, which of a text too long or not valid is not what it says.
    Formula meaning(QString const& expression) const
    {
        std::optional<Formula> const said = parseUnits(expression);
        if (m_core.expressionType != ExpressionDynamic)
            return said.value_or(Formula::constant(false));
        QVector<int> const units = unitsOf(expression);
        QBitArray const table = coreTable(expression, units);
        bool const isSaid = said && tableOf(*said, units) == table;
        return isSaid ? *said : sumOfProducts(table, units);
    }

    /// Without units that never change.
    Formula simplified(Formula const& formula) const
    {
        std::function<Formula(Formula const&)> const replace = [&](Formula const& inner) {
            if (inner.kind == Formula::Variable)
                return constantOf(inner.variable).value_or(inner);
            std::vector<Formula> children;
            for (Formula const& child : inner.children)
                children.push_back(replace(child));
            if (inner.kind == Formula::Not)
                return children.front().negated();
            return children.empty() ? inner : Formula::join(inner.kind, children);
        };
        Formula const result = replace(formula);
        QVector<int> const units = variablesOf(result);
        int const trues = tableOf(result, units).count(true);
        bool const isConstant = trues == 0 || trues == 1 << units.size();
        return isConstant ? Formula::constant(trues > 0) : result;
    }

    std::optional<Formula> constantOf(int number) const
    {
        MatchUnit const* const unit = m_core.matchUnit(number);
        if (!isInUse(unit))
            return std::nullopt;
        Comparison const comparison = comparisonOf(*unit);
        bool const isAny = comparison.func <= FuncNotEqual &&
                           comparison.value0.count(QLatin1Char('X')) == comparison.value0.size();
        if (!isAny || (comparison.count > 1 && comparison.func == FuncEqual))
            return std::nullopt;
        return Formula::constant(comparison.func == FuncEqual);
    }

    Operand unitText(int number, bool isNegated) const
    {
        MatchUnit const* const unit = m_core.matchUnit(number);
        if (!isInUse(unit)) {
            QString const name = QStringLiteral("M%1").arg(number);
            return {isNegated ? QLatin1Char('!') + name : name,
                    isNegated ? Formula::Not : Formula::Variable};
        }
        Comparison const comparison = comparisonOf(*unit);
        bool const isCounted = comparison.count > 1;
        Operand const test = testText(comparison, *unit->trigger, isNegated && !isCounted);
        if (!isCounted)
            return test;
        QString const counted =
            QStringLiteral("(%1) %2 times%3")
                .arg(test.text)
                .arg(comparison.count)
                .arg(comparison.inRow ? QStringLiteral(" in a row") : QString());
        if (!isNegated)
            return {counted};
        return {QStringLiteral("!(%1)").arg(counted), Formula::Not};
    }

    Operand testText(Comparison const& comparison, TriggerPort const& port, bool isNegated) const
    {
        if (comparison.func > FuncNotEqual)
            return {numberTest(comparison, port, isNegated)};
        QVector<Part> const parts = partsOf(comparison.value0, port);
        bool const isOpposite = isNegated != (comparison.func == FuncNotEqual);
        if (parts.size() == 1)
            return isOpposite ? Operand{parts.first().opposite, parts.first().oppositeKind}
                              : Operand{parts.first().text, parts.first().kind};
        QStringList texts;
        for (Part const& part : parts)
            texts.append(isOpposite ? part.opposite : part.text);
        return isOpposite ? Operand{texts.join(QLatin1String(" | ")), Formula::Or}
                          : Operand{texts.join(QLatin1String(" & ")), Formula::And};
    }

    QString numberTest(Comparison const& comparison, TriggerPort const& port, bool isNegated) const
    {
        static char const* const signs[] = {">", "<", ">=", "<=", "in", "not in"};
        static int const opposites[] = {3, 2, 1, 0, 5, 4};
        int sign = comparison.func - FuncGreater;
        if (isNegated)
            sign = opposites[sign];
        QString value = numberText(comparison.value0);
        if (comparison.func >= FuncInRange)
            value += QStringLiteral("..") + numberText(comparison.value1);
        return QStringLiteral("%1 %2 %3").arg(portName(port), QLatin1String(signs[sign]), value);
    }

    /// All signals of a port in their order.
    QString portName(TriggerPort const& port) const
    {
        QStringList names;
        for (SignalItem const& item : port.signalList) {
            QString name = m_names.written(item);
            if (name.startsWith(QLatin1Char('{')) && port.signalList.size() > 1)
                name = name.mid(1, name.size() - 2);
            names.append(name);
        }
        return names.size() == 1
                   ? names.first()
                   : QLatin1Char('{') + names.join(QLatin1String(", ")) + QLatin1Char('}');
    }

    /// One for each signal and bus with a condition, and for each edge within a bus.
    QVector<Part> partsOf(QString const& conditions, TriggerPort const& port) const
    {
        QVector<Part> parts;
        int at = 0;
        for (SignalItem const& item : port.signalList) {
            QList<SignalItem> const members = flatSignals({item});
            QString const own = conditions.mid(at, members.size());
            at += members.size();
            QString levels = own;
            for (QChar& condition : levels) {
                if (!QStringLiteral("01").contains(condition))
                    condition = QLatin1Char('X');
            }
            if (levels.count(QLatin1Char('X')) < levels.size())
                parts.append(levelPart(m_names.written(item), levels));
            for (int i = 0; i < own.size(); ++i) {
                if (QStringLiteral("RFBN").contains(own.at(i)))
                    parts.append(edgePart(m_names.written(members.at(i)), own.at(i)));
            }
        }
        if (parts.isEmpty()) // any value, which counts samples
            parts.append(levelPart(
                m_names.written(port.signalList.first()),
                QString(flatSignals({port.signalList.first()}).size(), QLatin1Char('X'))));
        return parts;
    }

    SxCore const& m_core;
    SignalNames m_names;
};

/// What fires in sequence. A file of a dynamic core has no flags: one stage, its first expression.
QStringList firingExpressions(SxCore const& core)
{
    if (core.expressionType != ExpressionDynamic)
        return core.expressions;
    int const flags = core.expressionEnabled.count(true);
    if (core.expressionEnabled.size() != core.expressions.size())
        return core.expressions.mid(0, std::max(1, flags));
    QStringList flagged;
    for (int i = 0; i < core.expressions.size(); ++i) {
        if (core.expressionEnabled.at(i))
            flagged.append(core.expressions.at(i));
    }
    return flagged;
}

} // namespace

QString triggerText(SxCore const& core)
{
    QStringList const firing = firingExpressions(core);
    return firing.isEmpty() ? QStringLiteral("always") : Printer(core).run(firing);
}

QStringList triggerNotes(SxCore const& core)
{
    QStringList notes;
    QStringList const firing = firingExpressions(core);
    for (QString const& expression : firing) {
        for (int unit : unitsOf(expression)) {
            if (!isInUse(core.matchUnit(unit)))
                notes << QStringLiteral("the expression %1 names M%2, which is not in use")
                             .arg(expression)
                             .arg(unit);
        }
        if (!parseUnits(expression))
            notes << QStringLiteral("the expression %1 is not valid").arg(expression);
    }
    int const unread = core.expressions.size() - firing.size();
    if (core.expressionType == ExpressionDynamic && core.expressionEnabled.isEmpty() && unread > 0)
        notes << QStringLiteral("a dynamic core's file flags no expression: of %1 the first alone "
                                "is looked at")
                     .arg(core.expressions.size());
    if (firing.size() > 1)
        notes << QStringLiteral("that several expressions fire one after the other is how the "
                                "simulated chip reads them");
    return notes;
}

} // namespace VEK
