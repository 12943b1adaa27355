#pragma once

#include <QString>

#include <functional>

/// The one way for code below the front end to show a message box. It keeps QtWidgets out of
/// programs that run without a display.
namespace VEK {

enum class AlertKind { Warning, Critical };

/// A message box with one button "Ok" on the active window.
struct Alert
{
    AlertKind kind = AlertKind::Warning;
    QString title;
    QString text;
};

using AlertHandler = std::function<void(Alert const&)>;

/// Hands `alert` to the handler. Without one it goes to Qt's message handler as `title: text`, as a
/// warning or as a critical message. The handler may block, and may set another handler.
void showAlert(Alert const& alert);

/// Replaces the handler for the whole process; an empty one goes back to logging. Call it on the
/// main thread.
void setAlertHandler(AlertHandler handler);

} // namespace VEK
