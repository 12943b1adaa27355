#include "benchmarks/comparison.h"
#include "model/bits.h"
#include "results/dataformatter.h"
#include "wavemonitor/buswaveitem.h"
#include "wavemonitor/signalwaveitem.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QStyleOptionGraphicsItem>

#include <map>
#include <memory>

using bench::Comparison;
using namespace WaveMonitor;

namespace {

constexpr int Signals = 32;
constexpr int Buses = 4;
constexpr int BusWidth = 16;
constexpr int Width = 1600; ///< Of the picture, in pixels.
constexpr int Height = 900;
constexpr int Samples = 1000000;
constexpr int FewerSamples = 10000; ///< More than the picture shows at any zoom.

enum class Data { Random, Counter, Constant };

/// Bit `bit` of a counter that counts every eight samples, or random bits from a fixed seed.
QBitArray column(Data data, int bit)
{
    constexpr int length = Samples;
    if (data == Data::Random) {
        QByteArray bytes((length + 31) / 32 * 4, Qt::Uninitialized);
        QRandomGenerator random(quint32(bit) + 1);
        random.fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
        return QBitArray::fromBits(bytes.constData(), length);
    }
    QBitArray bits(length);
    for (int i = 0; data == Data::Counter && i < length; ++i)
        bits.setBit(i, (i / 8 >> bit % 17 & 1) != 0);
    return bits;
}

/// The same, or fewer samples from its middle: both show the same in their middle.
QBitArray column(Data data, int length, int bit)
{
    QBitArray const all = column(data, bit);
    return length == Samples ? all : VEK::sub(all, (Samples - length) / 2, length);
}

/// Rows one below the other, as the view shows them somewhere in the middle of the capture.
class Picture
{
public:
    explicit Picture(double zoom) : m_image(Width, Height, QImage::Format_RGB32), m_zoom(zoom)
    {
        m_image.fill(Qt::black);
    }

    void add(std::shared_ptr<WaveItem> const& row) { m_rows.push_back(row); }

    void paint()
    {
        QPainter painter(&m_image);
        double const middle = m_rows.front()->boundingRect().width() / 2 * m_zoom;
        double const left = std::max(0.0, std::floor(middle - Width / 2));
        int y = 0;
        for (auto const& row : m_rows) {
            painter.setWorldTransform(QTransform(m_zoom, 0, 0, 1, -left, y));
            QStyleOptionGraphicsItem option;
            option.exposedRect =
                row->boundingRect() & QRectF(left / m_zoom, 0, Width / m_zoom, row->rowHeight());
            row->paint(&painter, &option, nullptr);
            y = (y + row->rowHeight()) % (Height - row->rowHeight() + 1);
        }
    }

    /// The pixels of all rows as rectangles: what lies side by side, and the same below each other.
    QVector<QRect> rectangles()
    {
        QVector<QRect> rects;
        for (int row = 0; row < int(m_rows.size()); ++row) {
            Picture single(m_zoom);
            single.add(m_rows[std::size_t(row)]);
            single.paint();
            QVector<QRect> const found = single.paintedRectangles();
            int const y = row * 30 % (Height - m_rows[std::size_t(row)]->rowHeight() + 1);
            for (QRect const& rect : found)
                rects.append(rect.translated(0, y));
        }
        return rects;
    }

    void fill(QVector<QRect> const& rects)
    {
        QPainter painter(&m_image);
        for (QRect const& rect : rects)
            painter.fillRect(rect, Qt::green);
    }

private:
    QVector<QRect> paintedRectangles() const
    {
        QVector<QRect> rects;
        std::map<std::pair<int, int>, int> open; // runs of the line above: where in `rects`
        for (int y = 0; y < Height; ++y) {
            auto const* const line = reinterpret_cast<QRgb const*>(m_image.constScanLine(y));
            std::map<std::pair<int, int>, int> runs;
            for (int x = 0; x < Width; ++x) {
                int const begin = x;
                while (x < Width && line[x] != 0xff000000)
                    ++x;
                if (x == begin)
                    continue;
                auto const above = open.find({begin, x});
                if (above == open.end())
                    rects.append(QRect(begin, y, x - begin, 1));
                else
                    rects[above->second].setBottom(y);
                runs[{begin, x}] = above == open.end() ? rects.size() - 1 : above->second;
            }
            open = runs;
        }
        return rects;
    }

    std::vector<std::shared_ptr<WaveItem>> m_rows;
    QImage m_image;
    double m_zoom;
};

std::shared_ptr<WaveItem> signalRow(Data data, int length, int number)
{
    auto item = std::make_shared<SignalWaveItem>();
    item->setWaveData(column(data, length, number));
    return item;
}

std::shared_ptr<WaveItem> busRow(Data data, int length, int number, DataFormatter const& formatter)
{
    QList<QBitArray> members;
    for (int i = 0; i < BusWidth; ++i)
        members.append(column(data, length, number * BusWidth + BusWidth - 1 - i));
    auto item = std::make_shared<BusWaveItem>(&formatter);
    item->setMemberData(members);
    return item;
}

using Row = std::function<std::shared_ptr<WaveItem>(int length, int number)>;

/// Rows of a million samples at a zoom; the same of fewer samples for the growth.
Comparison comparisonOf(std::string const& name, int rows, double zoom, double aim, double slack,
                        Row const& row)
{
    std::map<int, std::shared_ptr<Picture>> pictures;
    std::map<int, QVector<QRect>> rects;
    for (int length : {Samples, FewerSamples}) {
        auto const picture = std::make_shared<Picture>(zoom);
        for (int i = 0; i < rows; ++i)
            picture->add(row(length, i));
        pictures[length] = picture;
        rects[length] = picture->rectangles();
    }
    Comparison comparison;
    comparison.name = name + (zoom >= 1 ? ", zoom " + std::to_string(int(zoom))
                                        : ", zoom 1/" + std::to_string(int(1 / zoom)));
    comparison.aim = aim;
    comparison.slack = slack;
    comparison.size = Samples;
    comparison.otherSize = FewerSamples;
    comparison.work = [pictures](benchmark::State& state) {
        for (auto _ : state)
            pictures.at(int(state.range(0)))->paint();
    };
    comparison.limit = [pictures, rects](benchmark::State& state) {
        int const length = int(state.range(0));
        for (auto _ : state)
            pictures.at(length)->fill(rects.at(length));
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    static DataFormatter const hexadecimal(DataFormat::Hexadecimal);
    static DataFormatter const charts[] = {
        DataFormatter(DataFormat::UnsignedBarChart), DataFormatter(DataFormat::UnsignedLineChart),
        DataFormatter(DataFormat::SignedBarChart), DataFormatter(DataFormat::SignedLineChart)};
    std::vector<Comparison> comparisons;
    for (double zoom : {16.0, 1.0, 1.0 / 16, 1.0 / 256}) {
        for (Data data : {Data::Random, Data::Counter}) {
            std::string const kind = data == Data::Random ? "random" : "counter";
            comparisons.push_back(comparisonOf(
                "32 signals, " + kind, Signals, zoom, 4, 0,
                [data](int length, int number) { return signalRow(data, length, number); }));
            comparisons.push_back(comparisonOf("4 hex buses, " + kind, Buses, zoom, 4, 0.016,
                                               [data](int length, int number) {
                                                   return busRow(data, length, number, hexadecimal);
                                               }));
            comparisons.push_back(comparisonOf(
                "4 charts, " + kind, Buses, zoom, 4, 0.05, [data](int length, int number) {
                    return busRow(data, length, number, charts[number]);
                }));
        }
        comparisons.push_back(
            comparisonOf("4 hex buses, one run", Buses, zoom, 4, 0.001, [](int length, int number) {
                return busRow(Data::Constant, length, number, hexadecimal);
            }));
    }
    return bench::run(comparisons, argc, argv);
}
