#include "cli/explanation.h"

#include "cli/explainsentence.h"

#include <QJsonArray>

#include <algorithm>

namespace VEK::Cli {

using Simulator::MatchLogic;
using Simulator::TriggerLogic;
using Simulator::TruthTable;

namespace {

QString seenText(Sighting const& seen)
{
    if (seen.count == 0)
        return QStringLiteral("never");
    if (seen.count == 1)
        return QStringLiteral("once, at sample %1").arg(seen.first);
    return QStringLiteral("%1, at samples %2 to %3")
        .arg(timesText(seen.count))
        .arg(seen.first)
        .arg(seen.last);
}

QJsonObject seenJson(Sighting const& seen)
{
    QJsonObject json{{QStringLiteral("count"), seen.count}};
    if (seen.count > 0) {
        json.insert(QStringLiteral("first"), seen.first);
        json.insert(QStringLiteral("last"), seen.last);
    }
    return json;
}

QJsonArray numbers(std::vector<qint64> const& values)
{
    QJsonArray array;
    for (qint64 const value : values)
        array.append(value);
    return array;
}

/// The nearest that a unit came.
class NearestText
{
public:
    NearestText(TriggerWatch::UnitStory const& story, QStringList& lines, QJsonObject& json)
        : m_text(story.text), m_watch(*story.watch), m_lines(lines)
    {
        QJsonArray misses;
        for (UnitWatch::Miss const& miss : m_watch.misses())
            misses.append(tellMiss(miss));
        if (!misses.isEmpty())
            json.insert(QStringLiteral("nearest"), misses);
        tellTerms(json);
        tellExtreme(QStringLiteral("below"), m_watch.below(), json);
        tellExtreme(QStringLiteral("above"), m_watch.above(), json);
        tellValues(json);
    }

private:
    QJsonObject tellMiss(UnitWatch::Miss const& miss)
    {
        QJsonArray failed;
        QStringList texts;
        for (std::size_t i = 0; i < m_text.terms().size(); ++i) {
            if (!(miss.terms >> std::min<std::size_t>(i, 63) & 1))
                continue;
            MatchTerm const& term = m_text.terms()[i];
            failed.append(term.present);
            texts << term.present + wasText(term, miss);
        }
        m_lines << QStringLiteral("nearest: all but %1 %2; sample %3: %4")
                       .arg(failed.size() == 1 ? QStringLiteral("one part held")
                                               : QStringLiteral("%1 parts held").arg(failed.size()),
                            timesText(miss.seen.count))
                       .arg(miss.sample)
                       .arg(texts.join(QStringLiteral("; ")));
        return {{QStringLiteral("failed"), failed},
                {QStringLiteral("samples"), seenJson(miss.seen)},
                {QStringLiteral("sample"), miss.sample},
                {QStringLiteral("wrong_bits"), bitsText(miss.wrong)},
                {QStringLiteral("value"), bitsText(miss.now)},
                {QStringLiteral("value_before"), bitsText(miss.before)}};
    }

    /// One character for each signal of the port, the first one leftmost.
    QString bitsText(std::vector<quint64> const& words) const
    {
        QString text;
        for (int i = 0; i < m_text.width(); ++i)
            text += QLatin1Char(words[std::size_t(i / 64)] >> (63 - i % 64) & 1 ? '1' : '0');
        return text;
    }

    QString wasText(MatchTerm const& term, UnitWatch::Miss const& miss) const
    {
        PortGroup const& group = m_text.groups()[term.group];
        if (term.isEdge)
            return QStringLiteral(", was %1 after %2")
                .arg((miss.now[term.word] & term.mask) != 0)
                .arg((miss.before[term.word] & term.mask) != 0);
        QString text =
            QStringLiteral(", was ") + numberText(group.value(miss.now.data()), group.width);
        quint64 const wrong = (miss.wrong[group.word()] & term.mask) >> group.shift();
        QStringList bits;
        for (int i = group.width; i-- > 0 && group.width > 1;)
            if (wrong >> i & 1)
                bits << QString::number(i);
        if (!bits.isEmpty())
            text += QStringLiteral(" (bit %1 differs)").arg(bits.join(QStringLiteral(", ")));
        return text;
    }

    void tellTerms(QJsonObject& json)
    {
        QJsonArray parts;
        std::vector<qint64> const& held = m_watch.held();
        bool const isEqual = !m_watch.misses().empty();
        for (std::size_t i = 0; isEqual && i < held.size(); ++i) {
            MatchTerm const& term = m_text.terms()[i];
            parts.append(QJsonObject{{QStringLiteral("part"), term.present},
                                     {QStringLiteral("count"), held[i]}});
            if (held.size() > 1)
                m_lines << QStringLiteral("%1: %2").arg(
                    term.present, held[i] ? timesText(held[i]) : QStringLiteral("never"));
        }
        if (isEqual)
            json.insert(QStringLiteral("parts"), parts);
    }

    void tellExtreme(QString const& key, UnitWatch::Extreme const& extreme, QJsonObject& json)
    {
        if (extreme.sample < 0)
            return;
        QString const value = numberText(extreme.value.data(), m_text.width());
        m_lines << QStringLiteral("nearest from %1: %2, at sample %3")
                       .arg(key, value)
                       .arg(extreme.sample);
        json.insert(QStringLiteral("nearest_") + key,
                    QJsonObject{{QStringLiteral("value"), value},
                                {QStringLiteral("sample"), extreme.sample}});
    }

    void tellValues(QJsonObject& json)
    {
        QJsonObject values;
        for (std::size_t i = 0; i < m_text.groups().size(); ++i) {
            PortGroup const& group = m_text.groups()[i];
            ValueSet const& taken = m_watch.values(i);
            m_lines << QStringLiteral("%1 was %2").arg(group.label, taken.text(group.width));
            QJsonArray list;
            for (quint64 const value : taken.values())
                list.append(numberText(value, group.width));
            QJsonObject entry{
                {QStringLiteral("lowest"), numberText(taken.lowest(), group.width)},
                {QStringLiteral("highest"), numberText(taken.highest(), group.width)}};
            if (!list.isEmpty())
                entry.insert(QStringLiteral("values"), list);
            values.insert(group.label, entry);
        }
        json.insert(QStringLiteral("values"), values);
    }

    MatchWords const& m_text;
    UnitWatch const& m_watch;
    QStringList& m_lines;
};

QJsonObject tellCounter(TriggerLogic::Unit const& unit, TriggerWatch::Counter const& counter,
                        Sighting const& fired, QStringList& lines)
{
    quint64 const needed = unit.logic.needed();
    QString text = QStringLiteral("counter: %1 of %2").arg(counter.highest).arg(needed);
    if (counter.sample >= 0)
        text += QStringLiteral(" at most, at sample %1").arg(counter.sample);
    lines << text + (fired.count ? QStringLiteral("; fired ") + seenText(fired) : QString());
    QJsonObject json{{QStringLiteral("needed"), qint64(needed)},
                     {QStringLiteral("highest"), qint64(counter.highest)},
                     {QStringLiteral("continuous"), unit.logic.isContinuous()}};
    if (counter.sample >= 0)
        json.insert(QStringLiteral("sample"), counter.sample);
    return json;
}

QJsonObject tellUnit(TriggerWatch const& watch, std::size_t place, QStringList& lines)
{
    TriggerLogic::Unit const& unit = watch.trigger().units()[place];
    TriggerWatch::UnitStory const& story = watch.units()[place];
    Sighting const matched = watch.matched().with(unit.combination);
    Sighting const fired = watch.fired().with(unit.combination);
    QString condition = story.text.present();
    if (unit.logic.hasCounter())
        condition += QStringLiteral(", %1 times%2")
                         .arg(unit.logic.needed())
                         .arg(unit.logic.isContinuous() ? QStringLiteral(" running") : QString());
    lines << QStringLiteral("%1: %2").arg(unitName(unit), condition);
    QJsonObject json{{QStringLiteral("unit"), unitName(unit)},
                     {QStringLiteral("condition"), story.text.present()},
                     {QStringLiteral("matched"), seenJson(matched)},
                     {QStringLiteral("fired"), seenJson(fired)}};
    QStringList details{QStringLiteral("matched ") + seenText(matched)};
    if (unit.logic.hasCounter())
        json.insert(QStringLiteral("counter"), tellCounter(unit, story.counter, fired, details));
    if (story.watch && watch.samples() > 0)
        NearestText(story, details, json);
    for (QString const& detail : details)
        lines << QStringLiteral("    ") + detail;
    return json;
}

/// Whether a step's expression was true, and what kept it from that.
QJsonObject tellExpression(TriggerWatch const& watch, quint64 stage, QString const& text,
                           QStringList& lines)
{
    QJsonObject json{{QStringLiteral("expression"), text},
                     {QStringLiteral("step"), qint64(stage) + 1}};
    TruthTable const* const table = watch.trigger().table(stage);
    bool const isAlways = watch.trigger().alwaysFires();
    if (stage >= watch.trigger().stages() || (!table && !isAlways)) {
        lines << QStringLiteral("%1: not looked at, the core takes %2 expressions")
                     .arg(text)
                     .arg(watch.trigger().stages());
        json.insert(QStringLiteral("used"), false);
        return json;
    }
    Sighting const seen = table ? watch.fired().with(*table) : watch.fired().with(0u);
    lines << QStringLiteral("%1: true %2").arg(text, seenText(seen));
    json.insert(QStringLiteral("true"), seenJson(seen));
    if (!table || seen.count > 0)
        return json;
    ExpressionGap const gap = gapOf(*table, unitBits(watch), watch.fired());
    QJsonArray kept;
    for (TriggerLogic::Unit const& unit : watch.trigger().units()) {
        Sighting const alone =
            gap.alone[std::size_t(qCountTrailingZeroBits(quint32(unit.combination)))];
        if (alone.count == 0)
            continue;
        lines << QStringLiteral("    %1 alone kept it from that %2")
                     .arg(unitName(unit), seenText(alone));
        QJsonObject entry = seenJson(alone);
        entry.insert(QStringLiteral("unit"), unitName(unit));
        kept.append(entry);
    }
    json.insert(QStringLiteral("kept_false_alone"), kept);
    return json;
}

QJsonObject tellSequence(TriggerWatch const& watch, QStringList& lines)
{
    quint64 const stages = watch.trigger().stages();
    qint64 const reached = qint64(std::min<quint64>(watch.steps().size() + 1, stages));
    QStringList samples;
    for (qint64 const sample : watch.steps())
        samples << QString::number(sample);
    lines << QStringLiteral("sequence: step %1 of %2%3")
                 .arg(reached)
                 .arg(stages)
                 .arg(samples.isEmpty() ? QString()
                                        : QStringLiteral(", went on at sample ") +
                                              samples.join(QStringLiteral(", ")));
    return {{QStringLiteral("steps"), qint64(stages)},
            {QStringLiteral("reached"), reached},
            {QStringLiteral("samples"), numbers(watch.steps())}};
}

} // namespace

Explanation explanationOf(TriggerWatch const& watch, QStringList const& expressions)
{
    Explanation told;
    told.fires = watch.isDone();
    told.sentence = explainSentence(watch, expressions);
    QJsonArray units;
    for (std::size_t i = 0; i < watch.units().size(); ++i)
        units.append(tellUnit(watch, i, told.lines));
    QJsonArray list;
    for (int i = 0; i < expressions.size(); ++i)
        list.append(tellExpression(watch, quint64(i), expressions.at(i), told.lines));
    told.json = {{QStringLiteral("samples"), watch.samples()},
                 {QStringLiteral("fires"), told.fires},
                 {QStringLiteral("windows"), qint64(watch.windows())},
                 {QStringLiteral("triggers"), numbers(watch.triggers())},
                 {QStringLiteral("units"), units},
                 {QStringLiteral("expressions"), list},
                 {QStringLiteral("sentence"), told.sentence}};
    if (watch.trigger().stages() > 1)
        told.json.insert(QStringLiteral("sequence"), tellSequence(watch, told.lines));
    return told;
}

} // namespace VEK::Cli
