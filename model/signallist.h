#pragma once

#include "model/capturecore.h"

#include <QDomElement>

class QXmlStreamWriter;

/// The `SignalList` element of a configuration file, as it stands under a core or a trigger port.
namespace VEK {

/// Whether the members of a `SignalList` carry the attribute "capture_enable".
enum class CaptureFlag { None, Written };

/// Writes a whole `SignalList` element.
void writeSignalList(QXmlStreamWriter& writer, QList<SignalItem> const& items, CaptureFlag flag);

/// What the readers make of a `SignalList`, deliberately unlike each other.
enum class ListForm {
    Standard, ///< Of a core; a signal whose "capture_enable" says neither yes nor no is dropped.
    Lite, ///< Of a lite core; such a signal is not captured, and all nodes of a bus are members.
    Port  ///< Of a trigger port; everything is captured.
};

/// The signals and buses of a `SignalList`. A "capture_enable" that says nothing says captured.
QList<SignalItem> readSignalList(QDomElement const& list, ListForm form);

/// Those that are captured.
QList<SignalItem> capturedItems(QList<SignalItem> const& items);

/// The child elements of `parent` with that tag, or all of them.
QList<QDomElement> childElements(QDomElement const& parent, QString const& tag = QString());

} // namespace VEK
