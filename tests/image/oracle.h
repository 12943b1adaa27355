#pragma once

#include "tests/support/randomcore.h"

#include <QStringList>

#include <algorithm>

/// The register image worked out once more, on text with one character a bit.
namespace oracle {

inline QString field(QString const& bits, int width)
{
    return (QString(width, '0') + bits).right(width);
}

inline QString number(quint64 value, int width)
{
    return field(QString::number(value, 2), width);
}

inline QString write(int address, QString const& data)
{
    return "01001" + number(unsigned(address), 16) + data;
}

inline int bitCount(QList<VEK::SignalItem> const& items)
{
    int count = 0;
    for (VEK::SignalItem const& item : items)
        count += std::max(1, item.signalList.size());
    return count;
}

inline int fieldWidth(VEK::SxCore const& core)
{
    int width = std::max(16, bitCount(core.dataSignalList) + 1);
    for (int i = 0; i < 16; ++i) {
        VEK::MatchUnit const& unit = *core.matchUnits.at(i);
        bool const counts = unit.enabled && unit.counterEnable;
        width = std::max(
            {width, bitCount(core.triggers.at(i)->signalList), counts ? unit.counterWidth : 0});
    }
    return width;
}

/// Indexes of the match units that are in use, ascending.
inline QList<int> usedUnits(VEK::SxCore const& core)
{
    QList<int> units;
    for (VEK::MatchUnit const* unit : core.matchUnits) {
        if (unit->enabled && unit->trigger && bitCount(unit->trigger->signalList))
            units.append(unit->index);
    }
    return units;
}

/// A match value fitted to n characters, each looked up in `from` and taken from `to`, else 0.
inline QString mapped(QString value, int n, QString const& from, QString const& to)
{
    value = value.size() > n ? value.left(n) : QString(n - value.size(), '0') + value;
    for (QChar& c : value)
        c = from.contains(c) ? to.at(from.indexOf(c)) : QChar('0');
    return value;
}

inline QStringList unitWords(VEK::MatchUnit const& unit, int width)
{
    int const n = bitCount(unit.trigger->signalList);
    int const func = unit.func;
    QStringList fields{"", "", "", ""};
    if (func == 0 || func == 1) {
        QString const codes[] = {"010101", "110011", "001111"};
        for (int vector = 0; vector < 3; ++vector)
            fields[vector] = mapped(unit.value0, n, "01RFBN", codes[vector]);
    } else {
        bool const upper = func == 3 || func == 5;
        fields[upper ? 1 : 0] = mapped(unit.value0, n, "1", "1");
        if (!upper && func != 2 && func != 4)
            fields[1] = mapped(unit.value1, n, "1", "1");
    }
    fields[3] = (unit.counterEnable && unit.continuous ? "1" : "0") +
                number(func >= 0 && func < 8 ? unsigned(func) : 0, 3);
    if (unit.counterEnable)
        fields.append(number(quint64(qint64(unit.counter) - 1), 16));
    QStringList words;
    for (int i = 0; i < fields.size(); ++i)
        words.append(write((16 + unit.index) * 16 + i, field(fields.at(i), width)));
    return words;
}

inline QStringList registerWords(VEK::SxCore const& core, bool shorterDevice)
{
    int const width = fieldWidth(core);
    bool const dynamic = core.expressionType == 1;
    int const expressions =
        dynamic ? std::max(1, int(core.expressionEnabled.count(true))) : core.expressions.size();
    int const after = core.captureAmount - core.triggerPos - 3 - dynamic - shorterDevice;
    QStringList words("1" + number(unsigned(core.index), 4));
    int address = 32;
    for (int value : {expressions - 1, core.captureAmount - 1, after, core.windowNum - 1})
        words.append(write(address++, number(quint32(value), width)));
    for (int unit : usedUnits(core))
        words += unitWords(*core.matchUnits.at(unit), width);
    return words;
}

/// A well-formed expression over `units` without a double negation.
inline QString randomExpression(randomcore::Draw& draw, QList<int> const& units, int depth = 3)
{
    if (depth == 0 || draw.chance(20))
        return (draw.chance(30) ? "!M" : "M") + QString::number(draw.from(units));
    QString const text = randomExpression(draw, units, depth - 1) + draw.oneOf("&|^") +
                         randomExpression(draw, units, depth - 1);
    return draw.chance(50) ? (draw.chance(30) ? "!(" : "(") + text + ")" : text;
}

} // namespace oracle
