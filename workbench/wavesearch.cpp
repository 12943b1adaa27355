#include "workbench/wavesearch.h"

#include "trigger/binding.h"
#include "trigger/lexer.h"
#include "workbench/samplebits.h"

#include <QRegularExpression>

using namespace VEK;
using Trigger::Formula;
using Trigger::Leaf;

namespace {

class Searching
{
public:
    Searching(SearchedSamples const& searched, QVector<Leaf> const& leaves)
        : m_searched(searched), m_leaves(leaves)
    {}

    SampleBits truth(Formula const& formula) const
    {
        switch (formula.kind) {
        case Formula::False:
        case Formula::True:
            return {m_searched.length, formula.kind == Formula::True};
        case Formula::Variable:
            return truth(m_leaves.at(formula.variable));
        case Formula::Not:
            return ~truth(formula.children.front());
        case Formula::And:
        case Formula::Xor:
        case Formula::Or:
            break;
        }
        SampleBits result = truth(formula.children.front());
        for (std::size_t i = 1; i < formula.children.size(); ++i) {
            SampleBits const other = truth(formula.children[i]);
            if (formula.kind == Formula::And)
                result &= other;
            else if (formula.kind == Formula::Or)
                result |= other;
            else
                result ^= other;
        }
        return result;
    }

private:
    SampleBits bitsOf(QString const& net) const
    {
        return SampleBits(m_searched.samples.value(net));
    }

    SampleBits truth(Leaf const& leaf) const
    {
        SampleBits const result = leaf.isNumber ? number(leaf) : conditions(leaf);
        return leaf.isNegated ? ~result : result;
    }

    SampleBits number(Leaf const& leaf) const
    {
        QVector<SampleBits> bits;
        for (QString const& net : leaf.nets)
            bits << bitsOf(net);
        switch (leaf.func) {
        case FuncGreater:
            return isAbove(bits, leaf.value0);
        case FuncLessEqual:
            return ~isAbove(bits, leaf.value0);
        case FuncLess:
            return isBelow(bits, leaf.value0);
        case FuncGreaterEqual:
            return ~isBelow(bits, leaf.value0);
        default:
            break;
        }
        SampleBits outside = isBelow(bits, leaf.value0);
        outside |= isAbove(bits, leaf.value1);
        return leaf.func == FuncInRange ? ~outside : outside;
    }

    SampleBits conditions(Leaf const& leaf) const
    {
        SampleBits result(m_searched.length, true);
        for (auto it = leaf.bits.begin(); it != leaf.bits.end(); ++it)
            result &= condition(bitsOf(it.key()), it.value());
        return result;
    }

    SampleBits condition(SampleBits const& bits, QChar wanted) const
    {
        if (wanted == QLatin1Char('0') || wanted == QLatin1Char('1'))
            return wanted == QLatin1Char('1') ? bits : ~bits;
        SampleBits result = bits;
        result ^= bits.before();
        bool const isNoEdge = wanted == QLatin1Char('N');
        if (wanted == QLatin1Char('R'))
            result &= bits;
        else if (wanted == QLatin1Char('F'))
            result &= ~bits;
        else if (isNoEdge)
            result = ~result;
        for (int start = 0; start < m_searched.length; start += m_searched.windowLength)
            result.set(start, isNoEdge); // what was before it is in another time
        return result;
    }

    SearchedSamples const& m_searched;
    QVector<Leaf> const& m_leaves;
};

} // namespace

SearchResult findSamples(QString const& text, int longerThan, SearchedSamples const& searched)
{
    SearchResult result;
    TriggerSyntax const syntax = parseTrigger(text);
    if (!syntax.isOk() || searched.length == 0) {
        result.errors = syntax.errors;
        return result;
    }
    SxCore core(0);
    core.dataSignalList = searched.items;
    Trigger::BoundTrigger const bound = Trigger::bindTrigger(syntax, core);
    result.errors = bound.errors;
    if (bound.steps.size() > 1)
        result.errors.append({bound.places.at(1).position, bound.places.at(1).length,
                              QStringLiteral("a search has one step, and this is a sequence")});
    for (Leaf const& leaf : bound.leaves)
        if (leaf.isCounted())
            result.errors.append({leaf.place.position, leaf.place.length,
                                  QStringLiteral("a search does not count: next goes from one hit "
                                                 "to the other")});
    if (result.errors.isEmpty())
        result.hits = Searching(searched, bound.leaves)
                          .truth(bound.steps.front())
                          .stretches(longerThan, searched.windowLength);
    return result;
}

QString textForRows(QString const& text, QStringList const& names)
{
    static QRegularExpression const form(
        QStringLiteral("\\A\\s*(==|!=|<=?|>=?|(in|not\\s+in|rises|falls|changes)\\b)"));
    if (names.isEmpty() || !form.match(text).hasMatch())
        return text;
    QStringList tests;
    for (QString const& name : names)
        tests << Trigger::writtenName(name) + QLatin1Char(' ') + text.trimmed();
    return tests.join(QStringLiteral(" & "));
}
