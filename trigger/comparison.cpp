#include "trigger/comparison.h"

#include "image/matchencoding.h"
#include "model/bits.h"

namespace VEK::Trigger {
namespace {

QChar conditionOf(bool a, bool b, bool c)
{
    if (c)
        return QLatin1Char(a ? (b ? 'N' : 'F') : (b ? 'B' : 'R'));
    return QLatin1Char(b ? (a ? '1' : '0') : 'X');
}

} // namespace

bool isInUse(MatchUnit const* unit)
{
    return unit && unit->enabled && unit->trigger && !unit->trigger->signalList.isEmpty();
}

Comparison comparisonOf(MatchUnit const& unit)
{
    Comparison result;
    QBitArray a;
    QBitArray b;
    QBitArray c;
    bitForM(&unit, a, b, c);
    QBitArray const control = bitForMatchCtrl(&unit);
    result.func = MatchFunc(control.testBit(1) * 4 + control.testBit(2) * 2 + control.testBit(3));
    if (result.func <= FuncNotEqual) {
        for (int i = 0; i < a.size(); ++i)
            result.value0 += conditionOf(a.testBit(i), b.testBit(i), c.testBit(i));
    } else {
        bool const isUpper = result.func == FuncLess || result.func == FuncLessEqual;
        result.value0 = bit2str(isUpper ? b : a);
        if (result.func >= FuncInRange)
            result.value1 = bit2str(b);
    }
    if (result.func >= FuncInRange && result.value1 < result.value0) { // never within it
        result.func = result.func == FuncInRange ? FuncNotEqual : FuncEqual;
        result.value0.fill(QLatin1Char('X'));
        result.value1.clear();
    }
    if (unit.counterEnable) {
        result.count = static_cast<unsigned short>(unsigned(unit.counter) - 1) + 1;
        result.inRow = control.testBit(0) && result.count > 1;
    }
    return result;
}

bool operator==(Comparison const& a, Comparison const& b)
{
    return a.func == b.func && a.value0 == b.value0 && a.value1 == b.value1 && a.count == b.count &&
           a.inRow == b.inRow;
}

} // namespace VEK::Trigger
