#pragma once

#include <QPen>
#include <QRectF>

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
    QPen pen;
};

/// The outline of each run, with crossings that are 5 pixels wide at every scale.
void paintBusOutline(WavePainter& painter, BusPicture const& picture);

/// The value of each run in which it has enough room, at the left of the run's visible part.
void paintBusTexts(WavePainter& painter, BusPicture const& picture);

/// The bars or the line of a chart format. Values of more than 64 bits are drawn by their highest
/// 64, which makes no difference that could be seen.
void paintBusChart(WavePainter& painter, BusPicture const& picture);

} // namespace WaveMonitor
