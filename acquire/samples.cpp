#include "acquire/samples.h"

#include "acquire/sampledecoder.h"
#include "model/bits.h"
#include "results/windowbuilder.h"

#include <algorithm>
#include <iterator>

namespace VEK {
namespace {

/// Rows of a stream whose last row begins `S` bits and more before the end. The last one may begin
/// before the stream.
int rowCount(qint64 streamSize, int shiftWidth, int captureAmount)
{
    qint64 const first = streamSize - 1 - shiftWidth;
    qint64 const whole = first < 0 ? 1 : first / shiftWidth + 2;
    return int(std::clamp<qint64>(captureAmount, 0, whole));
}

/// The row that holds the first sample in time.
int firstRow(QBitArray const& tdo, qint64 markOfRow0, int shiftWidth, int rows, SxCore const& core)
{
    int trigger = 0;
    while (trigger < rows && !packedBits(tdo, markOfRow0 - qint64(trigger) * shiftWidth, 1))
        ++trigger;
    if (core.expressionType == ExpressionDynamic)
        trigger = trigger == 0 ? rows - 1 : trigger - 1;
    qint64 const row = (qint64(trigger) - core.triggerPos + rows) % rows;
    return int(row < 0 ? row + rows : row);
}

/// Devices whose first row is one sample ahead. TK-102 is among them, unlike in the set that
/// shortens a standard capture.
char const* const RotatedDevices[] = {"TK-202", "TK-203", "TK-201", "TK-113", "TK-107",
                                      "TK-106", "TK-114", "TK-112", "TK-111", "TK-105",
                                      "TK-104", "TK-123", "TK-125", "TK-124", "TK-122",
                                      "TK-121", "TK-103", "TK-102", "TK-101"};

bool isRotated(SXCore_Lite const& core, QString const& deviceName)
{
    return core.implemention == 0 &&
           std::any_of(std::begin(RotatedDevices), std::end(RotatedDevices),
                       [&](char const* name) { return deviceName == QLatin1String(name); });
}

/// Rows of `width` bits in a stream; the last one may begin before the stream.
int liteRowCount(int streamSize, int width, int captureAmount)
{
    return std::clamp(captureAmount, 0, int((qint64(streamSize) + width - 1) / width));
}

} // namespace

QList<WaveMonitor::SignalData> standardSamples(SxCore const& core, QBitArray const& tdo)
{
    if (tdo.isEmpty())
        return {};
    QList<SignalItem> const flat = core.dataSignals();
    int const width = core.dataOutShiftWidth();
    int const rows = rowCount(tdo.size(), width, core.captureAmount);
    if (rows < 1)
        return {};
    // a row is the mark and then the signals, at the end of its record
    qint64 const mark = qint64(tdo.size()) - 1 - flat.size();
    RecordLayout const layout{mark + 1, width, flat.size(), rows};
    return namedSignals(flat, signalArrays(tdo, layout, firstRow(tdo, mark, width, rows, core)));
}

QList<WaveMonitor::SignalData> liteSamples(SXCore_Lite const& core, QString const& deviceName,
                                           QBitArray const& tdo)
{
    QList<SignalItem> const flat = flatSignals(core.dataSignalList);
    if (tdo.isNull() || flat.isEmpty())
        return {};
    int const width = flat.size();
    int const rows = liteRowCount(tdo.size(), width, core.captureAmount);
    RecordLayout const layout{qint64(tdo.size()) - width, width, width, rows};
    int const first = rows > 1 && isRotated(core, deviceName) ? 1 : 0;
    return namedSignals(flat, signalArrays(tdo, layout, first));
}

} // namespace VEK
