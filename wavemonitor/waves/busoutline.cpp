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

/// The upper and the lower line of runs.
class LevelLines
{
public:
    LevelLines(LinePixels& lines, double slant, bool merge)
        : m_lines(lines), m_slant(slant), m_merge(merge)
    {}
    ~LevelLines() { flush(); }

    /// The part `begin` to `end` - 1 of a run; the slants at its ends are there if the run ends
    /// there. The runs come from left to right.
    void addRun(int begin, int end, bool opens, bool closes)
    {
        double const left = begin * kSampleWidth;
        double const right = end * kSampleWidth;
        double const innerLeft = opens ? left + m_slant : left;
        double const innerRight = closes ? right - m_slant : right;
        double from = std::min(innerLeft, innerRight);
        double to = std::max(innerLeft, innerRight);
        if (end - begin > 1) { // where slants are wider than samples, each sample's line reaches
            from = std::min(from, left + kSampleWidth); // back
            to = std::max(to, right - kSampleWidth);
        }
        if (from > m_to || !m_merge) {
            flush();
            m_from = from;
            m_to = to;
        }
        m_from = std::min(m_from, from);
        m_to = std::max(m_to, to);
    }

private:
    Q_DISABLE_COPY(LevelLines)

    void flush()
    {
        if (m_from > m_to)
            return;
        for (double level : {HighLevel, LowLevel})
            m_lines.addHorizontal(m_from, m_to, level);
    }

    LinePixels& m_lines;
    double m_slant;
    bool m_merge;
    double m_from = 0; ///< Of lines that touch each other.
    double m_to = -1;
};

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

void findEdges(BusPicture& picture)
{
    // Behind what is exposed only a text's margin matters.
    double const margin = 2 * TextMargin / (kSampleWidth * picture.scale) + 2;
    double const room = picture.samples.length() - picture.last;
    int const more = int(margin > 0 && margin < room ? margin : room);
    picture.edges = picture.samples.changes(picture.first, picture.last + more);
    picture.edges.append(picture.last + more);
}

void paintBusOutline(WavePainter& painter, BusPicture const& picture)
{
    QVector<int> const& edges = picture.edges;
    double const slant = SlantPixels / picture.scale;
    LinePixels lines(painter, HighLevel, LowLevel);
    int const* const opening = edges.begin();
    int const* const closing = std::upper_bound(edges.begin(), edges.end(), picture.first);
    int const* const lastOpening = std::lower_bound(closing, edges.end(), picture.last);
    int const* const lastClosing = std::upper_bound(closing, edges.end(), picture.last);
    {
        LevelLines levels(lines, slant, painter.isExact());
        int begin = picture.first;
        bool opens = opening != closing;
        for (int const* edge = closing; begin < picture.last; ++edge, opens = true) {
            bool const closes = edge != lastClosing;
            int const end = closes ? *edge : picture.last;
            levels.addRun(begin, end, opens, closes);
            begin = end;
        }
    }
    for (double level : {HighLevel, LowLevel}) {
        lines.addCopies(QLineF(0, MiddleLevel, slant, level), opening, lastOpening, kSampleWidth);
        lines.addCopies(QLineF(0, MiddleLevel, -slant, level), closing, lastClosing, kSampleWidth);
    }
    lines.paint(picture.pen);
}

void paintBusTexts(WavePainter& painter, BusPicture const& picture)
{
    QVector<int> const& edges = picture.edges;
    int const* edge = std::upper_bound(edges.begin(), edges.end(), picture.first);
    QFont const font = monitorFontOfPixelSize(TextPixelSize);
    TextStep const step(picture, font);
    for (int begin = picture.first; begin < picture.last;) {
        int const end = *edge++;
        QRectF const box = step.boxOf(begin, end);
        if (!box.isEmpty())
            painter.drawText(box, valueText(picture.formatter, picture.samples.sample(begin)),
                             picture.pen, font);
        begin = end;
    }
}

} // namespace WaveMonitor
