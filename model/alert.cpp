#include "model/alert.h"

#include <QDebug>

#include <utility>

namespace VEK {
namespace {

/// A local static, since a widget library may set its handler before any static object here exists.
AlertHandler& currentHandler()
{
    static AlertHandler handler;
    return handler;
}

} // namespace

void showAlert(Alert const& alert)
{
    if (AlertHandler const handler = currentHandler()) {
        handler(alert);
        return;
    }
    QString const line = alert.title + QLatin1String(": ") + alert.text;
    if (alert.kind == AlertKind::Critical)
        qCritical().noquote() << line;
    else
        qWarning().noquote() << line;
}

void setAlertHandler(AlertHandler handler)
{
    currentHandler() = std::move(handler);
}

} // namespace VEK
