#include "wavemonitor/waves/buspicture.h"

#include "results/dataformatter.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/waves/bussamples.h"
#include "wavemonitor/waves/dotpixels.h"
#include "wavemonitor/waves/linepixels.h"
#include "wavemonitor/waves/wavepainter.h"

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

using Constants::Graphics::kSampleWidth;

namespace {

constexpr double Margin = 6; ///< Above and below the highest and the lowest value.
constexpr double BarGap = 2;
constexpr double DotSize = 2;

/// The values of a chart, and where they stand in the row.
class ChartScale
{
public:
    ChartScale(BusSamples const& samples, int rowHeight, bool isSigned)
        : m_samples(samples), m_signed(isSigned), m_bits(samples.numberWidth())
    {
        double const values = std::ldexp(1.0, m_bits);
        double const room = rowHeight - 2 * Margin;
        m_unit = room / (m_signed ? values - 1 : values);
        m_zero = m_signed ? (0.5 * values - 1) * m_unit + Margin : rowHeight - Margin;
    }

    /// The y of the zero line or, without a sign, of the bottom.
    double zero() const { return m_zero; }
    /// Held within the row: a single bit that is set has no room above the zero line.
    double yOf(double value) const { return std::max(0.0, m_zero - value * m_unit); }

    /// What a sample is drawn as: an unsigned chart shows a 0, too, and therefore one more than the
    /// value. A single bit has no sign, as in the formatter's texts.
    double value(int time)
    {
        constexpr int WordBits = 64;
        if (m_begin < 0 || time < m_begin || time >= m_begin + WordBits) {
            m_begin = time;
            m_samples.numbers(time, m_numbers);
        }
        quint64 const number = m_numbers[time - m_begin];
        if (!m_signed)
            return double(number) + 1;
        int const unused = m_bits > 1 ? WordBits - m_bits : 0;
        return double(qint64(number << unused) >> unused);
    }

private:
    BusSamples const& m_samples;
    bool m_signed;
    int m_bits;
    double m_unit;
    double m_zero;
    int m_begin = -1;
    quint64 m_numbers[64];
};

/// Bars narrower than a pixel often have none: those are not even looked at.
void paintBars(WavePainter& painter, BusPicture const& picture, ChartScale& scale)
{
    double const width = kSampleWidth - 2 * BarGap;
    double const pixels = width * painter.map().m11();
    for (int i = picture.first; i < picture.last; ++i) {
        double const left = i * kSampleWidth + BarGap;
        int column = 0;
        int end = 0;
        if (painter.isAligned()) {
            double const x = painter.map().m11() * left + painter.map().dx();
            column = qRound(x);
            end = qRound(x + pixels);
            if (column == end)
                continue;
        }
        double const value = scale.value(i);
        if (value == 0)
            continue;
        auto const [top, bottom] = std::minmax({scale.yOf(value), scale.zero()}); // by value
        if (!painter.isAligned()) {
            painter.fillRect(QRectF(left, top, width, bottom - top), picture.pen.color());
            continue;
        }
        double const y = painter.map().m22() * top + painter.map().dy();
        painter.addPixels(column, end - 1, qRound(y),
                          qRound(y + painter.map().m22() * (bottom - top)) - 1);
    }
    if (painter.isAligned())
        painter.fillPixels(picture.pen.color());
}

void paintLine(WavePainter& painter, BusPicture const& picture, ChartScale& scale, double previous)
{
    LinePixels lines(painter, 0, picture.formatter.rowHeight());
    DotPixels const shape(painter, DotSize, DotSize);
    QVector<QPointF> dots; // that have to be left to the painter
    double from = scale.yOf(previous);
    for (int i = picture.first; i < picture.last; ++i) {
        double const y = scale.yOf(scale.value(i));
        double const middle = (i + 0.5) * kSampleWidth;
        if (!lines.addDot(QPointF(middle, y), shape))
            dots.append(QPointF(middle, y));
        if (i > 0)
            lines.addLine(QLineF(middle - kSampleWidth, from, middle, y));
        from = y;
    }
    lines.paint(picture.pen);
    QBrush const brush = shape.isAllPen() ? QBrush() : QBrush(picture.pen.color());
    QPainter* const ellipses = painter.itemPainter(picture.pen, brush);
    QPointF const corner(DotSize / 2, DotSize / 2);
    for (QPointF const& dot : qAsConst(dots)) {
        if (!lines.coverDot(dot, shape)) // an ellipse takes as long as many pixels
            ellipses->drawEllipse(QRectF(dot - corner, QSizeF(DotSize, DotSize)));
    }
}

} // namespace

void paintBusChart(WavePainter& painter, BusPicture const& picture)
{
    DataFormat::Type const format = picture.formatter.formatType();
    bool const isSigned =
        format == DataFormat::SignedBarChart || format == DataFormat::SignedLineChart;
    ChartScale scale(picture.samples, picture.formatter.rowHeight(), isSigned);
    if (isSigned && picture.first < picture.last)
        painter.drawHorizontalLine(picture.exposed.left(), picture.exposed.right(), scale.zero(),
                                   Qt::white);
    if (format == DataFormat::UnsignedBarChart || format == DataFormat::SignedBarChart) {
        paintBars(painter, picture, scale);
        return;
    }
    // Without a sign the line deliberately begins at the bottom, one sample left of the first one
    // that is drawn.
    bool const startsAtValue = isSigned && picture.first < picture.last;
    paintLine(painter, picture, scale, startsAtValue ? scale.value(picture.first) : 0);
}

} // namespace WaveMonitor
