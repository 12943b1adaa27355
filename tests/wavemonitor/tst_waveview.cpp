#include "tests/support/widgettools.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/waves/waveviewmenu.h"
#include "wavemonitor/waveview.h"

#include <QGraphicsRectItem>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>

#include <cmath>
#include <limits>

using namespace WaveMonitor;
using namespace widgettools;

namespace {

using Types = QList<NotificationType>;

class Source : public WaveView::DataSourceProtocol
{
public:
    ~Source() override { qDeleteAll(items); }

    QGraphicsRectItem* addRow(double width, double height = 30.0)
    {
        auto* item = new QGraphicsRectItem(0, 0, width, height);
        item->setPen(Qt::NoPen);
        items.append(item);
        return item;
    }

    QList<QGraphicsItem*> waveItems() override
    {
        ++layouts;
        double y = 0.0;
        for (QGraphicsItem* item : qAsConst(items)) {
            item->setPos(0.0, y);
            y += item->isVisible() ? item->boundingRect().height() : 0.0;
        }
        return items;
    }
    void updateItems() override { waveItems(); }
    int triggerPosition() override { return trigger; }
    int oneWindowSize() override { return size; }
    int WindowsNum() override { return windows; }
    void highlightItem(QGraphicsItem* item) override { highlighted = item; }

    QList<QGraphicsItem*> items;
    QGraphicsItem* highlighted = nullptr;
    int trigger = 0;
    int size = 1000;
    int windows = 1;
    int layouts = 0;
};

/// Stands for whatever else of a monitor publishes; hears what the view publishes.
class Participant : public QObject, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)
    Q_PROPERTY(double zoomRate MEMBER zoomRate)

public:
    Participant()
    {
        NotificationCenter::shared()->registerObserver(
            this, Types{ZoomAboutToChange, ZoomChanged, HorizontalScrollChanged});
    }
    ~Participant() override { NotificationCenter::shared()->unregisterObserver(this); }

    Q_INVOKABLE void handleEvents(Notification* note) { types.append(note->type); }

    void post(NotificationType type)
    {
        NotificationCenter::shared()->postEvent(new Notification(type, this), this);
    }

    Types types;
    double zoomRate = 1.0;
};

/// A ruler above a wave view, wired as in a monitor, over 1000 samples.
struct Panes
{
    Panes()
    {
        wave.setDataSource(&source);
        wave.setCursorItem(ruler.cursorItem());
        ruler.viewport()->installEventFilter(&wave);
        for (int i = 0; i < 20; ++i) {
            source.addRow(50000.0);
        }
        ruler.setLength(1000);
        ruler.resize(816, 50);
        wave.resize(816, 300);
        ruler.show();
        wave.show();
        wave.rearrangeItems();
        QCoreApplication::processEvents();
    }

    Source source;
    RulerView ruler;
    WaveView wave;
};

QColor pixel(WaveView& view, int x, int y = 100)
{
    return picture(view.viewport()).pixelColor(x, y);
}

} // namespace

class WaveViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void zoomIsAnnouncedAndReported()
    {
        Panes panes;
        Participant other;
        panes.wave.zoomIn();
        QCOMPARE(panes.wave.zoomRate(), 2.0);
        QCOMPARE(panes.wave.transform().m11(), 2.0);
        QCOMPARE(other.types, Types{ZoomAboutToChange});
        QCoreApplication::processEvents();
        QCOMPARE(other.types.last(), HorizontalScrollChanged);
        QCOMPARE(other.types.count(ZoomChanged), 1);
        QCOMPARE(panes.ruler.zoomRate(), 2.0);

        panes.wave.setZoomRate(16.0);
        QCoreApplication::processEvents();
        other.types.clear();
        panes.wave.zoomIn();
        for (double const rate : {16.0, 0.0, -1.0, std::nan(""), 1.0 / 0.0}) {
            panes.wave.setZoomRate(rate);
        }
        QCoreApplication::processEvents();
        QCOMPARE(other.types, Types{});
        panes.wave.setZoomRate(1.0 / 300);
        panes.wave.zoomOut();
        QCOMPARE(panes.wave.zoomRate(), 1.0 / 256);

        // taken from a note as it is, but only from the own domain
        other.zoomRate = 64.0;
        other.setDomain(1);
        other.post(ZoomChanged);
        QCoreApplication::processEvents();
        QCOMPARE(panes.wave.zoomRate(), 1.0 / 256);
        other.setDomain(0);
        other.post(ZoomChanged);
        QCoreApplication::processEvents();
        QCOMPARE(panes.wave.zoomRate(), 64.0);
        QCOMPARE(panes.ruler.zoomRate(), 64.0);
    }

    void wheelZoomsWithControl()
    {
        Panes panes;
        wheel(panes.wave.viewport(), QPoint(0, 120), Qt::ControlModifier);
        QCOMPARE(panes.wave.zoomRate(), 2.0);
        wheel(panes.ruler.viewport(), QPoint(0, -120), Qt::ControlModifier);
        wheel(panes.ruler.viewport(), QPoint(0, -1), Qt::ControlModifier);
        QCOMPARE(panes.wave.zoomRate(), 0.5);
        wheel(panes.wave.viewport(), QPoint(120, 0), Qt::ControlModifier);
        QCOMPARE(panes.wave.zoomRate(), 0.5);
        wheel(panes.ruler.viewport(), QPoint(0, -120));
        QCOMPARE(panes.wave.zoomRate(), 0.5);
        QVERIFY(panes.wave.verticalScrollBar()->value() > 0);
    }

    /// At every zoom the ruler stands over the waves, to the pixel.
    void rulerFollows()
    {
        Panes panes;
        QCOMPARE(panes.ruler.viewport()->width(), panes.wave.viewport()->width());
        panes.wave.verticalScrollBar()->setValue(77);
        for (double const rate : {16.0, 3.7, 1.0, 0.0625, 0.00390625}) {
            panes.wave.setZoomRate(rate);
            panes.wave.jump(700);
            QCoreApplication::processEvents();
            QCOMPARE(panes.ruler.mapFromScene(35000, 0).x(), panes.wave.mapFromScene(35000, 0).x());
            QCOMPARE(panes.wave.verticalScrollBar()->value(), 77);
        }
    }

    void sceneHoldsWhatIsVisible()
    {
        Panes panes;
        QCOMPARE(panes.wave.sceneRect(), QRectF(0, 0, 50000, 600));
        panes.source.items.at(3)->setVisible(false);
        panes.source.addRow(60000.0, 90.0);
        panes.wave.updateAllItems();
        QCOMPARE(panes.wave.sceneRect(), QRectF(0, 0, 60000, 660));
        QCOMPARE(panes.source.items.last()->scene(), nullptr);
        panes.wave.rearrangeItems();
        QCOMPARE(panes.source.items.last()->scene(), panes.wave.scene());
        panes.wave.removeAllItems();
        QVERIFY(panes.wave.scene()->items().isEmpty());
        panes.wave.setDataSource(nullptr);
        panes.wave.rearrangeItems();
    }

    void notesLayRowsOut()
    {
        std::pair<NotificationType, int> const rowsAfter[] = {
            {DataFormatChanged, 20}, {RowCollapsed, 20},       {RowExpanded, 20},
            {RemoveWaveItems, 0},    {RearrangeWaveItems, 21}, {LayoutChanged, 21},
            {WaveColorChanged, 20},
        };
        for (auto const& [type, rows] : rowsAfter) {
            Panes panes;
            panes.source.addRow(50000.0);
            Participant other;
            Notification note(type, &other);
            other.setDomain(9);
            panes.wave.handleEvents(&note);
            QCOMPARE(panes.wave.scene()->items().size(), 20);
            other.setDomain(0);
            QCOMPARE(panes.wave.handleEvents(&note), QString());
            QCOMPARE(panes.wave.scene()->items().size(), rows);
        }
    }

    /// A note for each of thousands of rows does not lay out thousands of rows each time, and the
    /// last one counts.
    void burstsAreCoalesced()
    {
        Panes panes;
        Participant other;
        for (int i = 0; i < 4096; ++i) {
            panes.source.addRow(50000.0);
            other.post(LayoutChanged);
        }
        panes.source.layouts = 0;
        QCoreApplication::sendPostedEvents(&panes.wave, QEvent::MetaCall);
        panes.source.addRow(70000.0);
        QCoreApplication::processEvents();
        QVERIFY2(panes.source.layouts < 10, qPrintable(QString::number(panes.source.layouts)));
        panes.source.addRow(80000.0);
        other.post(LayoutChanged);
        QCoreApplication::processEvents();
        QCOMPARE(panes.wave.sceneRect(), QRectF(0, 0, 80000, 30.0 * 4118));
        QCOMPARE(panes.wave.scene()->items().size(), 4118);
    }

    void clickPlacesTheCursor()
    {
        Panes panes;
        QSignalSpy moved(&panes.wave, &WaveView::updateCursorTime);
        QTest::mouseClick(panes.wave.viewport(), Qt::LeftButton, {}, QPoint(199, 40));
        QCOMPARE(panes.ruler.cursorItem()->time(), 3);
        QCOMPARE(panes.source.highlighted, panes.source.items.at(1));
        QCOMPARE(moved.count(), 1);
        drag(panes.wave.viewport(), Qt::LeftButton, QPoint(200, 40), QPoint(209, 40));
        QTest::mouseRelease(panes.wave.viewport(), Qt::LeftButton, {}, QPoint(209, 40));
        QCoreApplication::processEvents();
        QCOMPARE(panes.ruler.cursorItem()->time(), 4);
        QCOMPARE(panes.wave.zoomRate(), 1.0);
        panes.wave.setZoomRate(1.0 / 256);
        QTest::mouseClick(panes.wave.viewport(), Qt::LeftButton, {}, QPoint(700, 290));
        QCOMPARE(panes.ruler.cursorItem()->time(), 999);
        QCOMPARE(panes.source.highlighted, nullptr);
    }

    void dragZoomsToItsRegion()
    {
        std::tuple<int, int, double> const cases[] = {
            {200, 299, 8.0},
            {299, 200, 8.0},
            {400, 410, 16.0}, // the fewest pixels, held at the greatest rate
            {400, 9999, 2.0}, // past the edge
        };
        for (auto const& [from, to, rate] : cases) {
            Panes panes;
            panes.wave.resize(800 + panes.wave.width() - panes.wave.viewport()->width(), 300);
            panes.wave.verticalScrollBar()->setValue(50);
            int const left = qMin(from, to);
            int const right = qMin(qMax(from, to), 799);
            double const begin = panes.wave.mapToScene(left, 0).x();
            drag(panes.wave.viewport(), Qt::LeftButton, QPoint(from, 40), QPoint(to, 60));
            QColor const shade = pixel(panes.wave, left - 2);
            QVERIFY(shade.blue() > 20 && shade.red() == 0);
            // the line, and the shade over it
            QVERIFY(pixel(panes.wave, left - 1).blue() == 255);
            QCOMPARE(pixel(panes.wave, (left + right) / 2 + 3), QColor(Qt::black));
            QVERIFY(pixel(panes.wave, right).blue() == 255);

            QTest::mouseRelease(panes.wave.viewport(), Qt::LeftButton, {}, QPoint(to, 60));
            QCOMPARE(panes.wave.zoomRate(), 1.0);
            QCoreApplication::processEvents();
            QCOMPARE(panes.wave.zoomRate(), rate);
            QCOMPARE(panes.wave.verticalScrollBar()->value(), 50);
            int const shown = panes.wave.mapFromScene(begin, 0).x();
            QVERIFY2(shown >= 0 && shown + (right - left) * panes.wave.zoomRate() <= 801,
                     qPrintable(QString::number(shown)));
            QCOMPARE(pixel(panes.wave, 20), QColor(Qt::black));
        }
    }

    void middleButtonMovesTheWaves()
    {
        Panes panes;
        panes.wave.horizontalScrollBar()->setValue(500);
        panes.wave.verticalScrollBar()->setValue(100);
        drag(panes.wave.viewport(), Qt::MiddleButton, QPoint(200, 100), QPoint(230, 60));
        QCOMPARE(panes.wave.horizontalScrollBar()->value(), 470);
        QCOMPARE(panes.wave.verticalScrollBar()->value(), 140);
        QCOMPARE(panes.wave.cursor().shape(), Qt::OpenHandCursor);
        QTest::mouseRelease(panes.wave.viewport(), Qt::MiddleButton, {}, QPoint(230, 60));
        QCOMPARE(panes.wave.cursor().shape(), Qt::ArrowCursor);
        QCoreApplication::processEvents();
        QCOMPARE(panes.ruler.horizontalScrollBar()->value(), 470);
    }

    void linesStandAtTheirTimes()
    {
        Panes panes;
        panes.source.size = 11;
        panes.source.windows = 3;
        panes.source.trigger = 1;
        panes.ruler.createMarker(5);
        panes.ruler.createMarker(8);
        panes.ruler.cursorItem()->setTime(9);
        QCoreApplication::processEvents();
        for (double const ratio : {1.5, 2.0, 1.0}) {
            QImage const image = picture(panes.wave.viewport(), ratio);
            QSet<int> trigger;
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, int(280 * ratio)) == QColor(Qt::yellow)) {
                    trigger.insert(int(x / ratio));
                }
            }
            QCOMPARE(trigger, (QSet<int>{50, 200, 350}));
            auto const at = [&](int x) { return image.pixelColor(int(x * ratio), 100); };
            QCOMPARE(at(250), QColor(Qt::red));
            QCOMPARE(at(400), QColor(Qt::white));
            QCOMPARE(at(450), QColor(0xFFA500));
        }
        QImage const image = picture(panes.wave.viewport());
        // the distances from the active marker stand beside the other lines alone
        auto const texted = [&image](int x, QColor const& color) {
            for (int i = x + 3; i < x + 20; ++i) {
                for (int y = image.height() - 12; y < image.height(); ++y) {
                    QColor const pixel = image.pixelColor(i, y);
                    if (pixel.hue() == color.hue() && pixel.value() > 100) {
                        return true;
                    }
                }
            }
            return false;
        };
        QCOMPARE(texted(250, Qt::red), textIsSeen(monitorFontOfPointSize(9)));
        QCOMPARE(texted(450, QColor(0xFFA500)), textIsSeen(monitorFontOfPointSize(9)));
        QVERIFY(!texted(400, Qt::white));

        panes.source.windows = 0;
        QCOMPARE(pixel(panes.wave, 50), QColor(Qt::black));
        panes.source.windows = std::numeric_limits<int>::max();
        QCOMPARE(pixel(panes.wave, 50), QColor(Qt::yellow));
        panes.ruler.deleteAllMarker();
        QCoreApplication::processEvents();
        QCOMPARE(pixel(panes.wave, 400), QColor(Qt::black));
    }

    void marksHoldTriggersAndMarkers()
    {
        Panes panes;
        panes.source.size = 11;
        panes.source.windows = 3;
        panes.source.trigger = 1;
        panes.ruler.createMarker(6);
        panes.ruler.createMarker(700);
        QCoreApplication::processEvents();
        auto const marked = [&panes] {
            panes.wave.updateMarkerOrTrigerPos();
            QList<int> times;
            for (int t = panes.wave.marks().next(-1); t >= 0; t = panes.wave.marks().next(t)) {
                times.append(t);
            }
            return times;
        };
        QCOMPARE(marked(), (QList<int>{1, 4, 6, 8}));
        panes.source.trigger = 9;
        panes.source.windows = std::numeric_limits<int>::max();
        QCOMPARE(marked(), (QList<int>{6, 9, 10}));
        panes.source.windows = 0;
        QCOMPARE(marked(), QList<int>{6});
    }

    void menuKnowsWhatCanBeDone()
    {
        Panes panes;
        QMenu* menu = panes.wave.menuDelegate()->menu();
        QList<QAction*> const cursors = menu->actions().at(2)->menu()->actions();
        QList<QAction*> const markers = menu->actions().at(3)->menu()->actions();
        QCOMPARE(cursors.size(), 5);
        QCOMPARE(markers.at(3)->text(), "Remove All Marker");
        for (QAction const* action : cursors + markers) {
            QVERIFY2(!action->icon().pixmap(16).isNull(), qPrintable(action->text()));
        }
        auto const enabled = [&panes, &markers](int time) {
            panes.ruler.cursorItem()->setTime(time);
            panes.wave.updateMarkerAction();
            QString text;
            for (QAction const* action : markers) {
                text.append(action->isEnabled() ? '1' : '0');
            }
            return text;
        };
        panes.source.trigger = 10;
        QCOMPARE(enabled(9), "1010");
        QCOMPARE(enabled(10), "1000");
        QCOMPARE(enabled(11), "1100");
        panes.ruler.createMarker(20);
        QCoreApplication::processEvents();
        QCOMPARE(enabled(11), "1111");
        markers.at(0)->trigger(); // outside of a monitor there is nobody to run it
        menu->actions().at(1)->trigger();
        QCOMPARE(panes.wave.zoomRate(), 0.5);
    }

    /// Whoever goes first, with notes still queued: nothing is read or freed twice.
    void deletionIsHarmless()
    {
        Source source;
        QGraphicsItem* item = source.addRow(5000.0);
        auto ruler = std::make_unique<RulerView>();
        auto wave = std::make_unique<WaveView>();
        wave->setDataSource(&source);
        wave->setCursorItem(ruler->cursorItem());
        wave->rearrangeItems();
        wave->show();
        ruler->setLength(100);
        ruler->createMarker(3);
        QCoreApplication::processEvents();
        ruler->createMarker(4);
        ruler->deleteAllMarker();
        ruler.reset();
        QVERIFY(!wave->viewport()->grab().isNull());
        QCoreApplication::processEvents();
        wave->zoomIn();
        Participant().post(LayoutChanged);
        inDialog<QMenu>([&wave](QMenu*) { wave.reset(); });
        rightClick(wave->viewport(), QPoint(10, 10));
        QVERIFY(!wave);
        QCOMPARE(item->scene(), nullptr);
        QCoreApplication::processEvents();
    }
};

QTEST_MAIN(WaveViewTest)
#include "tst_waveview.moc"
