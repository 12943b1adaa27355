#pragma once

#include "wavemonitor/waves/wavepainter.h"

#include <QLineF>
#include <QVector>

namespace WaveMonitor {

class DotPixels;

/// Collects the pixels of many lines, thin ones with square caps and without antialiasing, and
/// paints those that lie side by side or below each other as one rectangle. They are exactly the
/// pixels that the raster engine gives such lines. With a painter whose pixels can't be told the
/// lines themselves are painted.
class LinePixels
{
public:
    /// All lines lie between the two heights.
    LinePixels(WavePainter& painter, double top, double bottom);

    void addHorizontal(double left, double right, double y);
    void addLine(QLineF const& line);
    /// The line once at each of the ascending places, moved to the right by `unit` for each 1.
    void addCopies(QLineF const& line, int const* begin, int const* end, double unit);
    /// A dot around that point, in the item's coordinates. False, and nothing is added, if its
    /// pixels can't be told here.
    bool addDot(QPointF const& middle, DotPixels const& dot);

    /// Paints what was collected; the pen is the thin one that the lines have.
    void paint(QPen const& pen);

    /// Whether all pixels that such a dot might have are painted by now.
    bool coverDot(QPointF const& middle, DotPixels const& dot) const;

private:
    struct Steep;

    /// Whether a line between those device columns can be told, or has to be left to the engine.
    bool isInside(double left, double right) const;
    void addSweep(Steep left, Steep right);
    void addSloping(QPointF from, QPointF to);
    void addSteep(int x1, int y1, int x2, int y2);
    void addFlat(int x1, int y1, int x2, int y2);
    void addRun(int row, int left, int right);
    void addPixel(int row, int column)
    {
        int const x = column - m_area.left();
        int const y = row - m_area.top();
        if (uint(x) < uint(m_area.width()) && uint(y) < uint(m_area.height()))
            m_bits[y * m_words + x / 64] |= quint64(1) << (x % 64);
    }
    void addColumnRun(int column, int top, int bottom);
    void takeColumns();
    int spans() const;
    void paintPicture(QColor const& color);
    int firstRowUnlike(int row) const;
    void addRectangles(int firstRow, int endRow);
    int nextColumn(int row, int column, bool set) const;

    WavePainter& m_painter;
    QRect m_area;            ///< Device pixels that have a bit.
    int m_words = 0;         ///< Of 64 pixels, in each row.
    QVector<quint64> m_bits; ///< Row by row, the leftmost pixel in the lowest bit.
    int m_columnWords = 0;
    QVector<quint64> m_columns; ///< More of them, column by column, the highest in the lowest bit.
    QVector<QLineF> m_lines;    ///< Left to the painter.
};

} // namespace WaveMonitor
