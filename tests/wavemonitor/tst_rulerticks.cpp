#include "tests/support/widgettools.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/ruler/rulerticks.h"
#include "wavemonitor/ruler/scaleruler.h"
#include "wavemonitor/timemarks.h"

#include <QPainter>
#include <QPicture>
#include <QRandomGenerator>
#include <QStyleOptionGraphicsItem>
#include <QtTest>

#include <cmath>

using namespace WaveMonitor;

namespace {

/// Paints a ruler as a view of 1600 pixels shows it from scene x `left` on.
void paintRuler(ScaleRuler& ruler, QPaintDevice* device, double scale, double left)
{
    QPainter painter(device);
    painter.setWorldTransform(QTransform(scale, 0, 0, 1, -left * scale, 30));
    QStyleOptionGraphicsItem option;
    option.exposedRect = QRectF(left, -30, 1600 / scale, 50) & ruler.boundingRect();
    ruler.paint(&painter, &option, nullptr);
}

} // namespace

class RulerTicksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void steps()
    {
        std::tuple<double, qint64, qint64> const cases[] = {
            // scale, major, minor
            {16.0, 1, 1},
            {1.0, 1, 1},
            {0.999, 2, 1},
            {0.5, 2, 1},
            {0.25, 5, 1},
            {0.125, 10, 1},
            {0.0625, 20, 2},
            {0.03125, 50, 5},
            {0.015625, 100, 10},
            {1.0 / 256, 500, 50},
            {1.0 / 257, 1000, 100},
            {1e-300, 50000000000, 5000000000},
            {0.0, 1, 1},
            {std::nan(""), 1, 1},
        };
        for (auto const& [scale, major, minor] : cases) {
            QCOMPARE(tickSteps(scale).major, major);
            QCOMPARE(tickSteps(scale).minor, minor);
        }
    }

    void firstTicks()
    {
        QCOMPARE(firstTick(0, 5), 0);
        QCOMPARE(firstTick(5, 5), 5);
        QCOMPARE(firstTick(6, 5), 10);
        QCOMPARE(firstTick(1, 5, 1), 1);
        QCOMPARE(firstTick(2, 5, 1), 6);
        QCOMPARE(windowStep(100, 0), 0);
        QCOMPARE(windowStride(1, 1.0 / 256), 5);
    }

    /// Ticks at their pixels: labelled ones from y 2, minor ones from y 15, red ones above.
    void picture()
    {
        ScaleRuler ruler;
        ruler.setLength(1000);
        ruler.setNum(6);
        QImage image(1600, 50, QImage::Format_RGB32);
        image.fill(Qt::gray);
        paintRuler(ruler, &image, 0.0625, 1000.0);
        auto const x = [](int sample) { return (sample * 50 - 1000) / 16; };
        QRgb const white = qRgb(255, 255, 255);
        QRgb const scale = 0xFF555555;
        QCOMPARE(image.pixel(x(340), 45), white);
        QCOMPARE(image.pixel(x(340), 33), white);
        QCOMPARE(image.pixel(x(340), 31), scale);
        // Behind the label of 340 in any font, and left of that of the window.
        QCOMPARE(image.pixel(x(359), 46), white);
        QCOMPARE(image.pixel(x(359), 44), scale);
        QCOMPARE(image.pixel(x(358), 46), scale);
        int written = 0;
        for (int i = 0; i < 20 * 12; ++i)
            written += image.pixel(x(340) + 3 + i / 12, 32 + i % 12) != scale;
        QCOMPARE(written > 0, widgettools::textIsSeen(monitorFontOfPixelSize(10)));
        QCOMPARE(image.pixel(x(332), 15), qRgb(255, 0, 0));
        QCOMPARE(image.pixel(x(331), 15), QColor(Qt::gray).rgb());
        QCOMPARE(image.pixel(x(498), 13), qRgb(255, 0, 0));
    }

    /// The work depends on what is exposed: at no zoom does a longer capture or do more windows
    /// cost more than their pixels.
    void costIsThatOfTheExposed()
    {
        ScaleRuler ruler;
        ruler.setLength(2000000000);
        ruler.setNum(2000000000);
        for (double const scale : {16.0, 1.0, 0.0625, 0.00390625, 1e-6}) {
            QPicture picture;
            paintRuler(ruler, &picture, scale, 1e6);
            QVERIFY2(picture.size() < 1600 * 400, qPrintable(QString::number(picture.size())));
        }
    }

    void marks()
    {
        TimeMarks marks;
        QCOMPARE(marks.next(-1), -1);
        QCOMPARE(marks.previous(10), -1);
        QCOMPARE(marks.firstFree(0), -1);
        QRandomGenerator random(7);
        for (int const size : {1, 63, 64, 65, 300}) {
            marks.reset(size);
            QVector<bool> plain(size, false);
            for (int i = 0; i < size; ++i) {
                qint64 const time = random.bounded(-5, size + 5);
                marks.insert(time);
                if (time >= 0 && time < size) {
                    plain[static_cast<int>(time)] = true;
                }
                int const at = random.bounded(-2, size + 2);
                QCOMPARE(marks.contains(at), at >= 0 && at < size && plain.at(at));
                int const before = at <= 0 ? -1 : plain.lastIndexOf(true, qMin(at, size) - 1);
                QCOMPARE(marks.previous(at), before);
                QCOMPARE(marks.next(at),
                         at >= size - 1 ? -1 : plain.indexOf(true, qMax(at + 1, 0)));
                QCOMPARE(marks.firstFree(at), at >= size ? -1 : plain.indexOf(false, qMax(at, 0)));
            }
        }
        marks.insert(qint64(1) << 40);
    }
};

QTEST_MAIN(RulerTicksTest)
#include "tst_rulerticks.moc"
