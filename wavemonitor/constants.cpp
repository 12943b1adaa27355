#include "wavemonitor/constants.h"

#include <algorithm>

namespace WaveMonitor {

double clampedZoomRate(double rate)
{
    return std::clamp(rate, Constants::Graphics::kMinZoomRate, Constants::Graphics::kMaxZoomRate);
}

QFont monitorFont()
{
    QFont font(Constants::Graphics::kFontFamily);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    return font;
}

QFont monitorFontOfPixelSize(int pixels)
{
    QFont font = monitorFont();
    font.setPixelSize(pixels);
    return font;
}

QFont monitorFontOfPointSize(int points)
{
    QFont font = monitorFont();
    font.setPointSize(points);
    return font;
}

} // namespace WaveMonitor
