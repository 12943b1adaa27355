#include "image/registerimage.h"

#include "image/matchencoding.h"
#include "image/registermap.h"
#include "model/bits.h"
#include "model/capturecore.h"

#include <algorithm>

namespace VEK {
namespace {

/// Devices that take one record fewer after the trigger. TK-102 is not among them, although its
/// neighbours are; the set is exact.
char const* const ShorterDevices[] = {"TK-202", "TK-203", "TK-201", "TK-113", "TK-107", "TK-106",
                                      "TK-114", "TK-112", "TK-111", "TK-105", "TK-104", "TK-123",
                                      "TK-125", "TK-124", "TK-122", "TK-121", "TK-103", "TK-101"};

bool isShorterDevice(QString const& deviceName)
{
    return std::any_of(std::begin(ShorterDevices), std::end(ShorterDevices),
                       [&](char const* name) { return deviceName == QLatin1String(name); });
}

QBitArray numberWord(unsigned short address, unsigned int number, int width)
{
    return regWriteData(address, rightJustified(int32ToBit(number), width));
}

/// A core from a file has no flags, so a dynamic one gets 0 here while all its expressions are
/// loaded. A static core without expressions gets -1.
unsigned int expressionNumber(SxCore const& core)
{
    if (core.expressionType != ExpressionDynamic)
        return unsigned(core.expressions.size()) - 1;
    int const count = core.expressionEnabled.count(true);
    return count ? unsigned(count) - 1 : 0;
}

/// Samples to take once the trigger was seen. Unsigned, so that nonsense wraps and never overflows.
unsigned int afterTriggerNumber(SxCore const& core, QString const& deviceName, int fileKind)
{
    unsigned int number = unsigned(core.captureAmount) - unsigned(core.triggerPos);
    number -= core.expressionType == ExpressionDynamic ? 4 : 3;
    if (fileKind == FileKindVek && isShorterDevice(deviceName))
        number -= 1;
    return number;
}

void appendMatchUnit(QList<QBitArray>& words, MatchUnit const& unit, int width)
{
    unsigned const base = Register::MatchUnitBase + unsigned(unit.index) * Register::MatchUnitStep;
    auto const write = [&](unsigned offset, QBitArray const& vector) {
        words.append(regWriteData(static_cast<unsigned short>(base + offset),
                                  rightJustified(vector, width)));
    };
    QBitArray a, b, c;
    bitForM(&unit, a, b, c);
    write(Register::MatchUnitA, a);
    write(Register::MatchUnitB, b);
    write(Register::MatchUnitC, c);
    write(Register::MatchUnitControl, bitForMatchCtrl(&unit));
    if (unit.counterEnable) {
        unsigned const reload = unsigned(unit.counter) - 1;
        write(Register::MatchUnitCounter, int16ToBit(static_cast<unsigned short>(reload)));
    }
}

} // namespace

QBitArray coreSelectWord(int index)
{
    return combine(str2bit(QStringLiteral("1")), rightJustified(int32ToBit(unsigned(index)), 4));
}

QBitArray startRegisterWord(unsigned int value, int width)
{
    return numberWord(Register::Start, value, width);
}

QList<QBitArray> generateRegisterBit(SxCore const* core, QString const& deviceName, int fileKind)
{
    int const width = core->dataOutShiftWidth();
    QList<QBitArray> words{
        coreSelectWord(core->index),
        numberWord(Register::ExpressionCount, expressionNumber(*core), width),
        numberWord(Register::CaptureAmount, unsigned(core->captureAmount) - 1, width),
        numberWord(Register::AfterTrigger, afterTriggerNumber(*core, deviceName, fileKind), width),
        numberWord(Register::WindowCount, unsigned(core->windowNum) - 1, width)};
    for (MatchUnit const* unit : core->matchUnits) {
        if (unit->enabled && unit->trigger && !unit->trigger->signalList.isEmpty())
            appendMatchUnit(words, *unit, width);
    }
    return words;
}

} // namespace VEK
