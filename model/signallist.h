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

/// Whether "capture_enable" of a signal or bus says captured, as it does when it says nothing.
bool isCaptured(QDomElement const& element);

/// One `Signal` element, its name and text.
SignalItem readSignal(QDomElement const& element, bool captured);

/// One `Bus` element, its names and those `members` that are its signals.
SignalItem readBus(QDomElement const& element, QList<QDomElement> const& members, bool captured);

/// The child elements of `parent` with that tag, or all of them.
QList<QDomElement> childElements(QDomElement const& parent, QString const& tag = QString());

/// The `SignalList` of a trigger port: everything in it is captured.
QList<SignalItem> readPortSignals(QDomElement const& list);

} // namespace VEK
