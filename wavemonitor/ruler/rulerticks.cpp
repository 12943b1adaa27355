#include "wavemonitor/ruler/rulerticks.h"

#include "wavemonitor/constants.h"

#include <algorithm>
#include <cmath>

using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace WaveMonitor {

TickSteps tickSteps(double scale)
{
    if (!std::isfinite(scale) || scale <= 0.0 || scale >= 1.0) {
        return {};
    }
    // 32 halvings give steps of 5 * 10^10 samples: beyond every time
    int const halvings = static_cast<int>(std::min(std::ceil(-std::log2(scale)), 32.0));
    int const rest = halvings % 3;
    TickSteps steps;
    steps.major = (qint64(2) << rest) - rest - 1;
    for (int i = 0; i < halvings / 3; ++i) {
        steps.major *= 10;
    }
    steps.minor = std::max<qint64>(steps.major / 10, 1);
    return steps;
}

TickRange tickRange(double left, double right, int length, TickSteps const& steps)
{
    TickRange range;
    range.from = std::max<qint64>(static_cast<qint64>(left / kSampleWidth) - steps.major, 0);
    range.to = std::min<qint64>(length, static_cast<qint64>(right / kSampleWidth) + steps.minor);
    return range;
}

qint64 firstTick(qint64 from, qint64 step, qint64 remainder)
{
    if (from <= remainder) {
        return remainder;
    }
    return (from - remainder + step - 1) / step * step + remainder;
}

qint64 windowStep(int length, int num)
{
    return num > 0 ? length / num : 0;
}

qint64 windowStride(qint64 step, double scale)
{
    double const distance = static_cast<double>(step) * kSampleWidth * scale;
    if (!(distance > 0.0) || distance >= 1.0) {
        return 1;
    }
    // a billion boundaries on are beyond every time, too
    return static_cast<qint64>(std::min(1.0 / distance, 1e9));
}

double labelX(qint64 sample, double scale)
{
    return static_cast<double>(sample) * kSampleWidth * scale + 3.0;
}

} // namespace WaveMonitor
