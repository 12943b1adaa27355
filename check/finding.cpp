#include "check/finding.h"

#include <QStringList>

namespace VEK {

QString Finding::text() const
{
    QStringList parts{element, attribute};
    parts.removeAll(QString());
    QString const place = parts.join(QStringLiteral(", "));
    return place.isEmpty() ? message : place + QStringLiteral(": ") + message;
}

} // namespace VEK
