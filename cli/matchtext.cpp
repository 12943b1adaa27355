#include "cli/matchtext.h"

#include "image/matchvalue.h"
#include "model/capturecore.h"

#include <QStringList>

namespace VEK::Cli {
namespace {

constexpr int ShortValue = 4; ///< Bits that read best as such.

/// "[7]" of "addr[7]", without the brackets; empty when it has none.
QString indexOf(QString const& name)
{
    int const bracket = name.lastIndexOf(QLatin1Char('['));
    return name.endsWith(QLatin1Char(']')) && bracket >= 0
               ? name.mid(bracket + 1, name.size() - bracket - 2)
               : QString();
}

QString itemText(SignalItem const& item)
{
    QString const name = item.text.isEmpty() ? item.name : item.text;
    if (!item.isBus())
        return name;
    QString const first = indexOf(item.signalList.first().name);
    QString const last = indexOf(item.signalList.last().name);
    if (first.isEmpty() || last.isEmpty())
        return name;
    return QStringLiteral("%1[%2:%3]").arg(name, first, last);
}

QString valueText(QString const& value, MatchUnit const& unit)
{
    int const width = unit.trigger->singleSignals().size();
    // as it is encoded: filled up in front, cut at the end
    QString const bits = value.rightJustified(width, QLatin1Char('0'), true);
    if (width <= ShortValue || holdsLetters(bits))
        return QStringLiteral("0b") + bits;
    return QStringLiteral("0x") + textOfBits(bits, 16);
}

} // namespace

QString portText(TriggerPort const& port)
{
    QStringList names;
    for (SignalItem const& item : port.signalList)
        names << itemText(item);
    return names.size() == 1
               ? names.first()
               : QLatin1Char('{') + names.join(QStringLiteral(", ")) + QLatin1Char('}');
}

QString matchText(MatchUnit const& unit)
{
    QString value = valueText(unit.value0, unit);
    if (unit.func == FuncInRange || unit.func == FuncNotInRange)
        value += QStringLiteral(" to ") + valueText(unit.value1, unit);
    return QStringLiteral("%1, %2, on %3")
        .arg(func2string(unit.func), value, portText(*unit.trigger));
}

} // namespace VEK::Cli
