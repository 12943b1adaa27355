#pragma once

#include <QColor>
#include <QImage>
#include <QLineF>
#include <QPainter>
#include <QPen>
#include <QRect>
#include <QRectF>
#include <QTransform>
#include <QVector>

#include <cmath>

namespace WaveMonitor {

/// Paints what an item consists of. The raster engine takes about as long for each pixel of a line
/// as for filling a small rectangle. Therefore a painter that only scales and moves is switched to
/// device coordinates, and the pixels that its lines would have are collected as rectangles.
/// Everything is given in the item's coordinates unless it says otherwise. The painter gets its
/// state back at the end.
class WavePainter
{
public:
    /// Device coordinates beyond are left to the painter: the numbers of a line have 16 bits for
    /// whole pixels.
    static constexpr int MostPixels = 1 << 14;

    /// `exposed` is what has to be painted; pixels outside may be left out.
    WavePainter(QPainter* painter, QRectF const& exposed);
    ~WavePainter();

    /// Whether pixels can be told beforehand. If not, lines are left to the painter, and the
    /// functions of device coordinates below must not be used.
    bool isExact() const { return m_exact; }

    /// The device pixels that are exposed, and with them those that a slant at the end of the data
    /// may reach.
    QRect const& exposedPixels() const { return m_exposed; }
    QRect const& window() const { return m_window; }

    /// The device column of an x, and the row of a y. What lies outside of the window comes out
    /// just outside.
    int column(double x) const
    {
        return floorWithin(m_map.m11() * x + m_map.dx(), m_window.left(), m_window.right());
    }
    int row(double y) const
    {
        return floorWithin(m_map.m22() * y + m_map.dy(), m_window.top(), m_window.bottom());
    }
    QTransform const& map() const { return m_map; }
    /// The same for a point, to parts of pixels.
    QPointF toDevice(QPointF const& point) const
    {
        return QPointF(m_map.m11() * point.x() + m_map.dx(), m_map.m22() * point.y() + m_map.dy());
    }

    /// A rectangle of device pixels, all borders included, for `fillPixels`.
    void addPixels(int left, int right, int top, int bottom)
    {
        QRect const rect(QPoint(left, top), QPoint(right, bottom));
        if (rect.isValid() && rect.intersects(m_window))
            m_pixels.append(rect & m_window);
    }
    void fillPixels(QColor const& color);
    /// Whether pictures can be drawn pixel by pixel, too, and rectangles get the pixels that
    /// rounding their borders gives.
    bool isAligned() const { return m_aligned; }
    void drawPicture(QPoint const& pixel, QImage const& image);

    void fillRect(QRectF const& rect, QColor const& color);
    void drawLines(QVector<QLineF> const& lines, QPen const& pen);
    /// A line with a thin solid pen.
    void drawHorizontalLine(double left, double right, double y, QColor const& color);
    void drawRect(QRectF const& rect, QPen const& pen, QColor const& brush);

    /// Switches to the item's coordinates, for shapes.
    QPainter* itemPainter(QPen const& pen, QBrush const& brush);
    /// A text at the left of a box and in its middle. The box is given in the item's coordinates
    /// but without their scale. Nothing is drawn if the text doesn't fit into it.
    void drawText(QRectF const& box, QString const& text, QPen const& pen, QFont const& font);

private:
    Q_DISABLE_COPY(WavePainter)

    bool isMeantInPixels() const;
    bool setUpExact(QRectF const& exposed);
    QRectF mapped(QRectF const& rect) const { return m_exact ? m_map.mapRect(rect) : rect; }

    static int floorWithin(double value, int first, int last)
    {
        value = qBound(first - 1.0, value, last + 1.0);
        int const whole = int(value);
        return whole - (value < whole);
    }

    QPainter* m_painter;
    QTransform m_itemTransform; ///< As the painter had it.
    QTransform m_map;           ///< To device pixels.
    QRect m_exposed;
    QRect m_window;
    QVector<QRect> m_pixels;
    bool m_exact;
    bool m_aligned = false;
    bool m_plainTexts = false; ///< Texts are neither scaled nor turned.
};

} // namespace WaveMonitor
