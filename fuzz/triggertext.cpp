// The text of a trigger, compiled for a core with all kinds of units: what compiles is printed, and
// that compiles to the same units.

#include "model/standardfile.h"
#include "trigger/trigger.h"

#include <cstdint>

using namespace VEK;

namespace {

/// Two ports, of three single signals and of a bus of eight, and two units of each type on them.
void wire(SxCore& core)
{
    SignalItem bus;
    bus.name = QStringLiteral("addr");
    for (int bit = 7; bit >= 0; --bit)
        bus.signalList.append({QStringLiteral("addr[%1]").arg(bit), QString(), {}, true});
    QList<SignalItem> singles;
    for (char const* const name : {"a", "b", "c"})
        singles.append({QString::fromLatin1(name), QString(), {}, true});
    core.getTrigger(0)->signalList = singles;
    core.getTrigger(1)->signalList = {bus};
    core.dataSignalList = core.allSignalList = singles + QList<SignalItem>{bus};
    core.expressionType = ExpressionDynamic;
    core.expressions = QStringList{QStringLiteral("M0"), QStringLiteral("M1")};
    for (int i = 0; i < 12; ++i) {
        MatchUnit& unit = *core.matchUnit(i);
        unit.enabled = true;
        unit.matchType = MatchType(i / 2);
        unit.trigger = core.getTrigger(i % 2);
        unit.counterEnable = i % 4 < 2;
        unit.counterWidth = 8;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size > 300)
        return 0;
    QString const text = QString::fromUtf8(reinterpret_cast<char const*>(data), int(size));
    SxCore core(0);
    wire(core);
    CompiledTrigger const compiled = compileTrigger(text, core);
    for (TriggerError const& error : compiled.errors) {
        if (error.position < 0 || error.length < 0 || error.position + error.length > text.size())
            qFatal("an error outside of the text");
        triggerExcerpt(text, error);
    }
    if (!compiled.isOk())
        return 0;
    applyTrigger(compiled, core);
    QString const printed = triggerText(core);
    CompiledTrigger const again = compileTrigger(printed, core);
    if (!again.isOk())
        qFatal("what was printed does not compile: %s: %s", qPrintable(printed),
               qPrintable(again.errors.first().message));
    applyTrigger(again, core);
    if (triggerText(core) != printed)
        qFatal("printed %s, then %s", qPrintable(printed), qPrintable(triggerText(core)));
    return 0;
}
