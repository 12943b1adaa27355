#pragma once

#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QDomDocument>

namespace VEK {

/// Decoded signals from the arrays of a flat signal list; ids count from 0. An array without a
/// signal gets empty names.
QList<WaveMonitor::SignalData> namedSignals(QList<SignalItem> const& flat,
                                            QList<QBitArray> const& arrays);

/// The `Window` element of one captured window, not attached to `document`. `layout` is the core's
/// list of captured signals and buses, `decoded` the signals of its flat list; a member without a
/// decoded signal is left out.
QDomElement windowElement(QDomDocument& document, int triggerPos, QList<SignalItem> const& layout,
                          QList<WaveMonitor::SignalData> const& decoded);

} // namespace VEK
