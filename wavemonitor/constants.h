#pragma once

#include <QColor>
#include <QFont>
#include <QString>

/// Measures and colours that the panes of a wave monitor share. Scene units: one sample is
/// `kSampleWidth` wide, one row `kRowHeight` high; only the horizontal axis zooms.
namespace WaveMonitor {
namespace Constants {
namespace Graphics {

constexpr double kSampleWidth = 50.0;
constexpr int kRowHeight = 30;
constexpr int kDefaultChartRowHeight = 90;

constexpr double kMinZoomRate = 0.00390625; ///< 1/256
constexpr double kMaxZoomRate = 16.0;

inline QString const kFontFamily = QStringLiteral("Courier New");

} // namespace Graphics
} // namespace Constants

/// The zoom rate held within the closed range that the zoom steps keep.
double clampedZoomRate(double rate);

/// The monitor's font, or a monospaced one where that family is not installed.
QFont monitorFont();

/// A font of that height in pixels.
QFont monitorFontOfPixelSize(int pixels);

/// A font of that size in points.
QFont monitorFontOfPointSize(int points);

} // namespace WaveMonitor
