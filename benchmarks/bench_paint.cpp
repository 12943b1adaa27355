#include "benchmarks/comparison.h"
#include "model/bits.h"
#include "results/dataformatter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "wavemonitor/waves/bussamples.h"
#include "wavemonitor/waves/buswaveitem.h"
#include "wavemonitor/waves/signalwaveitem.h"

#include <QApplication>
#include <QImage>
#include <QLoggingCategory>
#include <QPainter>
#include <QRandomGenerator>
#include <QStyleOptionGraphicsItem>

#include <cstring>
#include <map>
#include <memory>

using bench::Comparison;
using namespace WaveMonitor;

namespace {

constexpr int Signals = 32;
constexpr int Buses = 4;
constexpr int BusWidth = 16;
constexpr int Width = 1200; ///< Of the picture, in pixels.
constexpr int Height = 560;
constexpr int Rows = 18; ///< That fit into it, and charts.
constexpr int Charts = 6;
constexpr double LongestPaint = 0.004; ///< Of a picture, in seconds, whatever its limit takes.
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

/// The painted pixels: what lies side by side, and the same below each other.
QVector<QRect> paintedRectangles(QImage const& image)
{
    QVector<QRect> rects;
    std::map<std::pair<int, int>, int> open; // runs of the line above: where in `rects`
    int const width = image.width();
    for (int y = 0; y < image.height(); ++y) {
        auto const* const line = reinterpret_cast<QRgb const*>(image.constScanLine(y));
        std::map<std::pair<int, int>, int> runs;
        for (int x = 0; x < width; ++x) {
            int const begin = x;
            while (x < width && line[x] != 0xff000000)
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

void fill(QImage& image, QVector<QRect> const& rects)
{
    QPainter painter(&image);
    for (QRect const& rect : rects)
        painter.fillRect(rect, Qt::green);
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
            QVector<QRect> const found = paintedRectangles(single.m_image);
            int const y = row * 30 % (Height - m_rows[std::size_t(row)]->rowHeight() + 1);
            for (QRect const& rect : found)
                rects.append(rect.translated(0, y));
        }
        return rects;
    }

    void fill(QVector<QRect> const& rects) { ::fill(m_image, rects); }

private:
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

/// 32 signals and four 16-bit buses, as a host hands them over.
struct Capture
{
    explicit Capture(int length)
    {
        int id = 0;
        auto const next = [&] {
            SignalData const data{id, QStringLiteral("top/s%1").arg(id), QString(),
                                  column(Data::Random, length, id)};
            ++id;
            return data;
        };
        for (int i = 0; i < Signals; ++i)
            signalList.append(next());
        for (int i = 0; i < Buses; ++i) {
            BusData bus;
            bus.name = QStringLiteral("bus%1[15:0]").arg(i);
            for (int k = 0; k < BusWidth; ++k)
                bus.signalDataList.append(next());
            busList.append(bus);
        }
    }

    QList<SignalData> signalList;
    QList<BusData> busList;
};

/// A shown monitor.
class Monitor
{
public:
    Monitor()
    {
        m_widget.resize(Width, Height);
        m_widget.show();
        settle();
    }

    void handOver(Capture const& capture)
    {
        for (BusData const& bus : capture.busList)
            m_widget.addData(bus);
        for (SignalData const& signal : capture.signalList)
            m_widget.addData(signal);
        settle();
    }

    /// Expands the first bus, or collapses it.
    void toggle()
    {
        QModelIndex const bus = tree()->model()->index(0, 0);
        tree()->setExpanded(bus, !tree()->isExpanded(bus));
        settle();
    }

    /// Turns all buses from one radix to another.
    void changeFormat()
    {
        m_format = m_format == DataFormat::Octal ? DataFormat::UnsignedDecimal : DataFormat::Octal;
        for (int i = 0; i < Buses; ++i)
            tree()->selectionModel()->select(tree()->model()->index(i, 0),
                                             QItemSelectionModel::Select);
        tree()->onDataFormatSetted(m_format);
        settle();
    }

    QImage picture() const
    {
        return m_widget.waveView()->viewport()->grab().toImage().convertToFormat(
            QImage::Format_RGB32);
    }

private:
    SignalTreeView* tree() const { return m_widget.treeView(); }

    void settle()
    {
        QCoreApplication::processEvents();
        m_widget.waveView()->viewport()->repaint();
    }

    WaveMonitorWidget m_widget{1};
    DataFormat::Type m_format = DataFormat::Hexadecimal;
};

/// Where a bus's values change: with the shared bits, all that a monitor has to build.
std::vector<int> runStarts(BusData const& bus)
{
    std::vector<int> starts{0};
    int const length = bus.signalDataList.first().data.size();
    std::vector<quint64> changes(std::size_t(length / 64 + 1));
    for (SignalData const& signal : bus.signalDataList) {
        quint64 before = 0;
        for (int at = 0; at < length; at += 64) {
            quint64 word = 0;
            std::memcpy(&word, signal.data.bits() + at / 8,
                        std::size_t(std::min(8, (length - at + 7) / 8)));
            changes[std::size_t(at / 64)] |= word ^ (word << 1 | before);
            before = word >> 63;
        }
    }
    for (int at = 0; at < length; at += 64) {
        for (quint64 left = changes[std::size_t(at / 64)]; left; left &= left - 1) {
            int const time = at + int(qCountTrailingZeroBits(left));
            if (time > 0 && time < length)
                starts.push_back(time);
        }
    }
    return starts;
}

bool sameRuns(BusData const& bus)
{
    QList<QBitArray> members;
    for (SignalData const& signal : bus.signalDataList)
        members.append(signal.data);
    BusSamples samples;
    samples.setMembers(members);
    QVector<int> const starts = samples.changes(0, samples.length());
    return std::vector<int>(starts.begin(), starts.end()) == runStarts(bus);
}

using Captures = std::map<int, std::shared_ptr<Capture>>;

Comparison handingOver(Captures const& captures)
{
    Comparison comparison;
    comparison.name = "handing over 32 signals and 4 buses";
    comparison.aim = 2;
    comparison.slack = 0.06; // 100 rows are made, laid out and painted
    comparison.size = Samples;
    comparison.otherSize = Samples / 10;
    comparison.work = [captures](benchmark::State& state) {
        for (auto _ : state) {
            state.PauseTiming();
            auto monitor = std::make_unique<Monitor>();
            state.ResumeTiming();
            monitor->handOver(*captures.at(int(state.range(0))));
            state.PauseTiming();
            monitor.reset();
            state.ResumeTiming();
        }
    };
    comparison.limit = [captures](benchmark::State& state) {
        for (auto _ : state) {
            for (BusData const& bus : captures.at(int(state.range(0)))->busList)
                benchmark::DoNotOptimize(runStarts(bus));
        }
    };
    comparison.agree = [captures] { return sameRuns(captures.at(Samples)->busList.first()); };
    return comparison;
}

/// Something that changes the picture but no sample, beside filling the pixels of the new picture.
Comparison changing(std::string const& name, Captures const& captures, void (Monitor::*change)())
{
    auto const monitors = std::make_shared<std::map<int, Monitor>>();
    auto const rects = std::make_shared<std::map<int, QVector<QRect>>>();
    for (int length : {Samples, Samples / 10}) {
        Monitor& monitor = (*monitors)[length];
        monitor.handOver(*captures.at(length));
        (monitor.*change)();
        (*rects)[length] = paintedRectangles(monitor.picture());
    }
    Comparison comparison;
    comparison.name = name;
    comparison.aim = 4;
    comparison.slack = 0.016;
    comparison.size = Samples;
    comparison.otherSize = Samples / 10;
    comparison.work = [monitors, change](benchmark::State& state) {
        for (auto _ : state)
            (monitors->at(int(state.range(0))).*change)();
    };
    comparison.limit = [rects](benchmark::State& state) {
        QImage image(Width, Height, QImage::Format_RGB32);
        for (auto _ : state)
            fill(image, rects->at(int(state.range(0))));
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The platform regrets that it has no use for a monitor's least size.
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    QApplication application(argc, argv);
    static DataFormatter const hexadecimal(DataFormat::Hexadecimal);
    static DataFormatter const charts[] = {
        DataFormatter(DataFormat::UnsignedBarChart), DataFormatter(DataFormat::UnsignedLineChart),
        DataFormatter(DataFormat::SignedBarChart), DataFormatter(DataFormat::SignedLineChart)};
    std::vector<Comparison> comparisons;
    for (double zoom : {16.0, 1.0, 1.0 / 4, 1.0 / 16, 1.0 / 256}) {
        for (Data data : {Data::Random, Data::Counter}) {
            std::string const kind = data == Data::Random ? "random" : "counter";
            comparisons.push_back(comparisonOf(
                "18 signals, " + kind, Rows, zoom, 4, 0,
                [data](int length, int number) { return signalRow(data, length, number); }));
            comparisons.push_back(comparisonOf("18 hex buses, " + kind, Rows, zoom, 4, LongestPaint,
                                               [data](int length, int number) {
                                                   return busRow(data, length, number, hexadecimal);
                                               }));
            comparisons.push_back(comparisonOf(
                "6 charts, " + kind, Charts, zoom, 4, LongestPaint, [data](int length, int number) {
                    return busRow(data, length, number, charts[number % 4]);
                }));
        }
        comparisons.push_back(
            comparisonOf("18 hex buses, one run", Rows, zoom, 4, 0.001, [](int length, int number) {
                return busRow(Data::Constant, length, number, hexadecimal);
            }));
    }
    Captures captures;
    for (int length : {Samples, Samples / 10})
        captures[length] = std::make_shared<Capture>(length);
    comparisons.push_back(handingOver(captures));
    comparisons.push_back(changing("expanding a bus", captures, &Monitor::toggle));
    comparisons.push_back(
        changing("changing the format of 4 buses", captures, &Monitor::changeFormat));
    return bench::run(comparisons, argc, argv);
}
