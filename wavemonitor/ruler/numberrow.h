#pragma once

#include <QPair>
#include <QVector>

#include <algorithm>

namespace WaveMonitor {

/// Shares out a line of text among numbers that must not stand over each other: whoever asks first
/// has the place. In pixels.
class NumberRow
{
public:
    /// Whether the number from `left` to `right` may be written.
    bool take(double left, double right)
    {
        auto const overlaps = [&](QPair<double, double> const& other) {
            return left < other.second + Gap && other.first < right + Gap;
        };
        if (std::any_of(m_taken.cbegin(), m_taken.cend(), overlaps))
            return false;
        m_taken.append({left, right});
        return true;
    }

private:
    static constexpr double Gap = 2.0;
    QVector<QPair<double, double>> m_taken;
};

} // namespace WaveMonitor
