#include "trigger/leaf.h"

#include "image/matchvalue.h"
#include "trigger/lexer.h"

#include <algorithm>

namespace VEK::Trigger {
namespace {

/// The condition that holds when both do; a null character when no single one says that.
QChar both(QChar a, QChar b)
{
    if (a == b)
        return a;
    static struct
    {
        char const* pair;
        char result;
    } const table[] = {{"1R", 'R'}, {"0F", 'F'}, {"1B", 'R'},
                       {"0B", 'F'}, {"RB", 'R'}, {"FB", 'F'}};
    for (auto const& [pair, result] : table) {
        QString const signs = QString::fromLatin1(pair);
        if ((a == signs.at(0) && b == signs.at(1)) || (a == signs.at(1) && b == signs.at(0)))
            return QLatin1Char(result);
    }
    return QChar();
}

/// The opposite of one bit's condition, if that is one, too.
QChar opposite(QChar condition)
{
    QString const pairs = QStringLiteral("0110BNNB");
    for (int i = 0; i < pairs.size(); i += 2) {
        if (pairs.at(i) == condition)
            return pairs.at(i + 1);
    }
    return QChar();
}

QString bitsOf(TriggerValue const& value, int width)
{
    QString const bits =
        value.radix == 2 ? value.digits : changeRadix(value.digits, value.radix, 2, width);
    QString significant = bits;
    while (significant.size() > 1 && significant.startsWith(QLatin1Char('0')))
        significant.remove(0, 1);
    if (significant.size() > width)
        failAt(value.place, QStringLiteral("the value has %1 bits, and what it is compared with %2")
                                .arg(significant.size())
                                .arg(width));
    return BitWidthAdjust(significant, width);
}

QString numberOf(TriggerValue const& value, int width)
{
    if (value.digits.contains(QLatin1Char('X')))
        failAt(value.place, QStringLiteral("x stands for any bit behind == and != only"));
    return bitsOf(value, width);
}

void setConditions(Leaf& leaf, QString const& conditions, TriggerPlace place)
{
    for (int i = 0; i < leaf.nets.size(); ++i) {
        QChar const wanted = conditions.at(i);
        if (wanted == QLatin1Char('X'))
            continue;
        QString const& net = leaf.nets.at(i);
        QChar const condition =
            leaf.bits.contains(net) ? both(leaf.bits.value(net), wanted) : wanted;
        if (condition.isNull())
            failAt(place,
                   QStringLiteral("\"%1\" stands there twice, with different values").arg(net));
        leaf.bits.insert(net, condition);
    }
}

void setEdge(Leaf& leaf, TriggerTestKind kind)
{
    char const* const word = kind == TriggerTestKind::Rises   ? "rises"
                             : kind == TriggerTestKind::Falls ? "falls"
                                                              : "changes";
    if (leaf.nets.size() > 1)
        failAt(leaf.place,
               QStringLiteral("%1 is for one bit, and this has %2: pick one, such as [0]")
                   .arg(QLatin1String(word))
                   .arg(leaf.nets.size()));
    leaf.bits.insert(leaf.nets.first(), QLatin1Char(kind == TriggerTestKind::Rises   ? 'R'
                                                    : kind == TriggerTestKind::Falls ? 'F'
                                                                                     : 'B'));
}

void setComparison(Leaf& leaf, TriggerTest const& test)
{
    int const width = leaf.nets.size();
    if (test.func == FuncEqual || test.func == FuncNotEqual) {
        setConditions(leaf, bitsOf(test.value0, width), test.value0.place);
        if (test.func == FuncNotEqual)
            complement(leaf);
        return;
    }
    leaf.isNumber = true;
    leaf.value0 = numberOf(test.value0, width);
    leaf.func = test.func;
    if (test.func == FuncInRange || test.func == FuncNotInRange) {
        leaf.value1 = numberOf(test.value1, width);
        if (leaf.value1 < leaf.value0)
            failAt(test.value1.place,
                   QStringLiteral("the range is empty: its upper bound is below the lower one"));
    }
    leaf.isNegated =
        test.func == FuncGreaterEqual || test.func == FuncLessEqual || test.func == FuncNotInRange;
    if (test.func == FuncGreaterEqual)
        leaf.func = FuncLess;
    else if (test.func == FuncLessEqual)
        leaf.func = FuncGreater;
    else if (test.func == FuncNotInRange)
        leaf.func = FuncInRange;
}

} // namespace

bool Leaf::needsEdges() const
{
    return std::any_of(bits.begin(), bits.end(),
                       [](QChar condition) { return condition.isLetter(); });
}

bool Leaf::isConstant() const
{
    return !isNumber && bits.isEmpty() && !isCounted();
}

MatchFunc Leaf::unitFunc(bool opposite) const
{
    if (isNegated == opposite)
        return func;
    switch (func) {
    case FuncGreater:
        return FuncLessEqual;
    case FuncLess:
        return FuncGreaterEqual;
    case FuncInRange:
        return FuncNotInRange;
    default:
        return FuncNotEqual;
    }
}

bool isSameTest(Leaf const& a, Leaf const& b)
{
    if (a.isNumber != b.isNumber || a.count != b.count)
        return false;
    if (a.isCounted() && (a.inRow != b.inRow || a.isNegated != b.isNegated))
        return false;
    if (a.isNumber)
        return a.nets == b.nets && a.func == b.func && a.value0 == b.value0 && a.value1 == b.value1;
    // what is always true watches its nets for the count's sake alone
    return a.bits == b.bits && (!a.bits.isEmpty() || a.nets == b.nets);
}

void complement(Leaf& leaf)
{
    QChar const single = leaf.bits.size() == 1 ? opposite(leaf.bits.first()) : QChar();
    if (leaf.isNumber || single.isNull())
        leaf.isNegated = !leaf.isNegated;
    else
        leaf.bits.first() = single;
}

std::optional<Leaf> merged(Leaf const& a, Leaf const& b)
{
    Leaf result = a;
    for (QString const& net : b.nets) {
        if (!result.nets.contains(net))
            result.nets.append(net);
    }
    for (auto bit = b.bits.begin(); bit != b.bits.end(); ++bit) {
        QChar const condition =
            a.bits.contains(bit.key()) ? both(a.bits.value(bit.key()), bit.value()) : bit.value();
        if (condition.isNull())
            return std::nullopt;
        result.bits.insert(bit.key(), condition);
    }
    int const end = std::max(a.place.position + a.place.length, b.place.position + b.place.length);
    result.place.position = std::min(a.place.position, b.place.position);
    result.place.length = end - result.place.position;
    return result;
}

Leaf leafOf(TriggerTest const& test, QStringList const& nets, TriggerPlace place)
{
    Leaf leaf;
    leaf.nets = nets;
    leaf.place = place;
    if (test.kind == TriggerTestKind::Compare) {
        setComparison(leaf, test);
    } else if (test.kind != TriggerTestKind::High) {
        setEdge(leaf, test.kind);
    } else if (nets.size() > 1) {
        failAt(place,
               QStringLiteral("this has %1 bits: compare it, such as == 0x5A").arg(nets.size()));
    } else {
        leaf.bits.insert(nets.first(), QLatin1Char('1'));
    }
    return leaf;
}

} // namespace VEK::Trigger
