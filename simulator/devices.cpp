#include "simulator/devices.h"

#include <QStringList>

namespace VEK::Simulator {

bool rotatesSamples(QString const& device)
{
    static QStringList const devices{
        QStringLiteral("TK-202"), QStringLiteral("TK-203"), QStringLiteral("TK-201"),
        QStringLiteral("TK-113"), QStringLiteral("TK-107"), QStringLiteral("TK-106"),
        QStringLiteral("TK-114"), QStringLiteral("TK-112"), QStringLiteral("TK-111"),
        QStringLiteral("TK-105"), QStringLiteral("TK-104"), QStringLiteral("TK-123"),
        QStringLiteral("TK-125"), QStringLiteral("TK-124"), QStringLiteral("TK-122"),
        QStringLiteral("TK-121"), QStringLiteral("TK-103"), QStringLiteral("TK-102"),
        QStringLiteral("TK-101")};
    return devices.contains(device);
}

bool takesOneMore(QString const& device)
{
    return rotatesSamples(device) && device != QLatin1String("TK-102");
}

} // namespace VEK::Simulator
