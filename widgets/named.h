#pragma once

#include <QWidget>

namespace VEK {

/// Gives a widget its object name, by which hosts and style sheets find it; returns the widget.
template <typename Widget>
Widget* named(Widget* widget, char const* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace VEK
