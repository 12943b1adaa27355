#include "wavemonitor/waves/linepixels.h"

#include "model/bits.h"

#include <QtAlgorithms>

#include <algorithm>
#include <cstring>
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
    if (qAbs(rise) < 1 << 15)
        return rise * 65536 / run; // the quicker division
    return int(qint64(rise) * 65536 / run);
}

/// Those from `first` to `last`, both included.
void setBits(quint64* words, int first, int last)
{
    quint64 const head = ~quint64(0) << (first % WordBits);
    quint64 const tail = ~quint64(0) >> (WordBits - 1 - last % WordBits);
    int const lastWord = last / WordBits;
    int word = first / WordBits;
    if (word == lastWord) {
        words[word] |= head & tail;
        return;
    }
    words[word++] |= head;
    while (word < lastWord)
        words[word++] = ~quint64(0);
    words[lastWord] |= tail;
}

} // namespace

/// A line with one pixel a row, downwards: the x of its pixels, with 16 bits behind the point, and
/// its rows `row` to `end` - 1. The caps are half a pixel at both ends.
struct LinePixels::Steep
{
    Steep(int x1, int y1, int x2, int y2) : slope(slopeOf(x2 - x1, y2 - y1))
    {
        y1 -= HalfPixel;
        y2 += HalfPixel;
        row = (y1 + HalfPixel) >> 6;
        end = (y2 + HalfPixel) >> 6;
        int const round = slope > 0 ? HalfPixel : 0;
        x = x1 * 1024 - (slope >> 1) + (((row * 64 + round - y1) * slope) >> 6);
    }

    /// Leaves out what is outside of those rows.
    void clip(int top, int bottom)
    {
        if (row < top) {
            x += (top - row) * slope;
            row = top;
        }
        end = std::min(end, bottom + 1);
    }

    int slope;
    int row;
    int end;
    int x;
};

LinePixels::LinePixels(WavePainter& painter, double top, double bottom) : m_painter(painter)
{
    if (!painter.isExact())
        return;
    QRect const& window = painter.window();
    m_area = window & QRect(QPoint(window.left(), painter.row(top)),
                            QPoint(window.right(), painter.row(bottom)));
    m_words = (m_area.width() + WordBits - 1) / WordBits;
    m_bits.resize(m_words * m_area.height());
    m_columnWords = (m_area.height() + WordBits - 1) / WordBits;
    m_columns.resize(m_words * WordBits * m_columnWords); // whole blocks
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
    setBits(m_bits.data() + (row - m_area.top()) * m_words, left, right);
}

void LinePixels::addLine(QLineF const& line)
{
    if (!m_painter.isExact()) {
        m_lines.append(line);
        return;
    }
    QPointF const from = m_painter.toDevice(line.p1());
    QPointF const to = m_painter.toDevice(line.p2());
    auto const [left, right] = std::minmax({from.x(), to.x()}); // by value
    if (right < m_painter.window().left() || left > m_painter.window().right() + 1)
        return;
    if (!isInside(left, right) ||
        std::max(std::abs(from.y()), std::abs(to.y())) > WavePainter::MostPixels)
        m_lines.append(line);
    else
        addSloping(from, to);
}

bool LinePixels::isInside(double left, double right) const
{
    // The engine cuts lines at the device's edge before it rounds them, which moves some of their
    // pixels. So those at the edge of what is exposed are left to it, and those far outside.
    QRect const& exposed = m_painter.exposedPixels();
    return left >= exposed.left() + 1 && right <= exposed.right() - 1;
}

void LinePixels::addCopies(QLineF const& line, int const* begin, int const* end, double unit)
{
    auto const copyAt = [&](int place) {
        double const x = place * unit;
        return QLineF(x + line.x1(), line.y1(), x + line.x2(), line.y2());
    };
    auto const deviceX = [&](double x) { return m_painter.map().m11() * x + m_painter.map().dx(); };
    auto const isCopyInside = [&](int place) {
        double const x = place * unit;
        auto const [left, right] =
            std::minmax({deviceX(x + line.x1()), deviceX(x + line.x2())}); // by value
        return left >= 0 && isInside(left, right);
    };
    double const width = std::abs(line.dx()) * m_painter.map().m11();
    double const height = std::abs(line.dy()) * m_painter.map().m22();
    if (!m_words || width + 1 > height || height > WavePainter::MostPixels) {
        for (; begin != end; ++begin)
            addLine(copyAt(*begin));
        return;
    }
    for (; begin != end && !isCopyInside(*begin); ++begin)
        addLine(copyAt(*begin));
    int const* const firstBehind = std::partition_point(begin, end, isCopyInside);
    // Copies less than a pixel from each other leave no gap. Those between the first and the last
    // of them need no look, unless they are so close that rounding changes their order.
    double const step = m_painter.map().m11() * unit * 64;
    int const reach = step >= 2 && step <= 62 ? int(62 / step) : 0;
    bool const upwards = line.dy() < 0;
    int const top = toFixed(m_painter.toDevice(upwards ? line.p2() : line.p1()).y());
    int const bottom = toFixed(m_painter.toDevice(upwards ? line.p1() : line.p2()).y());
    auto const steepAt = [&](int place) {
        double const x = place * unit;
        int const first = toFixed(deviceX(x + line.x1()));
        int const last = toFixed(deviceX(x + line.x2()));
        return upwards ? Steep(last, top, first, bottom) : Steep(first, top, last, bottom);
    };
    while (begin != firstBehind) {
        int const* last = begin;
        while (last + 1 != firstBehind && last[1] - last[0] <= reach)
            ++last;
        addSweep(steepAt(*begin), steepAt(*last));
        begin = last + 1;
    }
    for (; begin != end; ++begin)
        addLine(copyAt(*begin));
}

/// A steep line and all its copies to the last one, which stand less than a pixel apart.
void LinePixels::addSweep(Steep left, Steep right)
{
    left.clip(m_area.top(), m_area.bottom());
    right.clip(m_area.top(), m_area.bottom());
    quint64* words = m_bits.data() + (left.row - m_area.top()) * m_words;
    for (; left.row < left.end; ++left.row, words += m_words) {
        int const first = (left.x >> 16) - m_area.left();
        int const last = (right.x >> 16) - m_area.left();
        if (first == last) // within the window, as the whole line is
            words[first / WordBits] |= quint64(1) << (first % WordBits);
        else
            addRun(left.row, left.x >> 16, right.x >> 16);
        left.x += left.slope;
        right.x += right.slope;
    }
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

void LinePixels::addSteep(int x1, int y1, int x2, int y2)
{
    Steep line(x1, y1, x2, y2);
    line.clip(m_area.top(), m_area.bottom());
    while (line.row < line.end) { // a column at a time
        int const column = line.x >> 16;
        int rows = line.end - line.row;
        int const last = (line.x + (rows - 1) * line.slope) >> 16;
        if (last > column)
            rows = ((column + 1) * 65536 - line.x + line.slope - 1) / line.slope;
        else if (last < column)
            rows = (line.x - column * 65536) / -line.slope + 1;
        addColumnRun(column, line.row, line.row + rows - 1);
        line.row += rows;
        line.x += rows * line.slope;
    }
}

/// Within the area, as the whole line is.
void LinePixels::addColumnRun(int column, int top, int bottom)
{
    setBits(m_columns.data() + (column - m_area.left()) * m_columnWords, top - m_area.top(),
            bottom - m_area.top());
}

/// Puts the pixels that were collected by columns to the others.
void LinePixels::takeColumns()
{
    VEK::BitBlock block;
    for (int place = 0; place < m_words * m_columnWords; ++place) {
        int const word = place / m_columnWords;
        int const firstRow = place % m_columnWords * WordBits;
        quint64 any = 0;
        for (int i = 0; i < WordBits; ++i) {
            quint64& column =
                m_columns[(word * WordBits + i) * m_columnWords + firstRow / WordBits];
            block[i] = column;
            any |= column;
            column = 0;
        }
        if (!any)
            continue;
        VEK::transpose(block);
        for (int row = firstRow; row < std::min(firstRow + WordBits, m_area.height()); ++row)
            m_bits[row * m_words + word] |= block[row - firstRow];
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
    if (m_words) {
        takeColumns();
        constexpr int PixelsPerSpan = 32; // of a picture, in the time of one rectangle
        if (m_painter.isAligned() && pen.color().alpha() == 255 &&
            spans() > m_area.width() * m_area.height() / PixelsPerSpan) {
            paintPicture(pen.color());
        } else {
            for (int row = 0, next; row < m_area.height(); row = next) {
                next = firstRowUnlike(row);
                addRectangles(row, next);
            }
            m_painter.fillPixels(pen.color());
        }
    }
    m_painter.drawLines(m_lines, pen);
}

/// About as many rectangles the pixels are.
int LinePixels::spans() const
{
    int count = 0;
    for (int row = 0, next; row < m_area.height(); row = next) {
        next = firstRowUnlike(row);
        quint64 before = 0;
        for (int word = row * m_words; word < (row + 1) * m_words; ++word) {
            quint64 const bits = m_bits.at(word);
            count += int(qPopulationCount(bits & ~(bits << 1 | before)));
            before = bits >> (WordBits - 1);
        }
    }
    return count;
}

void LinePixels::paintPicture(QColor const& color)
{
    QRgb colors[16][4]; // of four pixels in a row
    for (int bits = 0; bits < 16; ++bits) {
        for (int i = 0; i < 4; ++i)
            colors[bits][i] = bits >> i & 1 ? color.rgba() : 0;
    }
    QImage image(m_words * WordBits, m_area.height(), QImage::Format_ARGB32_Premultiplied);
    for (int row = 0; row < m_area.height(); ++row) {
        auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(row));
        for (int word = row * m_words; word < (row + 1) * m_words; ++word) {
            for (int shift = 0; shift < WordBits; shift += 4, pixels += 4)
                std::memcpy(pixels, colors[m_bits.at(word) >> shift & 15], sizeof colors[0]);
        }
    }
    m_painter.drawPicture(m_area.topLeft(), image);
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
