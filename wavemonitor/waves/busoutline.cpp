#include "wavemonitor/waves/buspicture.h"

#include "results/dataformatter.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/waves/bussamples.h"
#include "wavemonitor/waves/linepixels.h"
#include "wavemonitor/waves/wavepainter.h"

#include <QFontMetricsF>

#include <algorithm>

namespace WaveMonitor {

using Constants::Graphics::kSampleWidth;

namespace {

constexpr double HighLevel = 6;
constexpr double MiddleLevel = 15;
constexpr double LowLevel = 24;
constexpr double SlantPixels = 5;

constexpr int TextPixelSize = 12;
constexpr double TextMargin = 5;
constexpr double TextTop = 7;
constexpr double TextHeight = 20;

/// The part `begin` to `end` - 1 of a run; the slants at its ends are there if the run ends there.
void addRun(LinePixels& lines, int begin, int end, bool opens, bool closes, double slant)
{
    double const left = begin * kSampleWidth;
    double const right = end * kSampleWidth;
    double const innerLeft = opens ? left + slant : left;
    double const innerRight = closes ? right - slant : right;
    double from = std::min(innerLeft, innerRight);
    double to = std::max(innerLeft, innerRight);
    if (end - begin > 1) { // where slants are wider than samples, each sample's line reaches back
        from = std::min(from, left + kSampleWidth);
        to = std::max(to, right - kSampleWidth);
    }
    for (double level : {HighLevel, LowLevel}) {
        lines.addHorizontal(from, to, level);
        if (opens)
            lines.addLine(QLineF(left, MiddleLevel, innerLeft, level));
        if (closes)
            lines.addLine(QLineF(right, MiddleLevel, innerRight, level));
    }
}

/// Characters that every value of that width has at least in that format.
int fewestCharacters(DataFormat::Type format, int bits)
{
    if (bits <= 1)
        return 1;
    switch (format) {
    case DataFormat::Binary:
        return bits;
    case DataFormat::Octal:
        return bits / 3;
    case DataFormat::Hexadecimal:
        return bits / 4;
    case DataFormat::Ascii:
        return bits / 8 + 2;
    default:
        return 1;
    }
}

QString valueText(DataFormatter const& formatter, QBitArray const& value)
{
    QString text = formatter.format(value);
    if (formatter.formatType() != DataFormat::Real)
        return text;
    int const real = formatter.realType().type;
    bool const isFloating = real == VEK::FloatingSingle || real == VEK::FloatingDouble;
    return isFloating ? formatter.toRetainPoint(text) : text;
}

/// Measures the texts in device pixels, with the item's origin at x 0.
class TextStep
{
public:
    TextStep(BusPicture const& picture, QFont const& font) : m_picture(picture), m_metrics(font)
    {
        QRectF const& exposed = picture.exposed;
        m_visible = QRectF(exposed.left() * picture.scale, exposed.top(),
                           exposed.width() * picture.scale, exposed.height());
        int const count = fewestCharacters(picture.formatter.formatType(), picture.samples.width());
        m_leastWidth = std::max(1.0, (count - 1) * narrowestAdvance());
    }

    /// Where the text of that part of a run has to be; empty if none can fit.
    QRectF boxOf(int begin, int end) const
    {
        double const room = kSampleWidth * (double(end) - begin) * m_picture.scale - 2 * TextMargin;
        if (room < m_leastWidth)
            return QRectF();
        QRectF const box(begin * kSampleWidth * m_picture.scale + TextMargin, TextTop, room,
                         TextHeight);
        QRectF const visible = box & m_visible;
        return visible.width() < m_leastWidth ? QRectF() : visible;
    }

    bool fits(QRectF const& box, QString const& text) const
    {
        QRectF const extent = m_metrics.boundingRect(text);
        return box.width() >= extent.width() && box.height() >= extent.height();
    }

private:
    double narrowestAdvance() const
    {
        double least = m_metrics.horizontalAdvance(QLatin1Char('0'));
        for (char character = ' '; character <= '~'; ++character)
            least = std::min(least, m_metrics.horizontalAdvance(QLatin1Char(character)));
        return least;
    }

    BusPicture const& m_picture;
    QFontMetricsF m_metrics;
    QRectF m_visible;
    double m_leastWidth;
};

} // namespace

void paintBusOutline(WavePainter& painter, BusPicture const& picture)
{
    BusSamples const& samples = picture.samples;
    double const slant = SlantPixels / picture.scale;
    LinePixels lines(painter, HighLevel, LowLevel);
    int run = samples.runAt(picture.first);
    for (int begin = picture.first; begin < picture.last; ++run) {
        int const end = samples.runEnd(run);
        int const drawnEnd = std::min(end, picture.last);
        addRun(lines, begin, drawnEnd, begin == samples.runStarts().at(run), drawnEnd == end,
               slant);
        begin = drawnEnd;
    }
    lines.paint(picture.pen);
}

void paintBusTexts(WavePainter& painter, BusPicture const& picture)
{
    BusSamples const& samples = picture.samples;
    QFont const font = monitorFontOfPixelSize(TextPixelSize);
    TextStep const step(picture, font);
    int run = samples.runAt(picture.first);
    for (int begin = picture.first; begin < picture.last; ++run) {
        int const end = samples.runEnd(run);
        QRectF const box = step.boxOf(begin, end);
        if (!box.isEmpty()) {
            QString const text = valueText(picture.formatter, samples.sample(begin));
            if (step.fits(box, text))
                painter.drawText(box, text, picture.pen, font);
        }
        begin = end;
    }
}

} // namespace WaveMonitor
