#include "model/capturecore.h"

#include <algorithm>

namespace VEK {
namespace {

char const* const MatchTypeTexts[] = {"Basic", "Basic w/edges", "Extended", "Extended w/edges",
                                      "Range", "Range w/edges"};
static_assert(sizeof MatchTypeTexts / sizeof *MatchTypeTexts == MatchRangeEdges + 1);

char const* const MatchFuncTexts[] = {"==", "!=", ">", "<", ">=", "<=", "in range", "not in range"};
static_assert(sizeof MatchFuncTexts / sizeof *MatchFuncTexts == FuncNotInRange + 1);

/// The narrowest register field of a core.
constexpr int LeastShiftWidth = 16;

/// No counter is that wide. A file may say anything, and the whole image is made of such fields.
constexpr int MostCounterWidth = 4096;

template <typename Item>
Item* findByIndex(QList<Item*> const& items, int index)
{
    auto const found = std::find_if(items.begin(), items.end(),
                                    [index](Item const* item) { return item->index == index; });
    return found == items.end() ? nullptr : *found;
}

int flatCount(QList<SignalItem> const& items)
{
    int count = 0;
    for (SignalItem const& item : items)
        count += item.isBus() ? item.signalList.size() : 1;
    return count;
}

} // namespace

QList<SignalItem> flatSignals(QList<SignalItem> const& items)
{
    QList<SignalItem> flat;
    for (SignalItem const& item : items) {
        if (item.isBus())
            flat += item.signalList;
        else
            flat += item;
    }
    return flat;
}

QList<SignalItem> TriggerPort::singleSignals() const
{
    return flatSignals(signalList);
}

SxCore::SxCore(int index) : index(index)
{
    for (int i = 0; i < CoreUnitCount; ++i) {
        triggers.append(new TriggerPort(this, i));
        matchUnits.append(new MatchUnit(this, i));
    }
}

SxCore::~SxCore()
{
    qDeleteAll(matchUnits);
    qDeleteAll(triggers);
}

TriggerPort* SxCore::getTrigger(int index) const
{
    return findByIndex(triggers, index);
}

MatchUnit* SxCore::matchUnit(int index) const
{
    return findByIndex(matchUnits, index);
}

QList<TriggerPort*> SxCore::availableTriggers() const
{
    QList<TriggerPort*> ports;
    std::copy_if(triggers.begin(), triggers.end(), std::back_inserter(ports),
                 [](TriggerPort const* port) { return !port->signalList.isEmpty(); });
    return ports;
}

QList<MatchUnit*> SxCore::enabledMatchUnits() const
{
    QList<MatchUnit*> units;
    std::copy_if(matchUnits.begin(), matchUnits.end(), std::back_inserter(units),
                 [](MatchUnit const* unit) { return unit->enabled; });
    return units;
}

void SxCore::addExpression(QString const& text)
{
    if (!text.isEmpty())
        expressions.append(text);
}

void SxCore::setExpression(QString const& text, int i)
{
    if (i >= 0 && i < expressions.size())
        expressions[i] = text;
}

QList<SignalItem> SxCore::dataSignals() const
{
    return flatSignals(dataSignalList);
}

SignalItem SxCore::signalItemAt(int i) const
{
    if (i < 0)
        return SignalItem();
    for (SignalItem const& item : dataSignalList) {
        int const count = item.isBus() ? item.signalList.size() : 1;
        if (i < count)
            return item.isBus() ? item.signalList.at(i) : item;
        i -= count;
    }
    return SignalItem();
}

int SxCore::dataOutShiftWidth() const
{
    int width = std::max(LeastShiftWidth, flatCount(dataSignalList) + 1);
    for (MatchUnit const* unit : matchUnits) {
        if (unit->enabled && unit->counterEnable)
            width = std::max(width, std::min(unit->counterWidth, MostCounterWidth));
    }
    for (TriggerPort const* port : triggers)
        width = std::max(width, flatCount(port->signalList));
    return width;
}

QStringList SXCore_Lite::dataSignals() const
{
    QStringList names;
    for (SignalItem const& item : flatSignals(dataSignalList))
        names.append(item.name);
    return names;
}

QStringList SXCore_Lite::dataSignalsText() const
{
    QStringList texts;
    for (SignalItem const& item : flatSignals(dataSignalList))
        texts.append(item.text);
    return texts;
}

CompareException::CompareException(QString const& message)
    : message(message), m_text(message.toUtf8())
{}

QString type2string(MatchType type)
{
    bool const known = type >= MatchBasic && type <= MatchRangeEdges;
    return known ? QString::fromLatin1(MatchTypeTexts[type]) : QString();
}

QString func2string(MatchFunc func)
{
    bool const known = func >= FuncEqual && func <= FuncNotInRange;
    return known ? QString::fromLatin1(MatchFuncTexts[func]) : QString();
}

unsigned int fixedWindowNum(unsigned int n)
{
    if ((n & (n - 1)) == 0)
        return n;
    quint64 power = 1;
    while (power <= n)
        power <<= 1;
    return unsigned(power); // 0 above 2^31: no part of any memory
}

QList<MatchFunc> optionalFunctions(MatchType type)
{
    switch (type) {
    case MatchBasic:
    case MatchBasicEdges:
        return {FuncEqual, FuncNotEqual};
    case MatchExtended:
    case MatchExtendedEdges:
        return {FuncEqual, FuncNotEqual, FuncGreater, FuncLess, FuncGreaterEqual, FuncLessEqual};
    case MatchRange:
    case MatchRangeEdges:
        return {FuncEqual,        FuncNotEqual,  FuncGreater, FuncLess,
                FuncGreaterEqual, FuncLessEqual, FuncInRange, FuncNotInRange};
    }
    return {};
}

} // namespace VEK
