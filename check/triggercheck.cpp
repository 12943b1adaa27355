#include "check/triggercheck.h"

#include "check/signalcheck.h"
#include "image/expression.h"
#include "image/matchvalue.h"
#include "image/truthtable.h"
#include "model/capturecore.h"
#include "model/signallist.h"

#include <QBitArray>
#include <QSet>

#include <algorithm>

namespace VEK {
namespace {

QString const Index = QStringLiteral("index");
QString const Value0 = QStringLiteral("value0");
QString const Value1 = QStringLiteral("value1");

constexpr int MaxCounterWidth = 16; ///< The count is written as a number of 16 bits.

bool isRange(MatchFunc func)
{
    return func == FuncInRange || func == FuncNotInRange;
}

bool isUsable(MatchUnit const* unit)
{
    return unit && unit->enabled && unit->trigger && !unit->trigger->signalList.isEmpty();
}

void checkPorts(QDomElement const& triggers, FindingList& list)
{
    checkForm(triggers, {{}, {}, {QStringLiteral("Trigger")}, {}}, list);
    QList<QDomElement> const ports = childElements(triggers, QStringLiteral("Trigger"));
    checkIndexesDiffer(ports, QStringLiteral("port"), list);
    for (QDomElement const& port : ports) {
        checkForm(port, {{}, {Index}, {}, {QStringLiteral("SignalList")}}, list);
        numberOf(port, Index, {0, CoreUnitCount - 1}, list);
        QDomElement const wired = port.firstChildElement(QStringLiteral("SignalList"));
        if (!wired.isNull())
            checkSignalList(wired, ListForm::Port, list);
    }
}

/// One of the two values of a unit that is in use and bound.
void checkValue(QDomElement const& element, QString const& attribute, MatchUnit const& unit,
                FindingList& list)
{
    QString const value = attribute == Value0 ? unit.value0 : unit.value1;
    int const width = unit.trigger->singleSignals().size();
    QString const letters = lettersAllowed(2, unit.func, unit.matchType);
    auto const wrong = std::find_if(value.begin(), value.end(), [&letters](QChar c) {
        return c != QLatin1Char('0') && c != QLatin1Char('1') && !letters.contains(c);
    });
    if (wrong != value.end())
        list.error(element, attribute,
                   QStringLiteral("'%1' is no character of a value that %2 compares with %3: it "
                                  "counts as %4")
                       .arg(*wrong)
                       .arg(type2string(unit.matchType), func2string(unit.func))
                       .arg(unit.func > FuncNotEqual ? QStringLiteral("0") : QStringLiteral("X")));
    else if (value.size() > width)
        list.error(element, attribute,
                   QStringLiteral("%1 characters for a port of %2 signals: the last %3 are cut")
                       .arg(value.size())
                       .arg(width)
                       .arg(value.size() - width));
    else if (value.size() < width)
        list.warn(element, attribute,
                  QStringLiteral("%1 characters for a port of %2 signals: it is filled up with 0 "
                                 "in front")
                      .arg(value.size())
                      .arg(width));
}

void checkValues(QDomElement const& element, MatchUnit const& unit, FindingList& list)
{
    checkValue(element, Value0, unit, list);
    if (!isRange(unit.func))
        return;
    checkValue(element, Value1, unit, list);
    if (unit.value0.size() == unit.value1.size() && unit.value0 > unit.value1)
        list.warn(element, Value1,
                  QStringLiteral("the range ends before it begins: it holds no value"));
}

void checkFunction(QDomElement const& element, MatchUnit const& unit, FindingList& list)
{
    if (!optionalFunctions(unit.matchType).contains(unit.func))
        list.error(element, QStringLiteral("func"),
                   QStringLiteral("a unit of type %1 can't do %2")
                       .arg(type2string(unit.matchType), func2string(unit.func)));
    else
        checkValues(element, unit, list);
}

void checkCounter(QDomElement const& element, FindingList& list)
{
    auto const width =
        numberOf(element, QStringLiteral("counter_width"), {1, MaxCounterWidth}, list);
    if (width)
        numberOf(element, QStringLiteral("counter"), {1, counterLimit(*width)}, list);
}

/// A unit in use. `isSound`: its type and its function are some.
void checkUsedUnit(QDomElement const& element, MatchUnit const& unit, bool isSound,
                   FindingList& list)
{
    QString const trigger = QStringLiteral("trigger");
    if (!element.hasAttribute(trigger)) {
        list.error(element, trigger, QStringLiteral("the unit is in use and watches no port"));
        return;
    }
    if (!numberOf(element, trigger, {0, CoreUnitCount - 1}, list))
        return;
    if (!unit.trigger || unit.trigger->signalList.isEmpty())
        list.error(element, trigger, QStringLiteral("that port has no signals"));
    else if (isSound)
        checkFunction(element, unit, list);
}

void checkUnit(QDomElement const& element, SxCore const& core, FindingList& list)
{
    checkForm(element,
              {{Value0, Value1},
               {Index, QStringLiteral("enabled"), QStringLiteral("match_type"),
                QStringLiteral("counter_enable"), QStringLiteral("counter_width"),
                QStringLiteral("counter"), QStringLiteral("countinuous"), QStringLiteral("func"),
                QStringLiteral("trigger")},
               {},
               {}},
              list);
    auto const index = numberOf(element, Index, {0, CoreUnitCount - 1}, list);
    auto const enabled = flagOf(element, QStringLiteral("enabled"), list);
    auto const type = numberOf(element, QStringLiteral("match_type"), {0, MatchRangeEdges}, list);
    auto const func = numberOf(element, QStringLiteral("func"), {0, FuncNotInRange}, list);
    auto const counter = flagOf(element, QStringLiteral("counter_enable"), list);
    flagOf(element, QStringLiteral("countinuous"), list);
    if (!index || !enabled.value_or(0))
        return;
    MatchUnit const& unit = *core.matchUnit(*index);
    if (!unit.enabled) // a later element has overwritten it
        return;
    if (counter.value_or(0))
        checkCounter(element, list);
    checkUsedUnit(element, unit, type && func, list);
}

bool names(QStringList const& expressions, int unit)
{
    QString const name = QStringLiteral("M%1").arg(unit);
    return std::any_of(expressions.begin(), expressions.end(),
                       [&name](QString const& text) { return tokensOf(text).contains(name); });
}

void checkUnits(QDomElement const& units, SxCore const& core, FindingList& list)
{
    QString const tag = QStringLiteral("MatchUnit");
    checkForm(units, {{}, {}, {tag}, {}}, list);
    QList<QDomElement> const elements = childElements(units, tag);
    checkIndexesDiffer(elements, QStringLiteral("unit"), list);
    for (QDomElement const& element : elements) {
        checkUnit(element, core, list);
        MatchUnit const* const unit = core.matchUnit(element.attribute(Index).toInt());
        if (isUsable(unit) && !core.expressions.isEmpty() && !names(core.expressions, unit->index))
            list.warn(element, QString(),
                      QStringLiteral("M%1 is in use, and no expression names it").arg(unit->index));
    }
}

QBitArray tableOf(QStringList const& postfix, QList<int> const& units)
{
    QList<QBitArray> stack;
    for (QString const& token : postfix) {
        if (isDigit(token)) {
            QBitArray operand(1 << units.size());
            int const place = units.indexOf(token.midRef(1).toInt());
            for (int i = 0; i < operand.size(); ++i)
                operand.setBit(i, (i >> place & 1) != 0);
            stack.append(operand);
        } else if (token == OP_NOT) {
            stack.last() = ~stack.last();
        } else {
            QBitArray const right = stack.takeLast();
            QBitArray& left = stack.last();
            left = token == OP_AND ? left & right : token == OP_OR ? left | right : left ^ right;
        }
    }
    return stack.first();
}

/// Whether the table that a core gets is that of the expression. In long texts it is not always:
/// the evaluation ends at a far "!" or "&".
bool isEvaluatedWhole(QString const& text)
{
    QStringList const tokens = tokensOf(text);
    QList<int> units;
    for (QString const& token : tokens)
        if (isDigit(token) && !units.contains(token.midRef(1).toInt()))
            units << token.midRef(1).toInt();
    std::sort(units.begin(), units.end());
    QBitArray const meant = tableOf(convertRPN(tokens), units);
    QString const table = logicTruthTable(text);
    for (int i = 0; i < meant.size(); ++i)
        if (i >= table.size() || table.at(i) != QLatin1Char(meant.testBit(i) ? '1' : '0'))
            return false;
    return true;
}

/// Whether an expression names a unit that is in use, but can't be used: that was told of the unit.
bool namesBrokenUnit(QString const& text, SxCore const& core)
{
    QStringList const tokens = tokensOf(text);
    return std::any_of(tokens.begin(), tokens.end(), [&core](QString const& token) {
        MatchUnit const* const unit =
            token.size() > 1 ? core.matchUnit(token.midRef(1).toInt()) : nullptr;
        return unit && unit->enabled && !isUsable(unit);
    });
}

void checkExpressions(QDomElement const& element, SxCore const& core, FindingList& list)
{
    QString const type = QStringLiteral("type");
    QString const implementation = QStringLiteral("ex_implementation");
    QString const tag = QStringLiteral("Expression");
    checkForm(element, {{type}, {implementation}, {tag}, {}}, list);
    QString const kind = element.attribute(type);
    if (element.hasAttribute(type) && kind != QLatin1String("Dynamic") &&
        kind != QLatin1String("Static"))
        list.error(element, type,
                   QStringLiteral("\"%1\" is neither \"Static\" nor \"Dynamic\", and counts as "
                                  "Static")
                       .arg(kind));
    if (element.hasAttribute(implementation))
        numberOf(element, implementation, {}, list);
    QList<QDomElement> const texts = childElements(element, tag);
    for (int i = 0; i < texts.size() && i < core.expressions.size(); ++i) {
        QString const text = core.expressions.at(i);
        QString const problem = expressionProblem(text, core);
        if (!problem.isEmpty() && !namesBrokenUnit(text, core))
            list.error(texts.at(i), QString(), problem);
    }
    if (core.expressionType == ExpressionDynamic && texts.size() > 1)
        list.warn(element, QString(),
                  QStringLiteral("a file can't say which of %1 dynamic expressions are on: the "
                                 "first alone counts")
                      .arg(texts.size()));
    if (texts.isEmpty())
        list.warn(element, QString(),
                  QStringLiteral("no expression: the core fires at its first sample"));
}

} // namespace

QString expressionProblem(QString const& text, SxCore const& core)
{
    QStringList const tokens = tokensOf(text);
    if (tokens.isEmpty())
        return QStringLiteral("an expression without anything in it");
    for (QString const& token : tokens) {
        if (token.size() > 1 && !isUsable(core.matchUnit(token.midRef(1).toInt())))
            return QStringLiteral("there is no unit %1 in use").arg(token);
        if (token.size() == 1 && !QStringLiteral("!&^|()").contains(token))
            return QStringLiteral("'%1' does not belong in an expression, which holds M0 to M15, "
                                  "! & ^ | and brackets")
                .arg(token);
    }
    if (tokens.count(LEFT_BRACKET) != tokens.count(RIGHT_BRACKET))
        return QStringLiteral("the brackets of \"%1\" don't match").arg(text);
    if (!isOk(tokens))
        return QStringLiteral("\"%1\" is no valid expression").arg(text);
    if (core.expressionType == ExpressionDynamic && !isEvaluatedWhole(text))
        return QStringLiteral("\"%1\" is too long: a core would get another table").arg(text);
    return QString();
}

void checkTrigger(QDomElement const& element, SxCore const& core, FindingList& list)
{
    QDomElement const ports = element.firstChildElement(QStringLiteral("Triggers"));
    QDomElement const units = element.firstChildElement(QStringLiteral("MatchUnits"));
    QDomElement const expressions = element.firstChildElement(QStringLiteral("Expressions"));
    if (!ports.isNull())
        checkPorts(ports, list);
    if (!units.isNull())
        checkUnits(units, core, list);
    if (expressions.isNull())
        list.warn(element, QString(),
                  QStringLiteral("no Expressions: the core fires at its first sample"));
    else
        checkExpressions(expressions, core, list);
}

} // namespace VEK
