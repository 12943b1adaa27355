#pragma once

#include <QPen>
#include <QRectF>
#include <QVector>

namespace WaveMonitor {

class BusSamples;
class DataFormatter;
class WavePainter;

/// What a part of a bus's paint needs. Samples `first` to `last` - 1 are drawn.
struct BusPicture
{
    BusSamples const& samples;
    DataFormatter const& formatter;
    QRectF exposed; ///< In the item's coordinates.
    double scale;   ///< Of the horizontal axis.
    int first;
    int last;
    /// Where runs begin, from `first` on and as far behind `last` as a text can tell. At the end,
    /// for a run that goes on, the first sample that was not looked at or the end of all.
    QVector<int> edges;
    QPen pen;
};

/// Fills `edges` from the rest.
void findEdges(BusPicture& picture);

/// The outline of each run, with crossings that are 5 pixels wide at every scale.
void paintBusOutline(WavePainter& painter, BusPicture const& picture);

/// The value of each run in which it has enough room, at the left of the run's visible part.
void paintBusTexts(WavePainter& painter, BusPicture const& picture);

/// The bars or the line of a chart format. Values of more than 64 bits are drawn by their highest
/// 64, which makes no difference that could be seen.
void paintBusChart(WavePainter& painter, BusPicture const& picture);

} // namespace WaveMonitor
