#include "tests/support/widgettools.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/ruler/scaleruler.h"
#include "wavemonitor/rulerview.h"

#include <QMenu>
#include <QScrollBar>

using namespace WaveMonitor;

namespace {

using Types = QList<NotificationType>;

QList<int> timesOf(QList<TimeSliderData*> const& markers)
{
    QList<int> list;
    for (TimeSliderData const* data : markers) {
        list.append(data->time());
    }
    return list;
}

/// Keeps the markers as an observer does, and reads them again at the next report.
class Reader : public QObject
{
    Q_OBJECT

public:
    Reader()
    {
        NotificationCenter::shared()->registerObserver(
            this, Types{MarkerAboutToBeCreated, MarkerCreated, ActiveMarkerAboutToChange,
                        ActiveMarkerChanged, MarkerAboutToBeRemoved, MarkerRemoved});
    }
    ~Reader() override { NotificationCenter::shared()->unregisterObserver(this); }

    Q_INVOKABLE void handleEvents(Notification* note)
    {
        types.append(note->type);
        times = timesOf(markers);
        markers = note->sender->property("timeMarkers").value<QList<TimeSliderData*>>();
    }

    Types types;
    QList<int> times;
    QList<TimeSliderData*> markers;
};

QList<int> times(RulerView const& ruler)
{
    return timesOf(ruler.timeMarkers());
}

/// A point within the flag of that sample.
QPoint flagAt(RulerView const& ruler, int time)
{
    return ruler.mapFromScene(time * 50.0, 0.0) + QPoint(4, -10);
}

void drag(RulerView& ruler, QPoint const& from, QPoint const& to)
{
    QWidget* viewport = ruler.viewport();
    widgettools::drag(viewport, Qt::LeftButton, from, to);
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, to);
}

/// Opens the menu at a point, picks the named entry, and gives the texts of all.
QString useMenu(RulerView& ruler, QPoint const& at, QString const& entry)
{
    QStringList texts;
    widgettools::inDialog<QMenu>([&](QMenu* menu) {
        for (QAction const* action : menu->actions())
            texts.append(action->text());
        widgettools::pick(menu, {entry});
    });
    widgettools::rightClick(ruler.viewport(), at);
    QCoreApplication::processEvents();
    widgettools::Openings::shared()->waiting.clear(); // there may be no menu
    return texts.join(", ");
}

} // namespace

class RulerViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ruler = std::make_unique<RulerView>();
        m_ruler->resize(814, 50);
        m_ruler->setLength(100);
        m_ruler->show();
    }

    void cleanup() { m_ruler.reset(); }

    void markersAreOrderedByActivity()
    {
        Reader reader;
        m_ruler->createMarker(5);
        m_ruler->addMarker(8);
        QCOMPARE(times(*m_ruler), (QList<int>{8, 5}));
        QCoreApplication::processEvents();
        QCOMPARE(reader.types, (Types{MarkerAboutToBeCreated, MarkerAboutToBeCreated, MarkerCreated,
                                      MarkerCreated}));
        reader.types.clear();

        TimeSliderItem* older = m_ruler->timeMarkers().at(1)->item();
        TimeSliderItem* newer = m_ruler->timeMarker()->item();
        QVERIFY(newer->isMain() && !older->isMain());
        QVERIFY(newer->zValue() > older->zValue());
        m_ruler->activeMarker(older);
        QCOMPARE(times(*m_ruler), (QList<int>{5, 8}));
        QVERIFY(older->isMain() && !newer->isMain());
        QCOMPARE(older->zValue(), 1.0);
        QCOMPARE(newer->zValue(), 0.0);

        m_ruler->removeMarker(older);
        QVERIFY(newer->isMain());
        m_ruler->removeMarker(m_ruler->cursorItem());
        m_ruler->removeMarker(nullptr);
        QCoreApplication::processEvents();
        QCOMPARE(reader.types, (Types{ActiveMarkerAboutToChange, MarkerAboutToBeRemoved,
                                      ActiveMarkerChanged, MarkerRemoved}));
        QCOMPARE(times(*m_ruler), (QList<int>{8}));
    }

    /// The observers' copies of the list stay readable until they have been told.
    void removedMarkersOutliveTheirReport()
    {
        Reader reader;
        Reader later;
        for (int time = 0; time < 20; ++time) {
            m_ruler->createMarker(time);
        }
        QCoreApplication::processEvents();
        m_ruler->deleteAllMarker();
        QVERIFY(m_ruler->timeMarkers().isEmpty());
        reader.types.clear();
        QCoreApplication::sendPostedEvents(&reader, QEvent::MetaCall);
        QCOMPARE(reader.types.size(), 20);
        QVERIFY(reader.markers.isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(later.types.count(MarkerRemoved), 20);
        QCOMPARE(m_ruler->scene()->items().size(), 2);

        m_ruler->createMarker(3);
        m_ruler->deleteAllMarker();
        m_ruler.reset();
        QCoreApplication::processEvents();
    }

    void markersAreDragged()
    {
        m_ruler->createMarker(3);
        m_ruler->createMarker(6);
        Reader reader;
        // below the flags there is nothing to take hold of
        drag(*m_ruler, QPoint(150, 35), QPoint(250, 35));
        QCOMPARE(times(*m_ruler), (QList<int>{6, 3}));

        drag(*m_ruler, flagAt(*m_ruler, 3), QPoint(274, 10));
        QCOMPARE(times(*m_ruler), (QList<int>{5, 6}));
        QCOMPARE(m_ruler->timeMarker()->item()->x(), 250.0);
        drag(*m_ruler, flagAt(*m_ruler, 5), QPoint(275, 10));
        QCOMPARE(times(*m_ruler), (QList<int>{6, 6}));
        drag(*m_ruler, flagAt(*m_ruler, 6), QPoint(100000, 10));
        QCOMPARE(times(*m_ruler).first(), 99);
        QCOMPARE(reader.types.count(ActiveMarkerAboutToChange), 6);
        m_ruler->horizontalScrollBar()->setValue(m_ruler->horizontalScrollBar()->maximum());
        drag(*m_ruler, flagAt(*m_ruler, 99), QPoint(-100000, 10));
        QCOMPARE(times(*m_ruler).first(), 0);
    }

    /// A cursor that is set before any data has come.
    void keepsItsCursor()
    {
        RulerView empty;
        empty.cursorItem()->setTime(70);
        empty.setLength(100);
        QCOMPARE(empty.cursorItem()->time(), 70);
    }

    void menus()
    {
        QString const create = "Create Marker at Clock Period: %1";
        QString const remove = "Remove Marker, Remove All Markers";
        QCOMPARE(useMenu(*m_ruler, QPoint(170, 10), create.arg(3)), create.arg(3));
        QCOMPARE(times(*m_ruler), QList<int>{3});
        QCOMPARE(useMenu(*m_ruler, QPoint(174, 10), "none"), create.arg(3));
        QCOMPARE(useMenu(*m_ruler, QPoint(175, 10), create.arg(4)), create.arg(4));
        QCOMPARE(useMenu(*m_ruler, QPoint(175, 40), create.arg(4)), "");
        QCOMPARE(times(*m_ruler), (QList<int>{4, 3}));
        // the cursor does not hide a marker
        m_ruler->cursorItem()->setTime(4);
        QCOMPARE(useMenu(*m_ruler, flagAt(*m_ruler, 4), "Remove Marker"), remove);
        QCOMPARE(times(*m_ruler), QList<int>{3});
        m_ruler->createMarker(7);
        QCOMPARE(useMenu(*m_ruler, flagAt(*m_ruler, 7), "Remove All Markers"), remove);
        QVERIFY(m_ruler->timeMarkers().isEmpty());
        m_ruler->setLength(0);
        QCOMPARE(useMenu(*m_ruler, QPoint(0, 10), create.arg(0)), "");
    }

    void viewMayGoWhileItsMenuIsOpen()
    {
        widgettools::inDialog<QMenu>([this](QMenu*) { m_ruler.reset(); });
        widgettools::rightClick(m_ruler->viewport(), QPoint(170, 10));
        QVERIFY(!m_ruler);
    }

    void pictureShowsTheFlags()
    {
        m_ruler->createMarker(3);
        m_ruler->createMarker(6);
        m_ruler->cursorItem()->setTime(9);
        for (double const ratio : {1.0, 1.5, 2.0}) {
            QImage const image = widgettools::picture(m_ruler->viewport(), ratio);
            auto const at = [&](QPoint const& point) {
                return image.pixelColor(int(point.x() * ratio), int(point.y() * ratio));
            };
            QCOMPARE(at(flagAt(*m_ruler, 3)), QColor(Qt::red));
            QCOMPARE(at(flagAt(*m_ruler, 6)), QColor(Qt::white));
            QCOMPARE(at(flagAt(*m_ruler, 9)), QColor(0xFFA500));
            QCOMPARE(at(QPoint(600, 10)), QColor(Qt::gray));
            QCOMPARE(at(QPoint(610, 47)), QColor(0x555555));
            QCOMPARE(at(QPoint(600, 40)), QColor(Qt::white)); // a tick
            for (int x = 0; x < image.width(); ++x)           // no number is cut off
                QCOMPARE(image.pixelColor(x, 0), QColor(Qt::gray));
        }
        QCOMPARE(m_ruler->verticalScrollBar()->maximum(), m_ruler->verticalScrollBar()->minimum());
        QFontMetricsF const metrics(monitorFontOfPointSize(9));
        QRectF const rect = m_ruler->timeMarker()->item()->boundingRect();
        QCOMPARE(rect.topLeft(), QPointF(0.0, -metrics.height() - 15.0));
        QCOMPARE(rect.bottomRight(), QPointF(qMax(10.0, metrics.horizontalAdvance("6")), 0.0));
    }

    /// Of close flags only the cursor's or the active marker's number is written.
    void numbersDontOverprint()
    {
        auto const numbers = [&] {
            QImage const image = m_ruler->viewport()->grab().toImage();
            return image.copy(0, 0, image.width(), 14); // above the flags
        };
        m_ruler->setZoomRate(0.1);
        m_ruler->createMarker(51);
        m_ruler->cursorItem()->setTime(90);
        QImage const alone = numbers();
        m_ruler->createMarker(52);
        m_ruler->createMarker(91);
        m_ruler->activeMarker(m_ruler->timeMarkers().at(2)->item());
        QCOMPARE(numbers(), alone);
        QCOMPARE(m_ruler->property("timeMarker").value<TimeSliderData*>()->time(), 51);
        m_ruler->setZoomRate(1.0);
        m_ruler->horizontalScrollBar()->setValue(50 * 50);
        QImage const apart = numbers();
        m_ruler->removeMarker(m_ruler->timeMarkers().at(2)->item());
        QCOMPARE(numbers() != apart, widgettools::textIsSeen(monitorFontOfPointSize(9)));
    }

private:
    std::unique_ptr<RulerView> m_ruler;
};

QTEST_MAIN(RulerViewTest)
#include "tst_rulerview.moc"
