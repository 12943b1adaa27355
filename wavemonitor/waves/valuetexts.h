#pragma once

#include <QFont>
#include <QSizeF>
#include <QStaticText>
#include <QString>

namespace WaveMonitor {

/// Laying a text out takes several times as long as drawing it. Short texts come again and again
/// where many values have room, so the last ones are kept as they were laid out.
struct ValueText
{
    QStaticText text;
    QSizeF extent; ///< Of the bounding rectangle.
};

/// The text in that font; null for one that is too long to be kept, or outside of the thread of
/// the application's widgets. Valid until the next call.
ValueText const* keptValueText(QString const& text, QFont const& font);

/// The width and height of the text's bounding rectangle.
QSizeF valueTextExtent(QString const& text, QFont const& font);

} // namespace WaveMonitor
