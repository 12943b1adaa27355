#include "cli/triggerfailure.h"

#include "trigger/trigger.h"

namespace VEK::Cli {

Failure triggerFailure(QString const& text, QList<TriggerError> const& errors, QString const& core)
{
    QStringList lines{triggerExcerpt(text, errors.first())};
    for (TriggerError const& error : errors.mid(1))
        lines << core + error.message << triggerExcerpt(text, error);
    return {Status::Usage, QStringLiteral("--trigger: ") + core + errors.first().message,
            lines.join(QLatin1Char('\n'))};
}

} // namespace VEK::Cli
