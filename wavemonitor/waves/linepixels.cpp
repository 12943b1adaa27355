#include "wavemonitor/waves/linepixels.h"

#include <QtAlgorithms>

#include <algorithm>
#include <utility>

namespace WaveMonitor {

namespace {

constexpr int WordBits = 64;

// The engine's numbers: coordinates have 6 bits behind the point, slopes 16.
constexpr int HalfPixel = 32;

int toFixed(double value)
{
    return int(value * 64);
}

int slopeOf(int rise, int run)
{
    return int(qint64(rise) * 65536 / run);
}

} // namespace

LinePixels::LinePixels(WavePainter& painter, double top, double bottom) : m_painter(painter)
{
    if (!painter.isExact())
        return;
    QRect const& window = painter.window();
    m_area = window & QRect(QPoint(window.left(), painter.row(top)),
                            QPoint(window.right(), painter.row(bottom)));
    m_words = (m_area.width() + WordBits - 1) / WordBits;
    m_bits.resize(m_words * m_area.height());
}

void LinePixels::addHorizontal(double left, double right, double y)
{
    if (m_painter.isExact())
        addRun(m_painter.row(y), m_painter.column(left), m_painter.column(right));
    else
        m_lines.append(QLineF(left, y, right, y));
}

void LinePixels::addRun(int row, int left, int right)
{
    left = std::max(left, m_area.left()) - m_area.left();
    right = std::min(right, m_area.right()) - m_area.left();
    if (row < m_area.top() || row > m_area.bottom() || left > right)
        return;
    quint64* const words = m_bits.data() + (row - m_area.top()) * m_words;
    quint64 const head = ~quint64(0) << (left % WordBits);
    quint64 const tail = ~quint64(0) >> (WordBits - 1 - right % WordBits);
    int const last = right / WordBits;
    int word = left / WordBits;
    if (word == last) {
        words[word] |= head & tail;
        return;
    }
    words[word++] |= head;
    while (word < last)
        words[word++] = ~quint64(0);
    words[last] |= tail;
}

void LinePixels::addLine(QLineF const& line)
{
    if (!m_painter.isExact()) {
        m_lines.append(line);
        return;
    }
    QPointF const from = m_painter.map().map(line.p1());
    QPointF const to = m_painter.map().map(line.p2());
    auto const [left, right] = std::minmax({from.x(), to.x()}); // by value
    if (right < m_painter.window().left() || left > m_painter.window().right() + 1)
        return;
    // The engine cuts lines at the device's edge before it rounds them, which moves some of their
    // pixels. So those at the edge of what is exposed are left to it, and those far outside.
    QRect const& exposed = m_painter.exposedPixels();
    if (left < exposed.left() + 1 || right > exposed.right() - 1 ||
        std::max(std::abs(from.y()), std::abs(to.y())) > WavePainter::MostPixels)
        m_lines.append(line);
    else
        addSloping(from, to);
}

void LinePixels::addSloping(QPointF from, QPointF to)
{
    int const x1 = toFixed(from.x());
    int const y1 = toFixed(from.y());
    int const x2 = toFixed(to.x());
    int const y2 = toFixed(to.y());
    if (qAbs(x2 - x1) < qAbs(y2 - y1)) {
        if (y1 < y2)
            addSteep(x1, y1, x2, y2);
        else
            addSteep(x2, y2, x1, y1);
    } else if (x1 < x2) {
        addFlat(x1, y1, x2, y2);
    } else if (x1 > x2) {
        addFlat(x2, y2, x1, y1);
    }
}

/// One pixel a row, downwards; the caps are half a pixel at both ends.
void LinePixels::addSteep(int x1, int y1, int x2, int y2)
{
    int const slope = slopeOf(x2 - x1, y2 - y1);
    y1 -= HalfPixel;
    y2 += HalfPixel;
    int row = (y1 + HalfPixel) >> 6;
    int const end = (y2 + HalfPixel) >> 6;
    int const round = slope > 0 ? HalfPixel : 0;
    int x = x1 * 1024 - (slope >> 1);
    x += ((row * 64 + round - y1) * slope) >> 6;
    if (row < m_area.top()) {
        x += (m_area.top() - row) * slope;
        row = m_area.top();
    }
    for (; row < std::min(end, m_area.bottom() + 1); ++row, x += slope) {
        quint64* const words = m_bits.data() + (row - m_area.top()) * m_words;
        int const column = (x >> 16) - m_area.left(); // within the window, as the whole line is
        words[column / WordBits] |= quint64(1) << (column % WordBits);
    }
}

/// One pixel a column, to the right.
void LinePixels::addFlat(int x1, int y1, int x2, int y2)
{
    int const slope = slopeOf(y2 - y1, x2 - x1);
    x1 -= HalfPixel;
    x2 += HalfPixel;
    int column = (x1 + HalfPixel) >> 6;
    int const end = (x2 + HalfPixel) >> 6;
    int const round = slope > 0 ? HalfPixel : 0;
    int y = y1 * 1024 - (slope >> 1);
    y += ((column * 64 + round - x1) * slope) >> 6;
    for (; column < end; ++column, y += slope)
        addPixel(y >> 16, column);
}

void LinePixels::paint(QPen const& pen)
{
    int const rows = m_words ? m_area.height() : 0;
    for (int row = 0, next; row < rows; row = next) {
        next = firstRowUnlike(row);
        addRectangles(row, next);
    }
    if (rows)
        m_painter.fillPixels(pen.color());
    m_painter.drawLines(m_lines, pen);
}

bool LinePixels::cover(QRectF const& rect) const
{
    if (!m_words)
        return false;
    QRect const pixels(
        QPoint(m_painter.column(rect.left()) - 1, m_painter.row(rect.top()) - 1),
        QPoint(m_painter.column(rect.right()) + 1, m_painter.row(rect.bottom()) + 1));
    if (!m_area.contains(pixels))
        return false;
    for (int row = pixels.top(); row <= pixels.bottom(); ++row) {
        int const begin = pixels.left() - m_area.left();
        if (nextColumn(row - m_area.top(), begin, false) < begin + pixels.width())
            return false;
    }
    return true;
}

/// The first row behind `row` with other pixels.
int LinePixels::firstRowUnlike(int row) const
{
    auto const words = m_bits.begin() + row * m_words;
    int next = row + 1;
    while (next < m_area.height() &&
           std::equal(words, words + m_words, m_bits.begin() + next * m_words))
        ++next;
    return next;
}

void LinePixels::addRectangles(int firstRow, int endRow)
{
    int const width = m_area.width();
    for (int begin = nextColumn(firstRow, 0, true), end; begin < width;
         begin = nextColumn(firstRow, end, true)) {
        end = nextColumn(firstRow, begin, false);
        m_painter.addPixels(m_area.left() + begin, m_area.left() + end - 1, m_area.top() + firstRow,
                            m_area.top() + endRow - 1);
    }
}

/// The first column from `column` on that is set, or is not; the width if there is none.
int LinePixels::nextColumn(int row, int column, bool set) const
{
    quint64 const* const words = m_bits.constData() + row * m_words;
    quint64 const inverted = set ? 0 : ~quint64(0);
    for (; column < m_area.width(); column = (column / WordBits + 1) * WordBits) {
        quint64 const left = (words[column / WordBits] ^ inverted) >> (column % WordBits);
        if (left)
            return std::min(column + int(qCountTrailingZeroBits(left)), m_area.width());
    }
    return m_area.width();
}

} // namespace WaveMonitor
