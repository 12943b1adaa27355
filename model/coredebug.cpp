#include "model/coredebug.h"

#include "model/capturecore.h"

namespace VEK {
namespace {

constexpr int RuleLength = 58;

QString rule(char character)
{
    return QString(RuleLength, QLatin1Char(character)) + QLatin1Char('\n');
}

char const* word(bool flag)
{
    return flag ? "true" : "false";
}

QString joinedNames(QList<SignalItem> const& items)
{
    QStringList names;
    for (SignalItem const& item : items)
        names.append(item.name);
    return names.join(QStringLiteral(", "));
}

/// The words of a part of a core, without the blank that a QDebug leaves behind.
template <typename Part>
QString line(Part const& part)
{
    QString text;
    QDebug(&text) << part;
    return text.trimmed() + QLatin1Char('\n');
}

} // namespace

QDebug operator<<(QDebug debug, MatchUnit const& unit)
{
    QDebugStateSaver const saver(debug);
    debug.noquote() << "Match Unit:" << QStringLiteral("M%1").arg(unit.index)
                    << "Enable:" << word(unit.enabled)
                    << "Match Type:" << type2string(unit.matchType)
                    << "Match Func:" << func2string(unit.func) << "Value0:" << unit.value0
                    << "Value1:" << unit.value1 << "Counter Enable:" << word(unit.counterEnable)
                    << "Counter Width:" << unit.counterWidth << "Counter:" << unit.counter
                    << "Continuous" << word(unit.continuous) << "Bind:";
    if (unit.trigger)
        debug << *unit.trigger;
    else
        debug << "null";
    return debug;
}

QDebug operator<<(QDebug debug, TriggerPort const& port)
{
    QDebugStateSaver const saver(debug);
    QList<SignalItem> const items = port.singleSignals();
    debug.noquote() << "Trigger Port:" << QStringLiteral("T%1").arg(port.index)
                    << "Width:" << items.size() << "Singals:" << joinedNames(items);
    return debug;
}

QDebug operator<<(QDebug debug, SxCore const& core)
{
    QDebugStateSaver const saver(debug);
    debug.noquote().nospace() << rule('=') << "SX Core\n"
                              << "Sample Clock: " << core.sampleClock << '\n'
                              << "Trigger Clk Type: " << core.trigType << '\n'
                              << "Stroage Depth: " << core.storageDepth << '\n'
                              << "Window Num: " << core.windowNum << '\n'
                              << "Capture Amount: " << core.captureAmount << '\n'
                              << "Trigger Pos: " << core.triggerPos << '\n'
                              << "Data Signals: " << joinedNames(core.dataSignals()) << '\n'
                              << "Trigger Expressions: "
                              << core.expressions.join(QStringLiteral(", ")) << '\n';
    for (TriggerPort const* port : core.availableTriggers())
        debug << rule('-') << line(*port);
    for (MatchUnit const* unit : core.enabledMatchUnits())
        debug << rule('-') << line(*unit);
    debug << rule('=');
    return debug;
}

QDebug operator<<(QDebug debug, SXCore_Lite const& core)
{
    QDebugStateSaver const saver(debug);
    debug.noquote().nospace() << rule('=') << "SX Core\n"
                              << "Sample Clock: " << core.sampleClock << '\n'
                              << "Trigger Clk Type: " << core.trigType << '\n'
                              << "Capture Amount: " << core.captureAmount << '\n'
                              << "Data Signals: " << core.dataSignals().join(QStringLiteral(", "))
                              << '\n'
                              << rule('=');
    return debug;
}

} // namespace VEK
