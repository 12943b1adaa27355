#include "cli/overrides.h"

#include "check/triggercheck.h"
#include "cli/exitstatus.h"
#include "cli/triggerfailure.h"
#include "image/matchvalue.h"
#include "trigger/trigger.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <algorithm>

namespace VEK::Cli {
namespace {

Failure refusal(QString const& option, SxCore const& core, QString const& why)
{
    return {Status::Usage, QStringLiteral("%1: core %2 %3").arg(option).arg(core.index).arg(why)};
}

void setSizes(Overrides const& overrides, SxCore& core)
{
    core.windowNum = overrides.windows.value_or(core.windowNum);
    core.captureAmount = overrides.amount.value_or(core.captureAmount);
    core.triggerPos = overrides.position.value_or(core.triggerPos);
    int const share = core.storageDepth / int(fixedWindowNum(unsigned(core.windowNum)));
    if (overrides.windows && core.windowNum > core.storageDepth)
        throw refusal(QStringLiteral("--windows"), core,
                      QStringLiteral("has memory for %1 at most").arg(core.storageDepth));
    if ((overrides.amount || overrides.windows) && core.captureAmount > share)
        throw refusal(overrides.amount ? QStringLiteral("--amount") : QStringLiteral("--windows"),
                      core,
                      QStringLiteral("has memory for %1 samples in each of %2 windows, not for %3")
                          .arg(share)
                          .arg(core.windowNum)
                          .arg(core.captureAmount));
    if ((overrides.position || overrides.amount) && core.triggerPos >= core.captureAmount)
        throw refusal(
            overrides.position ? QStringLiteral("--position") : QStringLiteral("--amount"), core,
            QStringLiteral("has windows of %1 samples, which end before trigger position "
                           "%2")
                .arg(core.captureAmount)
                .arg(core.triggerPos));
}

void setExpression(QString const& text, SxCore& core)
{
    QString const option = QStringLiteral("--expression");
    if (core.expressionType != ExpressionDynamic)
        throw refusal(option, core,
                      QStringLiteral("is static: its expressions are built into the design"));
    QString const expression = text.toUpper().remove(QLatin1Char(' '));
    QString const problem = expressionProblem(expression, core);
    if (!problem.isEmpty())
        throw Failure{Status::Usage,
                      QStringLiteral("%1: core %2: %3").arg(option).arg(core.index).arg(problem)};
    core.expressions = QStringList{expression};
    core.expressionEnabled.clear(); // as in a file: all count
}

/// The bits of one value as the unit holds them, one character a signal of its port, first signal
/// leftmost. Empty when the text is no value of that width.
QString bitsOf(QString text, MatchUnit const& unit)
{
    int const width = unit.trigger->singleSignals().size();
    int radix = 10;
    if (text.startsWith(QLatin1String("0X")) || text.startsWith(QLatin1String("0B"))) {
        radix = text.at(1) == QLatin1Char('X') ? 16 : 2;
        text = text.mid(2);
    } else if (text.size() == width && holdsLetters(text)) {
        radix = 2; // as the trigger dialog shows it
    }
    QRegularExpression const form(
        QStringLiteral("\\A(?:%1)\\z").arg(valuePattern(radix, unit.func, unit.matchType)));
    if (text.isEmpty() || !form.match(text).hasMatch())
        return QString();
    QString const bits = radix == 2 ? text : changeRadix(text, radix, 2, width);
    return bits.size() > width ? QString() : BitWidthAdjust(bits, width);
}

void setMatch(QString const& text, SxCore& core)
{
    QString const option = QStringLiteral("--match");
    static QRegularExpression const form(QStringLiteral("\\AM(\\d{1,2})=([0-9A-Z]+)(?:\\.\\."
                                                        "([0-9A-Z]+))?\\z"));
    QRegularExpressionMatch const parts = form.match(text.toUpper());
    if (!parts.hasMatch())
        throw Failure{Status::Usage,
                      QStringLiteral("%1: \"%2\" is not of the form M1=0x5A, M1=0b1x0x or "
                                     "M1=0x10..0x20")
                          .arg(option, text)};
    MatchUnit* const unit = core.matchUnit(parts.captured(1).toInt());
    QString const name = QLatin1Char('M') + parts.captured(1);
    if (!unit || !unit->enabled || !unit->trigger)
        throw refusal(option, core, QStringLiteral("has no unit %1 in use").arg(name));
    bool const isRange = unit->func == FuncInRange || unit->func == FuncNotInRange;
    if (isRange == parts.captured(3).isEmpty())
        throw refusal(option, core,
                      isRange
                          ? QStringLiteral("compares a range with %1: give two values").arg(name)
                          : QStringLiteral("compares one value with %1").arg(name));
    for (int i = 0; i <= int(isRange); ++i) {
        QString const bits = bitsOf(parts.captured(2 + i), *unit);
        if (bits.isEmpty())
            throw refusal(option, core,
                          QStringLiteral("can't take %1 for %2, which has %3 bits%4")
                              .arg(parts.captured(2 + i), name)
                              .arg(unit->trigger->singleSignals().size())
                              .arg(lettersAllowed(2, unit->func, unit->matchType).isEmpty()
                                       ? QString()
                                       : QStringLiteral(" of 0, 1 and ") +
                                             lettersAllowed(2, unit->func, unit->matchType)));
        (i == 0 ? unit->value0 : unit->value1) = bits;
    }
}

QStringList setTrigger(QString const& text, SxCore& core)
{
    CompiledTrigger const trigger = compileTrigger(text, core);
    QString const name = QStringLiteral("core %1: ").arg(core.index);
    if (!trigger.isOk())
        throw triggerFailure(text, trigger.errors, name);
    applyTrigger(trigger, core);
    QStringList notes;
    for (QString const& note : trigger.notes)
        notes << name + note;
    return notes;
}

} // namespace

bool Overrides::isEmpty() const
{
    return !position && !amount && !windows && expression.isEmpty() && matches.isEmpty() &&
           !trigger;
}

QJsonObject Overrides::toJson() const
{
    QJsonObject json;
    if (position)
        json.insert(QStringLiteral("position"), *position);
    if (amount)
        json.insert(QStringLiteral("amount"), *amount);
    if (windows)
        json.insert(QStringLiteral("windows"), *windows);
    if (!expression.isEmpty())
        json.insert(QStringLiteral("expression"), expression);
    if (!matches.isEmpty())
        json.insert(QStringLiteral("match"), QJsonArray::fromStringList(matches));
    if (trigger)
        json.insert(QStringLiteral("trigger"), *trigger);
    return json;
}

QList<int> placesOf(Capture const& capture, QList<int> const& indexes)
{
    if (capture.liteCore()) {
        for (int const index : indexes)
            if (index != 0)
                throw Failure{
                    Status::Usage,
                    QStringLiteral("--core: the lite core has index 0, not %1").arg(index)};
        return {0};
    }
    QList<SxCore*> const cores = capture.cores();
    QList<int> places;
    if (indexes.isEmpty()) {
        for (int place = 0; place < cores.size(); ++place)
            places << place;
        return places;
    }
    for (int const index : indexes) {
        auto const core = std::find_if(cores.begin(), cores.end(), [index](SxCore const* core) {
            return core->index == index;
        });
        if (core == cores.end())
            throw Failure{Status::Usage,
                          QStringLiteral("--core: the configuration has no core %1").arg(index)};
        int const place = int(core - cores.begin());
        if (!places.contains(place))
            places << place;
    }
    return places;
}

QStringList apply(Overrides const& overrides, Capture const& capture, QList<int> const& places)
{
    QStringList notes;
    if (overrides.isEmpty())
        return notes;
    if (capture.liteCore())
        throw Failure{
            Status::Usage,
            QStringLiteral("--position, --amount, --windows, --expression, --match and "
                           "--trigger are for Standard cores: all of a Lite core is built in")};
    for (int const place : places) {
        SxCore& core = *capture.cores().at(place);
        setSizes(overrides, core);
        if (!overrides.expression.isEmpty())
            setExpression(overrides.expression, core);
        for (QString const& match : overrides.matches)
            setMatch(match, core);
        if (overrides.trigger)
            notes << setTrigger(*overrides.trigger, core);
    }
    return notes;
}

} // namespace VEK::Cli
