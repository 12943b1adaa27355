#include "cli/exitstatus.h"

namespace VEK::Cli {

QString causeOf(Status status)
{
    for (StatusRow const& row : StatusTable) {
        if (row.status == status)
            return QString::fromLatin1(row.cause);
    }
    return QString();
}

QString statusHelp()
{
    QString text = QStringLiteral("Exit status:\n");
    for (StatusRow const& row : StatusTable)
        text += QStringLiteral("  %1  %2\n")
                    .arg(int(row.status), 3)
                    .arg(QString::fromLatin1(row.meaning));
    return text;
}

} // namespace VEK::Cli
