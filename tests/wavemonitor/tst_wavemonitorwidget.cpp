#include "monitorrig.h"

#include "tests/support/widgettools.h"
#include "wavemonitor/drawconfig.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/waves/waveviewmenu.h"

#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>

using namespace WaveMonitor;

class TestWaveMonitorWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void zooms()
    {
        MonitorRig rig;
        WaveMonitorWidget* monitor = rig.widget.get();
        for (QWidget* pane : {rig.waves()->viewport(), monitor->rulerView()->viewport()}) {
            widgettools::wheel(pane, {0, 120}, Qt::ControlModifier);
            MonitorRig::settle();
        }
        monitor->zoomOut();
        monitor->zoomIn(); // before anybody has heard of the first
        MonitorRig::settle();
        QCOMPARE(monitor->zoomRate(), 4.0);
        QCOMPARE(rig.waves()->zoomRate(), 4.0);
        QCOMPARE(monitor->rulerView()->transform().m11(), 4.0);
        monitor->zoomTo(100);
        QCOMPARE(monitor->zoomRate(), 16.0);
        for (double bad : {0.0, -1.0, qQNaN(), qInf()}) {
            monitor->zoomTo(bad);
            monitor->setZoomRate(bad);
        }
        QCOMPARE(monitor->zoomRate(), 16.0);
        monitor->zoomFit();
        MonitorRig::settle();
        double const shown = rig.waves()->width() - rig.waves()->verticalScrollBar()->width();
        QCOMPARE(rig.waves()->zoomRate(), shown / (MonitorRig::Samples * 50));
        monitor->zoomTo(0);
        monitor->zoomOut();
        MonitorRig::settle();
        QCOMPARE(rig.waves()->transform().m11(), shown / (MonitorRig::Samples * 100));
    }

    void walksTransitions()
    {
        MonitorRig rig;
        QSignalSpy spy(rig.widget.get(), &WaveMonitorWidget::updateMarkerAct);
        rig.select({rig.row(2)});
        rig.widget->nextTransition();
        QCOMPARE(cursor(rig)->time(), 100);
        QCOMPARE(rig.model()->index(2, 1).data().toString(), QString("1"));
        QVERIFY(rig.waves()->viewport()->rect().contains(rig.waves()->mapFromScene(100 * 50, 0)));
        rig.widget->nextTransition();
        rig.widget->nextTransition();
        QCOMPARE(cursor(rig)->time(), 105);
        rig.widget->previousTransition();
        QCOMPARE(cursor(rig)->time(), 100); // the start of the pulse
        QCOMPARE(spy.count(), 4);
        rig.widget->gotoLastTime();
        QVERIFY(rig.waves()->mapFromScene(199 * 50, 0).x() < rig.waves()->viewport()->width());
        rig.widget->gotoTime0();
        QCOMPARE(rig.waves()->horizontalScrollBar()->value(), 0);
        rig.widget->gotoCursor();
        QVERIFY(rig.waves()->viewport()->rect().contains(rig.waves()->mapFromScene(100 * 50, 0)));
    }

    void walksMarkers()
    {
        MonitorRig rig;
        rig.widget->addMarker(); // the trigger stands at 50
        QMenu* const menu = rig.waves()->menuDelegate()->menu();
        menu->actions().at(3)->menu()->actions().at(0)->trigger(); // and by the menu
        MonitorRig::settle();
        QList<int> times;
        for (TimeSliderData* data : rig.widget->rulerView()->timeMarkers())
            times.append(data->time());
        QCOMPARE(times, (QList<int>{52, 51}));
        for (int expected : {51, 52, 52}) {
            rig.widget->nextMarker();
            QCOMPARE(cursor(rig)->time(), expected);
        }
        for (int expected : {51, 50, 50}) {
            rig.widget->previousMarker();
            QCOMPARE(cursor(rig)->time(), expected);
        }
        rig.widget->setWindowsNum(2);
        rig.widget->deleteAllMarkers();
        MonitorRig::settle();
        rig.widget->nextMarker(); // the trigger of the second window
        QCOMPARE(cursor(rig)->time(), 150);
    }

    void swallowsKeys()
    {
        struct Host : QWidget
        {
            int keys = 0;
            void keyPressEvent(QKeyEvent*) override { ++keys; }
        } host;
        MonitorRig rig;
        rig.widget->setParent(&host);
        host.show();
        MonitorRig::settle();
        QTest::keyClick(rig.waves(), Qt::Key_F5);
        QTest::keyClick(rig.widget->rulerView(), Qt::Key_F5);
        QCOMPARE(host.keys, 0);
        QTest::keyClick(rig.tree(), Qt::Key_F5);
        QCOMPARE(host.keys, 1);
        rig.tree()->setCurrentIndex(rig.row(0));
        QTest::keyClick(rig.tree(), Qt::Key_Down); // the tree keeps its own keys
        QCOMPARE(rig.tree()->currentIndex(), rig.row(1));
        rig.widget->setParent(nullptr);
    }

    void captionsStayOverTheirColumns()
    {
        MonitorRig rig;
        QHeaderView* header = rig.tree()->header();
        QLabel* name = nullptr;
        QLabel* value = nullptr;
        for (QLabel* label : header->viewport()->findChildren<QLabel*>())
            (label->text() == "Name" ? name : value) = label;
        QVERIFY(name && value);
        QCOMPARE(value->text(), QString("Value"));
        QCOMPARE(name->geometry(), QRect(0, 0, 197, 20));
        QCOMPARE(value->geometry(), QRect(200, 0, 97, 20));

        rig.tree()->setColumnWidth(0, 500);
        QCOMPARE(name->width(), 497);
        QCOMPARE(value->x(), 499);
        MonitorRig::settle();
        rig.tree()->horizontalScrollBar()->setValue(70);
        QCOMPARE(name->x(), -70);
        QCOMPARE(value->x(), 429);
        rig.widget->slots_sectionResized(2, 0, 10);

        QDomDocument document;
        rig.widget->restoreLayout(rig.widget->saveLayout(document)); // resets the model
        MonitorRig::settle();
        QVERIFY(name->isVisible() && value->isVisible());
        QCOMPARE(value->x(), header->sectionViewportPosition(1) - 1);
    }

    void panesAreLevel()
    {
        MonitorRig rig;
        auto const top = [&](QWidget* pane) { return pane->mapTo(rig.widget.get(), QPoint()).y(); };
        QCOMPARE(top(rig.tree()->viewport()), 50);
        QCOMPARE(top(rig.waves()->viewport()), 50);
        QCOMPARE(rig.tree()->viewport()->height(), rig.waves()->viewport()->height());
        QCOMPARE(rig.widget->rulerView()->viewport()->width(), rig.waves()->viewport()->width());
        QCOMPARE(rig.tree()->width(), 300);
        QCOMPARE(rig.widget->minimumHeight(), 100);
        auto* splitter = rig.widget->findChild<QSplitter*>();
        rig.widget->resize(1400, 400);
        MonitorRig::settle();
        QCOMPARE(splitter->sizes().first(), 300); // the waves take what comes
        splitter->setSizes({0, 1400});
        QVERIFY(splitter->sizes().first() > 0);

        rig.widget->updateAutoCounter(12);
        QLabel* counter = nullptr;
        for (QLabel* label : rig.widget->findChildren<QLabel*>())
            counter = label->text() == "    Autorun Counter: 12" ? label : counter;
        QVERIFY(counter && counter->height() == 30);
        rig.widget->setTitle(3, -1);
        QCOMPARE(rig.widget->windowTitle(), QString("window 3"));
        rig.widget->setTitle(3, 0);
        QCOMPARE(rig.widget->windowTitle(), QString("core 0"));
    }

    void keepsTwoMonitorsApart()
    {
        MonitorRig first(1);
        MonitorRig second(2);
        first.widget->zoomIn();
        first.widget->addMarker();
        first.widget->gotoLastTime();
        first.select({first.row(1)});
        MonitorRig::settle();
        QCOMPARE(second.waves()->zoomRate(), 1.0);
        QCOMPARE(second.widget->zoomRate(), 1.0);
        QCOMPARE(second.widget->rulerView()->transform().m11(), 1.0);
        QCOMPARE(second.widget->rulerView()->horizontalScrollBar()->value(),
                 second.waves()->horizontalScrollBar()->value());
        QVERIFY(second.widget->rulerView()->timeMarkers().isEmpty());
        QCOMPARE(first.widget->rulerView()->timeMarkers().size(), 1);
    }

    void configOutlivesItsMonitor()
    {
        std::unique_ptr<DrawConfig> config;
        {
            MonitorRig rig;
            rig.select({rig.row(1), rig.row(2)});
            rig.tree()->onGroupBus();
            rig.tree()->setColumnWidth(0, 240);
            rig.widget->setTitle(2, 1);
            rig.widget->setDataFormat(DataFormat::Binary);
            rig.widget->zoomTo(0.25);
            config.reset(rig.widget->getDrawConfigs());
        }
        QCOMPARE(config->coreIndex, 1);
        QCOMPARE(config->windowIndex, 2);
        MonitorRig other;
        QString const before = other.rows();
        other.widget->setWindowConfig(nullptr);
        QCOMPARE(other.rows(), before);
        other.widget->setWindowConfig(config.get());
        MonitorRig::settle();
        QVERIFY(other.rows().contains("group_0[1:0](top/clk top/ready)"));
        QCOMPARE(other.tree()->columnWidth(0), 240);
        QCOMPARE(other.tree()->columnWidth(1), 100);
        QCOMPARE(other.widget->dataFormat(), DataFormat::Binary);
        QCOMPARE(other.waves()->zoomRate(), 0.25);
        WaveMonitorWidget sized(9, nullptr, config.get());
        QCOMPARE(sized.treeView()->sizeHint().width(), 340);
    }

    void savesAndRestoresWindows()
    {
        MonitorRig rig;
        QDomDocument document;
        QDomElement window = rig.widget->save(document);
        QVERIFY(!window.hasAttribute("index"));
        MonitorRig other(8);
        window.setAttribute("index", 0);
        other.widget->restore(window);
        QCOMPARE(other.rows(), rig.rows());
        QCOMPARE(other.tree()->columnWidth(0), 180);
        QCOMPARE(other.tree()->columnWidth(1), 120);
        QCOMPARE(cursor(other)->time(), 50);

        other.widget->setWindowsNum(3);
        window.setAttribute("index", 1);
        other.widget->restore(window);
        window.removeAttribute("index"); // adds as well
        other.widget->restore(window);
        MonitorRig::settle();
        QCOMPARE(other.rows(), rig.rows());
        QCOMPARE(other.widget->rulerView()->length(), 3 * MonitorRig::Samples);
        QCOMPARE(other.widget->rulerView()->num(), 3);
        QCOMPARE(other.waves()->sceneRect().width(), 3 * MonitorRig::Samples * 50.0);
        other.select({other.row(2)});
        QCOMPARE(other.tree()->getNextTransition(110), 300);
    }

    void startsEmpty()
    {
        WaveMonitorWidget monitor(5);
        monitor.resize(700, 300);
        monitor.show();
        QSignalSpy spy(&monitor, &WaveMonitorWidget::updateMarkerAct);
        monitor.zoomFit();
        monitor.addMarker();
        monitor.nextMarker();
        monitor.previousTransition();
        monitor.gotoLastTime();
        monitor.deleteAllMarkers();
        widgettools::rightClick(monitor.treeView()->viewport(), QPoint(5, 5));
        MonitorRig::settle();
        QVERIFY(!QApplication::activePopupWidget());
        QCOMPARE(monitor.zoomRate(), 1.0);
        QVERIFY(monitor.rulerView()->timeMarkers().isEmpty());
        QVERIFY(!monitor.grab().isNull());
    }

    void endsWithNotesQueued()
    {
        MonitorRig other(2);
        {
            MonitorRig rig(2); // even with the same domain
            rig.widget->zoomIn();
            rig.widget->addMarker();
            rig.widget->deleteAllMarkers();
            rig.widget->addMarker();
            rig.tree()->expand(rig.row(0));
            rig.select({rig.row(0)});
        }
        MonitorRig::settle();
        QVERIFY(other.widget->rulerView()->timeMarkers().isEmpty());
    }

    void notesOfOddSenders()
    {
        MonitorRig rig(0); // the domain of senders without one
        rig.widget->zoomTo(2);
        rig.widget->addMarker();
        MonitorRig::settle();
        rig.waves()->horizontalScrollBar()->setValue(77);
        QObject plain;
        QObject odd;
        odd.setProperty("zoomRate", QVariantList());
        odd.setProperty("timeMarkers", QStringLiteral("none"));
        auto const postAll = [](QObject* sender) {
            for (quint32 type = ZoomAboutToChange; type <= WaveColorChanged; ++type) {
                if (type != RemoveWaveItems) // anybody's to send
                    NotificationCenter::shared()->postEvent(
                        new Notification(NotificationType(type), sender), sender);
            }
            MonitorRig::settle();
        };
        postAll(nullptr);
        QCOMPARE(rig.widget->rulerView()->horizontalScrollBar()->value(), 77);
        postAll(&plain);
        postAll(&odd);
        QCOMPARE(rig.widget->rulerView()->horizontalScrollBar()->value(), 0);
        QCOMPARE(rig.widget->zoomRate(), 2.0);
    }

private:
    static CursorSliderItem* cursor(MonitorRig const& rig)
    {
        return rig.widget->rulerView()->cursorItem();
    }
};

QTEST_MAIN(TestWaveMonitorWidget)
#include "tst_wavemonitorwidget.moc"
