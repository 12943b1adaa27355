#include "results/dataformatter.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/waves/buswaveitem.h"
#include "wavemonitor/waves/dividerwaveitem.h"
#include "wavemonitor/waves/signalwaveitem.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QRandomGenerator>
#include <QStyleOptionGraphicsItem>
#include <QtTest>

#include <cmath>
#include <functional>

using namespace WaveMonitor;

namespace {

constexpr QSize PictureSize(320, 110);
constexpr QRect AllExposed(QPoint(), PictureSize);
QColor const WaveColor(255, 128, 0);

using Samples = QList<QBitArray>;
using Paint = std::function<void(QPainter*, QStyleOptionGraphicsItem const*)>;

QPen wavePen(Qt::PenJoinStyle join)
{
    return QPen(WaveColor, 0, Qt::SolidLine, Qt::SquareCap, join);
}

/// What a view shows that is scrolled to `origin` pixels, where only `exposed` has to be painted.
QImage picture(Paint const& paint, QTransform const& transform, QRect const& exposed,
               QRectF const& bounds, double pixelRatio = 1)
{
    QImage image(PictureSize * pixelRatio, QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setClipRect(exposed);
    painter.setWorldTransform(transform);
    QStyleOptionGraphicsItem option;
    option.exposedRect = transform.inverted().mapRect(QRectF(exposed)) & bounds;
    paint(&painter, &option);
    return image;
}

Paint paintOf(WaveItem& item)
{
    return [&item](QPainter* painter, QStyleOptionGraphicsItem const* option) {
        item.paint(painter, option, nullptr);
    };
}

/// How many pixels differ, and where the first ones are. Between the pixels of a finer screen
/// numbers of letters and of sloping lines are rounded: some may differ.
QString differences(QImage const& image, QImage const& expected)
{
    QString text;
    int count = 0;
    for (int i = 0; image != expected && i < image.width() * image.height(); ++i) {
        QPoint const at(i % image.width(), i / image.width());
        if (image.pixel(at) != expected.pixel(at) && ++count <= 8)
            text +=
                QStringLiteral(" %1,%2 is %3").arg(at.x()).arg(at.y()).arg(image.pixel(at), 0, 16);
    }
    bool const fine = image.devicePixelRatioF() > 1;
    return count > (fine ? 8 : 0) ? QString::number(count) + " pixels:" + text : QString();
}

/// The bottom line and the veil, one line or rectangle at a time.
void paintFrame(QPainter* painter, QRectF const& exposed, double bottom, bool selected)
{
    painter->setPen(QPen(QColor(0x55, 0x55, 0x55), 0));
    painter->drawLine(QPointF(exposed.left(), bottom), QPointF(exposed.right(), bottom));
    if (selected)
        painter->fillRect(exposed.adjusted(0, 1, 0, 0), QColor::fromRgba(0x70888888));
}

/// Each sample of a signal and each edge as a line of its own.
void paintSignal(QPainter* painter, QRectF const& exposed, QBitArray const& data, bool selected)
{
    paintFrame(painter, exposed, 30, selected);
    painter->setPen(wavePen(Qt::MiterJoin));
    int const end = int(std::ceil(exposed.right() / 50));
    for (int i = int(exposed.left() / 50); i < end; ++i) {
        double const y = data.testBit(i) ? 6 : 24;
        painter->drawLine(QPointF(i * 50, y), QPointF((i + 1) * 50, y));
        if (i > 0 && data.testBit(i) != data.testBit(i - 1))
            painter->drawLine(QPointF(i * 50, 6), QPointF(i * 50, 24));
    }
}

void paintText(QPainter* painter, QRectF const& exposed, QString const& text, int pin, int end)
{
    QTransform const t = painter->worldTransform();
    double const scale = t.m11();
    QFont const font = monitorFontOfPixelSize(12);
    QRectF const extent = QFontMetricsF(font).boundingRect(text);
    double const room = 50.0 * (end - pin) * scale - 10;
    QRectF const box =
        QRectF(pin * 50 * scale + 5, 7, room, 20) &
        QRectF(exposed.left() * scale, exposed.top(), exposed.width() * scale, exposed.height());
    if (room < extent.width() || box.width() < extent.width() || box.height() < extent.height())
        return;
    painter->save();
    painter->setWorldTransform(QTransform(1, t.m12(), t.m21(), 1, t.dx(), t.dy()));
    painter->setFont(font);
    painter->drawText(box, Qt::AlignLeft | Qt::AlignVCenter, text);
    painter->restore();
}

/// The outline of one sample with its neighbours in view.
void paintBusSample(QPainter* painter, Samples const& data, int i)
{
    double const slant = 5 / painter->worldTransform().m11();
    double left = i * 50;
    double right = (i + 1) * 50;
    if (i == 0 || data[i - 1] != data[i]) {
        painter->drawLine(QPointF(left, 15), QPointF(left + slant, 6));
        painter->drawLine(QPointF(left, 15), QPointF(left + slant, 24));
        left += slant;
    }
    if (i == data.size() - 1 || data[i + 1] != data[i]) {
        painter->drawLine(QPointF(right, 15), QPointF(right - slant, 6));
        painter->drawLine(QPointF(right, 15), QPointF(right - slant, 24));
        right -= slant;
    }
    painter->drawLine(QPointF(left, 6), QPointF(right, 6));
    painter->drawLine(QPointF(left, 24), QPointF(right, 24));
}

/// One sample of a chart; `previous` is the value of the sample before it.
void paintChartSample(QPainter* painter, DataFormatter const& formatter, QBitArray const& sample,
                      int i, double& previous)
{
    bool const isSigned = formatter.formatType() >= DataFormat::SignedBarChart;
    bool const isBar = formatter.formatType() == DataFormat::UnsignedBarChart ||
                       formatter.formatType() == DataFormat::SignedBarChart;
    double const height = formatter.rowHeight();
    double const range = std::pow(2.0, sample.size());
    double const unit = (height - 12) / (isSigned ? range - 1 : range);
    double const zero = isSigned ? (0.5 * range - 1) * unit + 6 : height - 6;
    double const number = formatter.format(sample).toDouble();
    double const value = isSigned ? number : number + 1;
    auto const yOf = [&](double of) { return std::max(0.0, zero - of * unit); };
    if (isBar) {
        if (value != 0)
            painter->fillRect(QRectF(QPointF(i * 50 + 2, std::min(zero, yOf(value))),
                                     QPointF(i * 50 + 48, std::max(zero, yOf(value)))),
                              WaveColor);
        return;
    }
    painter->setBrush(WaveColor);
    painter->drawEllipse(QRectF(i * 50 + 24, yOf(value) - 1, 2, 2));
    if (i > 0)
        painter->drawLine(QPointF(i * 50 - 25, yOf(previous)), QPointF(i * 50 + 25, yOf(value)));
    previous = value;
}

void paintBus(QPainter* painter, QRectF const& exposed, Samples const& data,
              DataFormatter const& formatter)
{
    int const format = formatter.formatType();
    bool const isChart = format >= DataFormat::UnsignedBarChart;
    paintFrame(painter, exposed, isChart ? formatter.rowHeight() - 1 : 29, false);
    int const first = std::max(0, int(std::floor(exposed.left() / 50 - 3)));
    int const last = std::min(data.size(), int(std::ceil(exposed.right() / 50 + 3)));
    double previous = 0;
    if (format >= DataFormat::SignedBarChart) {
        double const range = std::pow(2.0, data[0].size());
        double const zero = (range / 2 - 1) * (formatter.rowHeight() - 12) / (range - 1) + 6;
        painter->setPen(QPen(Qt::white, 0));
        painter->drawLine(QPointF(exposed.left(), zero), QPointF(exposed.right(), zero));
        previous = formatter.format(data[first]).toDouble();
    }
    painter->setPen(wavePen(Qt::RoundJoin));
    int pin = first;
    for (int i = first; i <= data.size(); ++i) {
        if (i < last && isChart)
            paintChartSample(painter, formatter, data[i], i, previous);
        else if (i < last)
            paintBusSample(painter, data, i);
        if (!isChart && (i == data.size() || (i > first && data[i] != data[i - 1]))) {
            paintText(painter, exposed, formatter.format(data[pin]), pin, i);
            pin = i;
            if (i > last)
                break;
        }
    }
}

/// Bits with runs of that average length.
QBitArray randomSignal(QRandomGenerator& random, int length, int run)
{
    QBitArray bits(length);
    bool bit = false;
    for (int i = 0; i < length; ++i) {
        bit ^= random.bounded(run) == 0;
        bits.setBit(i, bit);
    }
    return bits;
}

Samples samplesOf(QList<QBitArray> const& members)
{
    Samples samples;
    for (int i = 0; i < members.first().size(); ++i) {
        QBitArray sample(members.size());
        for (int k = 0; k < members.size(); ++k)
            sample.setBit(k, members[k].testBit(i));
        samples.append(sample);
    }
    return samples;
}

} // namespace

class WavePaintingTest : public QObject
{
    Q_OBJECT

private:
    using Plain = std::function<void(QPainter*, QRectF const&)>;

    /// Compares with the plain picture, where `exposed` has to be painted.
    void compare(WaveItem& item, Plain const& plain, QTransform const& transform,
                 QRect const& exposed, double pixelRatio = 1)
    {
        item.setColor(WaveColor);
        QImage const image =
            picture(paintOf(item), transform, exposed, item.boundingRect(), pixelRatio);
        Paint const reference = [&](QPainter* painter, QStyleOptionGraphicsItem const* option) {
            plain(painter, option->exposedRect);
        };
        QImage const expected =
            picture(reference, transform, exposed, item.boundingRect(), pixelRatio);
        QString const found = differences(image, expected);
        QString where;
        QDebug(&where) << transform << exposed << pixelRatio;
        QVERIFY2(found.isEmpty(), qPrintable(where + found));
    }

    /// Compares at all zooms, scrolled to odd pixels, with all or a part of the picture exposed.
    void compareAll(WaveItem& item, Plain const& plain)
    {
        QRandomGenerator random(1);
        for (double zoom : {16.0, 1.0, 1 / 3.0, 1 / 16.0, 1 / 70.0, 1 / 256.0}) {
            int const width = int(item.boundingRect().width() * zoom);
            for (int origin : {0, 37, width / 2 + 1, width - 17}) {
                QTransform const transform(zoom, 0, 0, 1, -origin, 3);
                QRect const part(random.bounded(100), random.bounded(5), random.bounded(1, 200),
                                 random.bounded(20, 100));
                compare(item, plain, transform, AllExposed);
                compare(item, plain, transform, part);
                for (double pixelRatio : {1.5, 2.0})
                    if (origin == 37)
                        compare(item, plain, transform, AllExposed, pixelRatio);
            }
        }
    }

private Q_SLOTS:
    void signalAsLines()
    {
        for (int const run : {2, 30, 3000}) {
            QRandomGenerator random(quint32(run) + 5);
            QBitArray const data = randomSignal(random, 3001, run);
            SignalWaveItem item;
            item.setWaveData(data);
            for (bool selected : {false, true}) {
                item.setWaveSelected(selected);
                Plain const plain = [&](QPainter* painter, QRectF const& exposed) {
                    paintSignal(painter, exposed, data, selected);
                };
                compareAll(item, plain);
                // pixels can't be told when it is flipped, so lines are drawn
                compare(item, plain, QTransform(0.25, 0, 0, -1, 0, 60), AllExposed);
            }
        }
    }

    void busAsLines()
    {
        QList<std::tuple<DataFormat::Type, int, int>> cases{
            // format, bits, average length of a run
            {DataFormat::Hexadecimal, 16, 2},     {DataFormat::Hexadecimal, 5, 50},
            {DataFormat::Binary, 8, 500},         {DataFormat::Ascii, 32, 400},
            {DataFormat::SignedDecimal, 3, 9000}, {DataFormat::Octal, 1, 7},
        };
        for (DataFormat::Type const chart :
             {DataFormat::UnsignedBarChart, DataFormat::UnsignedLineChart,
              DataFormat::SignedBarChart, DataFormat::SignedLineChart})
            for (int const bits : {1, 2, 16, 40})
                cases.append({chart, bits, 5});
        for (auto const& [format, bits, run] : qAsConst(cases)) {
            QRandomGenerator random(quint32(run) + 7);
            QList<QBitArray> members;
            for (int i = 0; i < bits; ++i)
                members.append(randomSignal(random, 3001, run));
            Samples const samples = samplesOf(members);
            DataFormatter const formatter{format};
            BusWaveItem item(&formatter);
            item.setWaveData(samples);
            compareAll(item, [&](QPainter* painter, QRectF const& exposed) {
                paintBus(painter, exposed, samples, formatter);
            });
        }
    }

    void anyPicture() // random ones: each meets other roundings
    {
        QRandomGenerator random(9);
        auto const drawn = [&](int most) { return random.bounded(most); };
        for (int i = 0; i < 400; ++i) {
            bool const isOutline = drawn(4) == 0; // too wide for texts
            int const bits = isOutline ? 60 : 1 + drawn(drawn(3) ? 12 : 60);
            int const run = std::vector{1, 2, 5, isOutline ? 3 : 80}[std::size_t(drawn(4))];
            int const length = 1 + drawn(2) * 4000;
            QList<QBitArray> members;
            for (int k = 0; k < bits; ++k)
                members.append(randomSignal(random, length, isOutline ? run : run * (k + 1)));
            Samples const samples = samplesOf(members);
            DataFormatter const formatter{
                isOutline ? DataFormat::Hexadecimal
                          : DataFormat::Type(DataFormat::UnsignedBarChart + drawn(4))};
            BusWaveItem item(&formatter);
            item.setMemberData(members);
            double const zoom = std::pow(2.0, random.bounded(isOutline ? 5.0 : 11.0) - 8);
            int const most = std::max(1, int(item.boundingRect().width() * zoom) - 9);
            QRect const part(drawn(150), drawn(60), 1 + drawn(320), 1 + drawn(110));
            compare(
                item,
                [&](QPainter* painter, QRectF const& exposed) {
                    paintBus(painter, exposed, samples, formatter);
                },
                QTransform(zoom, 0, 0, 1, -drawn(most), drawn(20)), drawn(2) ? AllExposed : part);
        }
    }

    void textFarBehind() // the same picture as at the begin of a capture
    {
        DataFormatter const formatter{DataFormat::Hexadecimal};
        BusWaveItem item(&formatter);
        item.setColor(WaveColor);
        item.setMemberData({QBitArray(5000000, true), QBitArray(5000000, true)});
        auto const at = [&](double left) {
            return picture(paintOf(item), QTransform(1, 0, 0, 1, -left, 0), AllExposed,
                           item.boundingRect());
        };
        QVERIFY(at(200000000) == at(300));
        QCOMPARE(at(200000000).pixelColor(1, 6), WaveColor);
    }
};

QTEST_MAIN(WavePaintingTest)
#include "tst_wavepainting.moc"
