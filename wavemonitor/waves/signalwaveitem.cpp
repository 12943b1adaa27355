#include "wavemonitor/waves/signalwaveitem.h"

#include "model/bits.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/waves/wavepainter.h"

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

/// Where the samples of each pixel column of a painter's window begin, if a column shows more than
/// one. All rows of a view have the same, so the last ones are kept.
class ColumnStarts
{
public:
    static ColumnStarts const& of(WavePainter const& painter)
    {
        thread_local ColumnStarts kept;
        QRect const& window = painter.window();
        if (kept.m_scale != painter.map().m11() || kept.m_shift != painter.map().dx() ||
            kept.m_left != window.left() || kept.m_samples.size() != window.width() + 1)
            kept = ColumnStarts(painter);
        return kept;
    }

    /// The first sample in that column or behind it; `MostSamples` behind the window.
    int at(int column) const
    {
        int const place = std::max(0, column - m_left);
        return place < m_samples.size() ? m_samples.at(place) : MostSamples;
    }

private:
    static constexpr int MostSamples = 1 << 30; // more than a bit array can hold

    ColumnStarts() = default;
    explicit ColumnStarts(WavePainter const& painter)
        : m_scale(painter.map().m11()), m_shift(painter.map().dx()),
          m_left(painter.window().left()), m_samples(painter.window().width() + 1)
    {
        double const samplesPerPixel = 1 / (m_scale * kSampleWidth);
        for (int i = 0; i < m_samples.size(); ++i) {
            int const column = m_left + i;
            double const guess = (column - m_shift) * samplesPerPixel;
            int sample = int(qBound(0.0, guess, double(MostSamples)));
            while (sample < MostSamples && painter.column(double(sample) * kSampleWidth) < column)
                ++sample;
            m_samples[i] = sample;
        }
    }

    double m_scale = 0;
    double m_shift = 0;
    int m_left = 0;
    QVector<int> m_samples;
};

/// The samples `begin` to `end` - 1 as rectangles of pixels: the columns with an edge in them,
/// those side by side as one, and between them the levels.
class LevelPixels
{
public:
    LevelPixels(WavePainter& painter, QBitArray const& data)
        : m_painter(painter), m_data(data), m_high(painter.row(HighLevel)),
          m_low(painter.row(LowLevel)),
          m_starts(painter.map().m11() * kSampleWidth < 1 ? &ColumnStarts::of(painter) : nullptr)
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
            edge = m_starts ? edgeBehindBlock(free, end) : nextEdge(m_data, edge + 1, end);
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

    /// Goes from column `free` on through all that have an edge in them, and leaves `free` behind
    /// them. The first edge from there on; `end` if there is none.
    int edgeBehindBlock(int& free, int end) const
    {
        int begin = std::min(end, m_starts->at(free));
        int after = std::min(end, m_starts->at(free + 1));
        while (nextEdge(m_data, begin, after) < after) {
            ++free;
            begin = after;
            after = std::min(end, m_starts->at(free + 1));
        }
        return nextEdge(m_data, after, end);
    }

    WavePainter& m_painter;
    QBitArray const& m_data;
    int m_high;
    int m_low;
    ColumnStarts const* m_starts; ///< Null where no column shows more than a sample.
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
    m_changeCounts.reset();
    update();
}

ChangeCounts const* SignalWaveItem::changeCounts() const
{
    if (!m_changeCounts)
        m_changeCounts.emplace(QList<QBitArray>{m_data});
    return &*m_changeCounts;
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
