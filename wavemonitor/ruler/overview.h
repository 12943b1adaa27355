#pragma once

#include <QList>
#include <QVector>

namespace WaveMonitor {

class ChangeCounts;

/// A capture on a strip: all of its samples across some pixels.
struct OverviewScale
{
    int length = 0; ///< In samples.
    int width = 0;  ///< In pixels.

    /// The first sample in a column or behind it.
    int firstSample(int column) const;
    /// The x of a time, to parts of a pixel; 0 without samples.
    double xOf(double time) const;
    /// The time at an x, held within the samples.
    double timeAt(double x) const;
};

/// How dense the rows change in each column of the strip, from 0 to 1. The densest column has 1,
/// and any change at all more than 0. Where a column shows several samples, counts are taken over
/// at least eight of them, so that no pattern stands out that is only the strip's.
QVector<double> changeDensities(QList<ChangeCounts const*> const& rows, OverviewScale const& scale);

/// The left edge, in samples, of a view of `visible` samples that a press at `time` asks for: one
/// outside of the visible part is centred, one within stays where it was taken hold of.
double grabbedPlace(double time, double left, double visible);

} // namespace WaveMonitor
