#include "cli/explainsentence.h"

#include <algorithm>

namespace VEK::Cli {

using Simulator::MatchLogic;
using Simulator::TriggerLogic;
using Simulator::TruthTable;

namespace {

QString atSample(qint64 sample)
{
    return QStringLiteral("at sample %1").arg(sample);
}

/// The words for one unit.
class UnitWords
{
public:
    UnitWords(TriggerWatch const& watch, std::size_t place)
        : m_watch(watch), m_unit(watch.trigger().units()[place]), m_story(watch.units()[place])
    {}

    QString name() const { return unitName(m_unit); }
    QString const& past() const { return m_story.text.past(); }
    QString verb() const
    {
        return m_unit.logic.hasCounter() ? QStringLiteral("fired") : QStringLiteral("matched");
    }
    Sighting fired() const { return m_watch.fired().with(m_unit.combination); }
    Sighting firedInStep() const { return m_watch.firedInStep().with(m_unit.combination); }

    /// Why a unit was never 1.
    QString whyNever() const
    {
        if (!m_story.watch)
            return whyNotCounted();
        QString const why = QStringLiteral("%1 never matched: ").arg(name());
        switch (m_unit.logic.function()) {
        case MatchLogic::Equal:
            return why + whyNotEqual();
        case MatchLogic::NotEqual:
            return why + QStringLiteral("on every sample %1").arg(pastOfTerms());
        case MatchLogic::NotInRange:
            return why + m_story.text.never() + valuesOf(0);
        default:
            return why + whyNoNumber();
        }
    }

private:
    QString pastOfTerms() const
    {
        QStringList texts;
        for (MatchTerm const& term : m_story.text.terms())
            texts << term.past;
        return joined(texts);
    }

    QString valuesOf(std::size_t group) const
    {
        PortGroup const& described = m_story.text.groups()[group];
        return QStringLiteral("; %1 was %2")
            .arg(described.label, m_story.watch->values(group).text(described.width));
    }

    QString whyNotCounted() const
    {
        TriggerWatch::Counter const& counter = m_story.counter;
        qint64 const matched = m_watch.matched().with(m_unit.combination).count;
        return QStringLiteral("%1 never fired: %2 %3, %4 at most %5 where the counter takes %6")
            .arg(name(), past(), timesText(matched),
                 m_unit.logic.isContinuous() ? QStringLiteral("running")
                                             : QStringLiteral("counted"))
            .arg(counter.highest)
            .arg(m_unit.logic.needed());
    }

    /// A single part names its nearest value, of several the ones that were missing are told.
    QString whyNotEqual() const
    {
        std::vector<UnitWatch::Miss> const misses = m_story.watch->misses();
        std::vector<MatchTerm> const& terms = m_story.text.terms();
        if (misses.empty())
            return QStringLiteral("there were no samples");
        UnitWatch::Miss const& miss = misses.front();
        if (terms.size() == 1)
            return terms.front().isEdge ? terms.front().never + valuesOf(terms.front().group)
                                        : whyNoValue(terms.front(), miss);
        QStringList held;
        QStringList failed;
        QStringList never;
        bool everHeld = false;
        for (std::size_t i = 0; i < terms.size(); ++i) {
            bool const fails = miss.terms >> std::min<std::size_t>(i, 63) & 1;
            (fails ? failed : held) << terms[i].past;
            if (!fails)
                continue;
            never << terms[i].never;
            everHeld = everHeld || m_story.watch->held()[std::min<std::size_t>(i, 63)] > 0;
        }
        if (held.isEmpty())
            return joined(never);
        return QStringLiteral("%1 %2, but %3")
            .arg(joined(held), timesText(miss.seen.count),
                 everHeld ? QStringLiteral("never while ") + joined(failed) : joined(never));
    }

    QString whyNoValue(MatchTerm const& term, UnitWatch::Miss const& miss) const
    {
        PortGroup const& group = m_story.text.groups()[term.group];
        QString text = term.never;
        if (group.width > 1)
            text += QStringLiteral(", the nearest was %1 %2")
                        .arg(numberText(group.value(miss.now.data()), group.width),
                             atSample(miss.sample));
        return text;
    }

    QString whyNoNumber() const
    {
        MatchLogic const& logic = m_unit.logic;
        QString const never = m_story.text.never();
        if (logic.function() == MatchLogic::InRange && logic.a() > logic.b())
            return QStringLiteral("its range is empty, %1").arg(m_story.text.present());
        QStringList nearest;
        for (UnitWatch::Extreme const* extreme :
             {&m_story.watch->below(), &m_story.watch->above()}) {
            if (extreme->sample >= 0)
                nearest << QStringLiteral("%1 %2").arg(
                    numberText(extreme->value.data(), m_story.text.width()),
                    atSample(extreme->sample));
        }
        return QStringLiteral("%1, the nearest was %2")
            .arg(never, nearest.join(QStringLiteral(" and ")));
    }

    TriggerWatch const& m_watch;
    TriggerLogic::Unit const& m_unit;
    TriggerWatch::UnitStory const& m_story;
};

/// The words for the expression that is waited for.
class GapWords
{
public:
    GapWords(TriggerWatch const& watch, QString const& expression, TruthTable const& table)
        : m_watch(watch), m_expression(expression),
          m_gap(gapOf(table, unitBits(watch), watch.firedInStep()))
    {}

    QString why() const
    {
        if (!m_gap.canBeTrue)
            return QStringLiteral("%1 can't be true, whatever its units do").arg(m_expression);
        if (m_gap.seen.count == 0)
            return QStringLiteral("no sample was left to look for %1").arg(m_expression);
        for (UnitWords const& unit : units(m_gap.missing & ~m_gap.nearest)) {
            if (unit.fired().count == 0)
                return unit.whyNever();
        }
        QString const never = QStringLiteral("%1 was never true").arg(m_expression);
        bool const isSingle = qPopulationCount(m_gap.missing) == 1;
        if (m_gap.missing & ~m_gap.nearest)
            return never + QStringLiteral(": ") + (isSingle ? oneMissing() : severalMissing());
        return never + QStringLiteral(": ") + tooMany();
    }

private:
    std::vector<UnitWords> units(unsigned bits) const
    {
        std::vector<UnitWords> found;
        std::vector<TriggerLogic::Unit> const& all = m_watch.trigger().units();
        for (std::size_t i = 0; i < all.size(); ++i)
            if (all[i].combination & bits)
                found.emplace_back(m_watch, i);
        return found;
    }

    /// What the units did that were as they should be on the nearest samples.
    QString rest() const
    {
        QStringList texts;
        unsigned const fine = m_gap.units & ~m_gap.missing;
        std::vector<UnitWords> const ones = units(fine & m_gap.nearest);
        for (UnitWords const& unit : ones)
            texts << QStringLiteral("%1 %2%3").arg(
                unit.name(), unit.verb(),
                ones.size() == 1 ? QStringLiteral(" (%1)").arg(unit.past()) : QString());
        for (UnitWords const& unit : units(fine & ~m_gap.nearest))
            texts << QStringLiteral("%1 did not").arg(unit.name());
        return joined(texts);
    }

    QString oneMissing() const
    {
        UnitWords const unit = units(m_gap.missing).front();
        qint64 const count = unit.firedInStep().count;
        QString const others = rest();
        QString const did = QStringLiteral("%1 %2 (%3)").arg(unit.name(), unit.verb(), unit.past());
        if (count == 0)
            return QStringLiteral("%1 %2, but only before that, last at sample %3")
                .arg(did, timesText(unit.fired().count))
                .arg(unit.fired().last);
        if (others.isEmpty())
            return QStringLiteral("%1 %2, at the wrong time").arg(did, timesText(count));
        return QStringLiteral("%1 %2, but never while %3, which was so %4")
            .arg(others, timesText(m_gap.seen.count), did, timesText(count));
    }

    QString severalMissing() const
    {
        QStringList texts;
        for (UnitWords const& unit : units(m_gap.missing & ~m_gap.nearest))
            texts << QStringLiteral("%1 %2 %3 (%4)")
                         .arg(unit.name(), unit.verb(), timesText(unit.fired().count), unit.past());
        return QStringLiteral("%1, but not when it would have counted").arg(joined(texts));
    }

    QString tooMany() const
    {
        QStringList texts;
        for (UnitWords const& unit : units(m_gap.missing & m_gap.nearest))
            texts
                << QStringLiteral("%1 %2 as well (%3)").arg(unit.name(), unit.verb(), unit.past());
        QString const others = rest();
        if (others.isEmpty())
            return QStringLiteral("on every sample %1").arg(joined(texts));
        return QStringLiteral("%1 %2, but then %3")
            .arg(others, timesText(m_gap.seen.count), joined(texts));
    }

    TriggerWatch const& m_watch;
    QString m_expression;
    ExpressionGap m_gap;
};

QString firesText(TriggerWatch const& watch)
{
    qint64 const first = watch.triggers().front();
    QString text = watch.trigger().alwaysFires()
                       ? QStringLiteral("The core has no expression, and fires %1")
                       : QStringLiteral("The trigger fires %1");
    text = text.arg(atSample(first));
    if (watch.windows() > 1)
        text += QStringLiteral(", and for the last of %1 windows %2")
                    .arg(watch.windows())
                    .arg(atSample(watch.triggers().back()));
    return text;
}

/// Why the window that waits does not trigger, from its steps so far on.
QString whyNot(TriggerWatch const& watch, QStringList const& expressions)
{
    TriggerLogic const& trigger = watch.trigger();
    quint64 const stage = watch.steps().size();
    if (stage >= trigger.stages())
        return QStringLiteral("no sample was left for the next window");
    TruthTable const* const table = trigger.table(stage);
    QString const why =
        table ? GapWords(watch, expressions.value(int(stage)), *table).why()
              : QStringLiteral("the design has no expression for step %1").arg(stage + 1);
    if (stage == 0)
        return why;
    return QStringLiteral("the sequence came to step %1 of %2, after %3 was true at sample %4: %5")
        .arg(stage + 1)
        .arg(trigger.stages())
        .arg(expressions.value(int(stage) - 1))
        .arg(watch.steps().back())
        .arg(why);
}

} // namespace

QString unitName(TriggerLogic::Unit const& unit)
{
    return QStringLiteral("M%1").arg(unit.number);
}

unsigned unitBits(TriggerWatch const& watch)
{
    unsigned bits = 0;
    for (TriggerLogic::Unit const& unit : watch.trigger().units())
        bits |= unit.combination;
    return bits;
}

QString explainSentence(TriggerWatch const& watch, QStringList const& expressions)
{
    QString text;
    if (watch.isDone()) {
        text = firesText(watch);
    } else {
        text = whyNot(watch, expressions);
        if (!watch.triggers().empty())
            text =
                QStringLiteral("The trigger fires for %1 of %2 windows, last at sample %3; then %4")
                    .arg(watch.triggers().size())
                    .arg(watch.windows())
                    .arg(watch.triggers().back())
                    .arg(text);
    }
    text[0] = text.at(0).toUpper();
    return text + QLatin1Char('.');
}

} // namespace VEK::Cli
