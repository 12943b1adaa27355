#include "tests/wavemonitor/monitorrig.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/ruler/overview.h"
#include "wavemonitor/ruler/overviewstrip.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/waves/changecounts.h"

#include <QRandomGenerator>
#include <QSplitter>

using namespace WaveMonitor;

class OverviewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsAnyPart()
    {
        QRandomGenerator random(3);
        for (int const length : {0, 1, 64, 511, 512, 513, 3000}) {
            QBitArray first(length);
            QBitArray second(std::max(0, length - 70)); // bits that it lacks are 0
            for (int i = 0; i < length; ++i)
                first.setBit(i, random.bounded(9) == 0);
            for (int i = 0; i < second.size(); ++i)
                second.setBit(i, i / 100 % 2 != 0);
            auto const value = [&](int i) {
                return 2 * first.testBit(i) + (i < second.size() && second.testBit(i));
            };
            ChangeCounts const counts({first, second});
            for (int k = 0; k < 300; ++k) {
                int const begin = random.bounded(length + 9) - 5;
                int const end = begin + random.bounded(length + 9);
                int expected = 0;
                for (int i = std::max(1, begin); i < std::min(end, length); ++i)
                    expected += value(i) != value(i - 1);
                QCOMPARE(counts.count(begin, end), expected);
            }
        }
    }

    void densities()
    {
        // A clock of four samples has no pattern of its own, whatever the strip's width.
        QBitArray clock(10000);
        for (int i = 0; i < clock.size(); ++i)
            clock.setBit(i, i / 2 % 2 != 0);
        ChangeCounts const counts({clock});
        for (int const width : {1200, 3001, 7000}) {
            QVector<double> const found = changeDensities({&counts}, {10000, width});
            QCOMPARE(found.size(), width);
            for (int column = 5; column < width - 5; ++column)
                QVERIFY2(found[column] > 0.7, qPrintable(QString::number(width)));
        }
        // A single change among ten million samples is seen, and only in its column.
        QBitArray quiet(10000000);
        quiet.setBit(quiet.size() - 1);
        ChangeCounts const pulse({quiet});
        QVector<double> found = changeDensities({&pulse, &pulse}, {quiet.size(), 1000});
        QCOMPARE(found.takeLast(), 1.0);
        QCOMPARE(found, QVector<double>(999, 0.0));
        QVERIFY(changeDensities({}, {0, 0}).isEmpty());
        QCOMPARE(changeDensities({&pulse}, {0, 2}), QVector<double>(2, 0.0));
    }

    void offChangesNothing()
    {
        MonitorRig rig;
        QVERIFY(!rig.widget->isOverviewVisible());
        auto const grab = [&] {
            MonitorRig::settle();
            return rig.widget->grab().toImage();
        };
        QImage const before = grab();
        rig.widget->setOverviewVisible(true);
        QVERIFY(rig.widget->isOverviewVisible());
        QImage const with = grab();
        auto const topOf = [&](QWidget* part) { return part->mapTo(rig.widget.get(), {}).y(); };
        QCOMPARE(topOf(rig.tree()->viewport()), topOf(rig.waves()->viewport()));
        QVERIFY(with != before);
        rig.widget->setOverviewVisible(false);
        QVERIFY(!rig.widget->isOverviewVisible());
        QCOMPARE(grab(), before);
    }

    void scrolls()
    {
        MonitorRig rig;
        rig.widget->setOverviewVisible(true);
        rig.widget->zoomTo(4.0); // 200 pixels a sample
        MonitorRig::settle();
        auto* const strip = rig.widget->findChild<OverviewStrip*>();
        auto const xOf = [&](double time) {
            return int(time * strip->width() / MonitorRig::Samples);
        };
        auto const move = [&](int x) {
            QMouseEvent event(QEvent::MouseMove, QPointF(x, 5), Qt::NoButton, Qt::LeftButton, {});
            QCoreApplication::sendEvent(strip, &event);
        };
        auto const middle = [&] {
            QRect const shown = rig.waves()->viewport()->rect();
            return rig.waves()->mapToScene(shown.center()).x() / Constants::Graphics::kSampleWidth;
        };
        QTest::mousePress(strip, Qt::LeftButton, {}, QPoint(xOf(120), 5));
        QVERIFY(std::abs(middle() - 120) < 1);
        move(xOf(60));
        QVERIFY(std::abs(middle() - 60) < 1);
        move(-500); // to the begin, and no further
        QCOMPARE(rig.waves()->horizontalScrollBarValue(), 0);
        QTest::mouseRelease(strip, Qt::LeftButton, {}, QPoint(-500, 5));
        move(xOf(150)); // no longer held
        QCOMPARE(rig.waves()->horizontalScrollBarValue(), 0);
        QCOMPARE(grabbedPlace(12, 10, 5), 10.0); // within the visible part nothing jumps
        QCOMPARE(grabbedPlace(30, 10, 5), 27.5);
    }

    void showsWhatIsThere()
    {
        MonitorRig rig;
        rig.widget->setOverviewVisible(true);
        rig.widget->setWindowsNum(2);
        rig.widget->setMarkerTimes({190});
        rig.widget->setCursorTime(20);
        rig.widget->zoomTo(16);
        MonitorRig::settle();
        auto* const strip = rig.widget->findChild<OverviewStrip*>();
        QImage const image = strip->grab().toImage();
        auto const colorAt = [&](int time, int y) {
            return image.pixelColor(time * strip->width() / MonitorRig::Samples, y);
        };
        for (int const trigger : {50, 150})
            QCOMPARE(colorAt(trigger, 12), QColor(Qt::yellow));
        QCOMPARE(colorAt(100, 20), QColor(Qt::red)); // the second window
        QCOMPARE(colorAt(190, 12), QColor(Qt::white));
        QCOMPARE(colorAt(20, 12), QColor(0xFF, 0xA5, 0));
        QVERIFY(colorAt(75, 12).green() > colorAt(75, 12).red()); // the clock changes everywhere
        rig.widget->updataWaveDatas(QVector<QBitArray>(7, QBitArray(MonitorRig::Samples)).toList());
        MonitorRig::settle();
        QCOMPARE(strip->grab().toImage().pixelColor(75 * strip->width() / 200, 12),
                 QColor(Qt::black));
        rig.widget->updataWaveDatas(QVector<QBitArray>(7, QBitArray(1)).toList());
        MonitorRig::settle();
        QCOMPARE(strip->grab().size(), strip->size());
    }
};

QTEST_MAIN(OverviewTest)
#include "tst_overview.moc"
