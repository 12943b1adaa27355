#include "trigger/trigger.h"

#include <algorithm>

namespace VEK {

void setUnit(UnitSetting const& setting, MatchUnit& unit)
{
    unit.func = setting.func;
    unit.value0 = setting.value0;
    unit.value1 = setting.value1;
    if (unit.counterEnable) {
        unit.counter = setting.counter;
        unit.continuous = setting.continuous;
    }
}

void applyTrigger(CompiledTrigger const& trigger, SxCore& core)
{
    for (UnitSetting const& setting : trigger.units) {
        MatchUnit* const unit = core.matchUnit(setting.unit);
        if (unit)
            setUnit(setting, *unit);
    }
    core.expressions = trigger.expressions;
    core.expressionEnabled = trigger.expressionEnabled;
}

QString triggerExcerpt(QString const& text, TriggerError const& error, QString const& indent)
{
    QString line;
    QString pointer;
    int const end = std::max(error.position + 1, error.position + error.length);
    for (int i = 0; i < std::max(text.size(), end); ++i) {
        if (i < text.size() && text.at(i).isLowSurrogate()) {
            line += text.at(i);
            continue;
        }
        bool const isShown = i < text.size() && text.at(i).isPrint();
        line += i >= text.size() || !(isShown || text.at(i).isHighSurrogate()) ? QLatin1Char(' ')
                                                                               : text.at(i);
        if (i < end)
            pointer += i < error.position    ? QLatin1Char(' ')
                       : i == error.position ? QLatin1Char('^')
                                             : QLatin1Char('~');
    }
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return indent + line + QLatin1Char('\n') + indent + pointer;
}

} // namespace VEK
