#include "monitorrig.h"

#include <QApplication>
#include <QMimeData>

#include <functional>

using namespace WaveMonitor;

namespace {

int const Clk = 1;
int const Idle = 4;

/// The offscreen platform has no drags; this one runs them in Qt, as the others do.
bool const platformIsSet = qputenv("QT_QPA_PLATFORM", "minimal");

/// Drags the selected rows by hand from one point of the tree to another; `before` runs in the
/// drag's event loop with the mouse at the end.
void drag(MonitorRig const& rig, QPoint from, QPoint to, std::function<void()> before = {})
{
    QPointer<QWindow> const window = rig.widget->windowHandle();
    auto const inWindow = [&](QPoint at) {
        return rig.tree()->viewport()->mapTo(rig.widget.get(), at);
    };
    QPoint const start = inWindow(from);
    QPoint const end = inWindow(to);
    int const far = QApplication::startDragDistance() + 2;
    QTest::mousePress(window, Qt::LeftButton, {}, start);
    QTest::mouseMove(window, start + QPoint(far, 0));
    QTimer::singleShot(0, qApp, [=] {
        QTest::mouseMove(window, end);
        if (before)
            before();
        if (window)
            QTest::mouseRelease(window, Qt::LeftButton, {}, end);
    });
    QTest::mouseMove(window, start + QPoint(far + 1, 0));
    MonitorRig::settle();
}

} // namespace

class TestTreeDrag : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drags()
    {
        QPoint const Empty(-1, -1);
        QString const start = "d(3 2 1 0) clk ready New Divider idle";
        struct
        {
            QList<QPoint> rows; // row, member or -1
            QPoint onto;        // likewise, or the empty area
            bool lower;         // half of that row
            QString expected;
        } const cases[] = {
            {{{4, -1}}, {1, -1}, false, "d(3 2 1 0) idle clk ready New Divider"},
            {{{0, -1}}, {2, -1}, true, "clk ready d(3 2 1 0) New Divider idle"},
            {{{1, -1}, {4, -1}}, {0, -1}, false, "clk idle d(3 2 1 0) ready New Divider"},
            {{{2, -1}}, {2, -1}, false, start}, // on itself
            {{{0, -1}}, {0, -1}, false, start}, // nothing above
            {{{3, -1}, {4, -1}}, {4, -1}, true, start},
            {{{1, -1}, {2, -1}, {4, -1}}, {2, -1}, true, "d(3 2 1 0) clk ready idle New Divider"},
            {{{1, -1}}, Empty, false, "d(3 2 1 0) ready New Divider idle clk"},
            {{{0, 3}}, {0, 0}, true, "d(3 0 2 1) clk ready New Divider idle"}, // within its bus
            {{{0, 1}}, Empty, false, "d(3 1 0) clk ready New Divider idle 2"}, // out of it
            {{{1, -1}}, {0, 1}, false, start},                                 // into a bus
            {{{0, 1}}, {1, -1}, true, start},
            {{{0, 1}, {1, -1}}, {4, -1}, true, start}, // of two parents
            {{{0, 0}, {0, 1}, {0, 2}, {0, 3}}, Empty, false, "clk ready New Divider idle 3 2 1 0"},
        };
        for (auto const& [rows, onto, lower, expected] : cases) {
            MonitorRig rig;
            rig.tree()->expand(rig.row(0));
            rig.widget->resize(1000, 500);
            MonitorRig::settle();
            QList<QModelIndex> indexes;
            QStringList names;
            for (QPoint const& place : rows) {
                indexes.append(rig.row(place.x(), place.y()));
                names.append(rig.text(indexes.last()));
            }
            rig.select(indexes);
            QPoint to(40, rig.tree()->viewport()->height() - 10);
            if (onto != Empty) {
                QRect const target = rig.tree()->visualRect(rig.row(onto.x(), onto.y()));
                to =
                    QPoint(rig.tree()->columnWidth(0) + 20, target.center().y() + (lower ? 6 : -6));
            }
            drag(rig, rig.centre(indexes.first()), to);

            QString found = rig.rows();
            for (char const* longer : {"top/data[3]", "top/data[2]", "top/data[1]", "top/data[0]"})
                found.replace(longer, QString(longer[9]));
            QCOMPARE(found.replace("data[3:0]", "d").remove("top/"), expected);
            QStringList selected;
            for (QModelIndex const& index : rig.tree()->selectedRowList())
                selected.append(rig.text(index));
            names.sort();
            selected.sort();
            QCOMPARE(selected, names);
        }
    }

    void paintsTheDropPlace()
    {
        MonitorRig rig;
        rig.select({rig.row(Idle)});
        QRect const target = rig.tree()->visualRect(rig.row(Clk));
        QImage plain = rig.tree()->viewport()->grab().toImage();
        QImage during;
        int heightDuring = 0;
        drag(rig, rig.centre(rig.row(Idle)), target.center() + QPoint(0, 6), [&] {
            during = rig.tree()->viewport()->grab().toImage();
            heightDuring = rig.tree()->visualRect(rig.row(0)).height();
            QTest::keyClick(rig.widget->windowHandle(), Qt::Key_Escape);
        });
        QCOMPARE(heightDuring, 30);
        QPoint const tip(target.left() + 6, target.bottom() + 3);
        QCOMPARE(during.pixelColor(tip), QColor(Qt::black));
        QVERIFY(plain.pixelColor(tip) != QColor(Qt::black));
        QPoint const line(target.right() - 5, target.bottom());
        QVERIFY(during.pixelColor(line) != plain.pixelColor(line));
        QCOMPARE(rig.text(rig.row(Idle)), QString("top/idle")); // Escape: nothing moved
        QVERIFY(rig.tree()->viewport()->grab().toImage().pixelColor(tip) != QColor(Qt::black));
    }

    void survivesItsEndInADrag()
    {
        MonitorRig rig;
        rig.select({rig.row(Clk)});
        bool gone = false;
        drag(rig, rig.centre(rig.row(Clk)), rig.centre(rig.row(Idle)), [&] {
            rig.widget.reset();
            gone = true;
        });
        QVERIFY(gone);
    }

    void refusesForeignDrags()
    {
        MonitorRig rig;
        QString const before = rig.rows();
        std::unique_ptr<QMimeData> rows(rig.model()->mimeData({rig.row(Clk)}));
        QPoint const at = rig.centre(rig.row(Idle));
        QDragEnterEvent enter(at, Qt::MoveAction, rows.get(), Qt::LeftButton, {});
        QDragMoveEvent move(at, Qt::MoveAction, rows.get(), Qt::LeftButton, {});
        QDropEvent drop(at, Qt::MoveAction, rows.get(), Qt::LeftButton, {});
        for (QDropEvent* event :
             {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move), &drop}) {
            QApplication::sendEvent(rig.tree()->viewport(), event);
            QVERIFY(!event->isAccepted());
        }
        QCOMPARE(rig.rows(), before);
    }
};

QTEST_MAIN(TestTreeDrag)
#include "tst_treedrag.moc"
