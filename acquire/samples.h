#pragma once

#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QBitArray>
#include <QList>

/// The read-back of a capture as samples, one array for each signal of the core's flat list.
namespace VEK {

/// Decodes one window of a standard core: the record that was stored last stands first, each of
/// `dataOutShiftWidth()` bits with the trigger mark and the signals at its end. The ring is
/// unrolled so that the trigger lands at the core's `triggerPos`. Empty without bits or samples to
/// expect.
QList<WaveMonitor::SignalData> standardSamples(SxCore const& core, QBitArray const& tdo);

/// Decodes the read-back of a lite core: rows of one bit a signal, packed, the first sample at the
/// end; on some devices the first row is one sample ahead. Empty without bits or signals.
QList<WaveMonitor::SignalData> liteSamples(SXCore_Lite const& core, QString const& deviceName,
                                           QBitArray const& tdo);

} // namespace VEK
