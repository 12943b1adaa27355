#include "wavemonitor/ruler/overview.h"

#include "wavemonitor/waves/changecounts.h"

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

int OverviewScale::firstSample(int column) const
{
    if (width <= 0)
        return 0;
    return int((qint64(column) * length + width - 1) / width);
}

double OverviewScale::xOf(double time) const
{
    return length > 0 ? time * width / length : 0;
}

double OverviewScale::timeAt(double x) const
{
    return width > 0 ? qBound(0.0, x * length / width, double(length)) : 0;
}

QVector<double> changeDensities(QList<ChangeCounts const*> const& rows, OverviewScale const& scale)
{
    constexpr int FewestSamples = 8;
    QVector<double> densities(std::max(scale.width, 0), 0.0);
    for (int column = 0; column < densities.size(); ++column) {
        int begin = scale.firstSample(column);
        int end = scale.firstSample(column + 1);
        if (scale.length > scale.width && end - begin < FewestSamples) {
            begin = std::max(0, (begin + end - FewestSamples) / 2);
            end = std::min(begin + FewestSamples, scale.length);
        }
        double count = 0;
        for (ChangeCounts const* row : rows)
            count += row->count(begin, end);
        densities[column] = end > begin ? count / (end - begin) : 0;
    }
    auto const most = std::max_element(densities.begin(), densities.end());
    double const densest = most == densities.end() ? 0 : *most;
    for (double& density : densities)
        density = density > 0 ? density / densest : 0;
    return densities;
}

double grabbedPlace(double time, double left, double visible)
{
    return time >= left && time < left + visible ? left : time - visible / 2;
}

} // namespace WaveMonitor
