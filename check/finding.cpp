#include "check/finding.h"

#include <QStringList>

#include <algorithm>

namespace VEK {

QString Finding::text() const
{
    QStringList parts{element, attribute};
    parts.removeAll(QString());
    QString const place = parts.join(QStringLiteral(", "));
    return place.isEmpty() ? message : place + QStringLiteral(": ") + message;
}

bool hasErrors(QList<Finding> const& findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](Finding const& finding) { return finding.severity == Severity::Error; });
}

} // namespace VEK
