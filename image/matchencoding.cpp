#include "image/matchencoding.h"

#include "image/registermap.h"
#include "model/bits.h"
#include "model/capturecore.h"

#include <algorithm>

namespace VEK {
namespace {

constexpr int SiteCount = 16;

QBitArray commandWord(char const* opcode, unsigned short address, QBitArray const& rest)
{
    return combine({str2bit(QString::fromLatin1(opcode)), int16ToBit(address), rest});
}

/// The bits A, B and C of one position of an equality match.
struct MatchCode
{
    bool a, b, c;
};

/// C: the position watches an edge. Without an edge B compares and A gives the level.
MatchCode matchCode(QChar character)
{
    switch (character.unicode()) {
    case '0':
        return {false, true, false};
    case '1':
        return {true, true, false};
    case 'R':
        return {false, false, true};
    case 'F':
        return {true, false, true};
    case 'B':
        return {false, true, true};
    case 'N':
        return {true, true, true};
    default: // X, and whatever else a file holds
        return {false, false, false};
    }
}

/// The positions that hold a `1`; X is 0 here.
QBitArray ones(QString const& value)
{
    QBitArray bits(value.size());
    for (int i = 0; i < value.size(); ++i)
        bits.setBit(i, value.at(i) == QLatin1Char('1'));
    return bits;
}

} // namespace

QBitArray regWriteData(unsigned short address, QBitArray const& data)
{
    return commandWord(Opcode::Write, address, data);
}

QBitArray regSelectData(unsigned short address)
{
    return commandWord(Opcode::Select, address, QBitArray());
}

QBitArray brustReadData(unsigned short address, unsigned short count)
{
    return commandWord(Opcode::Burst, address, int16ToBit(count));
}

void bitForM(MatchUnit const* unit, QBitArray& a, QBitArray& b, QBitArray& c)
{
    int const n = unit->trigger->singleSignals().size();
    a = b = c = QBitArray(n);
    QString const value0 = unit->value0.rightJustified(n, QLatin1Char('0'), true);
    QString const value1 = unit->value1.rightJustified(n, QLatin1Char('0'), true);
    switch (unit->func) {
    case FuncEqual:
    case FuncNotEqual:
        for (int i = 0; i < n; ++i) {
            MatchCode const code = matchCode(value0.at(i));
            a.setBit(i, code.a);
            b.setBit(i, code.b);
            c.setBit(i, code.c);
        }
        break;
    case FuncGreater:
    case FuncGreaterEqual:
        a = ones(value0);
        break;
    case FuncLess:
    case FuncLessEqual:
        b = ones(value0);
        break;
    default:
        a = ones(value0);
        b = ones(value1);
    }
}

QBitArray bitForMatchCtrl(MatchUnit const* unit)
{
    QBitArray control(4);
    control.setBit(0, unit->counterEnable && unit->continuous);
    if (unit->func >= FuncEqual && unit->func <= FuncNotInRange) {
        for (int i = 0; i < 3; ++i)
            control.setBit(3 - i, (unit->func >> i) & 1);
    }
    return control;
}

QBitArray int16ShiftByUsedSite(int value, QBitArray const& mask)
{
    QBitArray result(SiteCount);
    for (int i = 0; i < std::min(SiteCount, mask.size()); ++i) {
        if (!mask.testBit(i))
            continue;
        result.setBit(i, value & 1);
        value >>= 1;
    }
    return result;
}

int bitFilter(int value, QBitArray const& mask)
{
    int result = 0;
    int j = 0;
    for (int i = 0; i < std::min(mask.size(), 32); ++i) {
        if (mask.testBit(i))
            result |= ((value >> i) & 1) << j++;
    }
    return result;
}

QBitArray bitarratReverse(QBitArray const& bits)
{
    return reverse(bits);
}

} // namespace VEK
