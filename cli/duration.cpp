#include "cli/duration.h"

#include <QRegularExpression>

#include <cmath>
#include <limits>

namespace VEK::Cli {

bool parseDuration(QString const& text, int& ms)
{
    static QRegularExpression const form(
        QStringLiteral("\\A(\\d+(?:\\.\\d*)?|\\.\\d+)(ms|s|m|min|h)?\\z"));
    QRegularExpressionMatch const match = form.match(text);
    if (!match.hasMatch())
        return false;
    QString const unit = match.captured(2);
    double factor = 1000;
    if (unit == QLatin1String("ms"))
        factor = 1;
    else if (unit == QLatin1String("m") || unit == QLatin1String("min"))
        factor = 60 * 1000;
    else if (unit == QLatin1String("h"))
        factor = 60 * 60 * 1000;
    double const value = std::round(match.captured(1).toDouble() * factor);
    if (!(value <= std::numeric_limits<int>::max()))
        return false;
    ms = int(value);
    return true;
}

} // namespace VEK::Cli
