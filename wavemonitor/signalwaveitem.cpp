#include "wavemonitor/signalwaveitem.h"

#include "model/bits.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/wavepainter.h"

#include <QStyleOptionGraphicsItem>
#include <QtAlgorithms>

#include <cmath>

namespace WaveMonitor {

using Constants::Graphics::kSampleWidth;

namespace {

constexpr double HighLevel = 6;
constexpr double LowLevel = 24;

double levelOf(bool bit)
{
    return bit ? HighLevel : LowLevel;
}

/// The first sample from `time` (at least 1) on that differs from the one before it; `end` if there
/// is none before.
int nextEdge(QBitArray const& data, int time, int end)
{
    constexpr int Steps = 63; // pairs of neighbours in a word
    for (; time < end; time += Steps) {
        quint64 const word = VEK::packedBits(data, time - 1);
        quint64 const edges = (word ^ word >> 1) & ~quint64(0) >> 1;
        if (edges)
            return std::min(end, time + int(qCountTrailingZeroBits(edges)));
    }
    return end;
}

/// The samples `begin` to `end` - 1 as rectangles of pixels: the columns with an edge in them,
/// those side by side as one, and between them the levels.
class LevelPixels
{
public:
    LevelPixels(WavePainter& painter, QBitArray const& data)
        : m_painter(painter), m_data(data), m_high(painter.row(HighLevel)),
          m_low(painter.row(LowLevel)), m_samplesPerPixel(1 / (painter.map().m11() * kSampleWidth))
    {}

    void add(int begin, int end)
    {
        int free = m_painter.column(begin * kSampleWidth); // no pixels from this column on yet
        int blockBegin = free;
        int edge = nextEdge(m_data, std::max(begin, 1), end);
        while (edge < end) {
            int const column = m_painter.column(edge * kSampleWidth);
            if (column > free) {
                m_painter.addPixels(blockBegin, free - 1, m_high, m_low);
                addLevel(free, column - 1, edge - 1);
                blockBegin = column;
            }
            free = column + 1;
            int next = firstInColumn(edge + 1, free, end);
            // Column by column as long as each has an edge: there no step waits for the one before.
            for (int after; m_samplesPerPixel > 1 && next < end; next = after, ++free) {
                after = firstInColumn(0, free + 1, end);
                if (nextEdge(m_data, next, after) == after)
                    break;
            }
            edge = nextEdge(m_data, next, end);
        }
        m_painter.addPixels(blockBegin, free - 1, m_high, m_low);
        addLevel(free, m_painter.column(end * kSampleWidth), end - 1);
    }

private:
    void addLevel(int left, int right, int sample)
    {
        int const row = m_data.testBit(sample) ? m_high : m_low;
        m_painter.addPixels(left, right, row, row);
    }

    /// The first sample from `time` on that begins in that column or behind it: further edges in
    /// the columns before it would paint the same pixels.
    int firstInColumn(int time, int column, int end) const
    {
        if (m_samplesPerPixel <= 1)
            return time;
        double const guess = (column - m_painter.map().dx()) * m_samplesPerPixel;
        int sample = guess < end ? std::max(time, int(guess)) : end;
        while (sample < end && m_painter.column(sample * kSampleWidth) < column)
            ++sample;
        return sample;
    }

    WavePainter& m_painter;
    QBitArray const& m_data;
    int m_high;
    int m_low;
    double m_samplesPerPixel;
};

/// The same as lines, for painters whose pixels can't be told beforehand.
QVector<QLineF> levelLines(QBitArray const& data, int begin, int end)
{
    QVector<QLineF> lines;
    for (int i = begin, next; i < end; i = next) {
        next = nextEdge(data, i + 1, end);
        double const level = levelOf(data.testBit(i));
        lines.append(QLineF(i * kSampleWidth, level, next * kSampleWidth, level));
        if (i > 0 && data.testBit(i) != data.testBit(i - 1))
            lines.append(QLineF(i * kSampleWidth, HighLevel, i * kSampleWidth, LowLevel));
    }
    return lines;
}

} // namespace

void SignalWaveItem::setWaveData(QBitArray const& data)
{
    if (data.size() == m_data.size() && data.bits() == m_data.bits())
        return;
    prepareGeometryChange();
    m_data = data;
    update();
}

QRectF SignalWaveItem::boundingRect() const
{
    return QRectF(0, 0, m_data.size() * kSampleWidth, rowHeight());
}

void SignalWaveItem::paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget*)
{
    QRectF const exposed = option->exposedRect;
    if (exposed.isEmpty())
        return;
    WavePainter wave(painter, exposed);
    paintFrame(wave, exposed, rowHeight());
    double const length = m_data.size();
    int const begin = int(qBound(0.0, std::floor(exposed.left() / kSampleWidth), length));
    int const end = int(qBound(0.0, std::ceil(exposed.right() / kSampleWidth), length));
    if (begin >= end)
        return;
    if (wave.isExact()) {
        LevelPixels(wave, m_data).add(begin, end);
        wave.fillPixels(color());
    } else {
        wave.drawLines(levelLines(m_data, begin, end),
                       QPen(color(), 0, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    }
}

} // namespace WaveMonitor
