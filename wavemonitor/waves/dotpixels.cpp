#include "wavemonitor/waves/dotpixels.h"

#include "wavemonitor/waves/linepixels.h"

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

constexpr int Edge = 8 + 1; ///< Pixels of the area that are hardly exposed, on each side.

} // namespace

DotPixels::DotPixels(WavePainter const& painter, double width, double height)
    : m_width(width / 2 * painter.map().m11()), m_height(height / 2 * painter.map().m22()),
      m_begin(m_width + Doubt), m_end(1 - 2 * m_width - 1 / 64.0 - Doubt),
      m_known(m_width <= Widest && m_height >= 1 && m_height <= Highest)
{}

bool LinePixels::addDot(QPointF const& middle, DotPixels const& dot)
{
    if (!dot.m_known || !m_words)
        return false;
    QPointF const at = m_painter.toDevice(middle);
    // Away from the edges of its column such a dot is one column of pixels.
    int const column = m_painter.column(middle.x()) - m_area.left();
    double const part = at.x() - m_area.left() - column;
    if (part < dot.m_begin || part > dot.m_end || column < Edge || column >= m_area.width() - Edge)
        return false;
    double const top = at.y() - dot.m_height + 0.5 - m_area.top();
    double const bottom = at.y() + dot.m_height - m_area.top();
    if (top < 2 || bottom > m_area.height() - 2)
        return false;
    int const firstRow = int(top);
    int const lastRow = int(bottom);
    if (DotPixels::isDoubtful(top - firstRow) || DotPixels::isDoubtful(bottom - lastRow))
        return false;
    addColumnRun(column + m_area.left(), firstRow + m_area.top(), lastRow + m_area.top());
    return true;
}

bool LinePixels::coverDot(QPointF const& middle, DotPixels const& dot) const
{
    if (!m_words)
        return false;
    QPointF const at = m_painter.toDevice(middle);
    auto const floor = [](double value) { return int(std::floor(value)); };
    QRect const pixels(
        QPoint(floor(at.x() - dot.m_width - 1 / 64.0), floor(at.y() - dot.m_height)),
        QPoint(floor(at.x() + 2 * dot.m_width + 1 / 64.0), floor(at.y() + dot.m_height) + 1));
    if (!m_area.contains(pixels))
        return false;
    for (int row = pixels.top(); row <= pixels.bottom(); ++row) {
        int const begin = pixels.left() - m_area.left();
        if (nextColumn(row - m_area.top(), begin, false) < begin + pixels.width())
            return false;
    }
    return true;
}

} // namespace WaveMonitor
