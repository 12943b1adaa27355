#include "monitorrig.h"

#include "tests/support/widgettools.h"
#include "wavemonitor/rulerview.h"

#include <QTabWidget>

#include <functional>

using namespace WaveMonitor;

namespace {

/// The rig's samples, the first ones of each signal.
QList<QBitArray> samples(MonitorRig const& rig, int length)
{
    QList<QBitArray> datas;
    for (SignalElement const* element : rig.model()->signalElements()) {
        datas.append(element->data);
        datas.last().truncate(length);
    }
    return datas;
}

} // namespace

/// Where a user of a monitor stands, and what a host hears of the work.
class TestMonitorView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Over fewer samples and back, also in a monitor that was never shown.
    void isPutBack()
    {
        MonitorRig rig;
        ViewState const state{120, {150, 20, 190}, 2.0, 100.5};
        auto const verify = [&](WaveMonitorWidget const& monitor) {
            MonitorRig::settle();
            QCOMPARE(monitor.cursorTime(), 120);
            QCOMPARE(monitor.markerTimes(), state.markerTimes);
            QVERIFY(monitor.rulerView()->timeMarker()->item()->isMain());
            QCOMPARE(monitor.viewState().zoomRate, 2.0);
            QCOMPARE(monitor.viewState().leftTime, 100.5);
            QCOMPARE(monitor.rulerView()->horizontalScrollBar()->value(), 10050);
        };
        QList<QBitArray> const whole = samples(rig, MonitorRig::Samples);
        rig.widget->setViewState(state);
        rig.widget->updataWaveDatas(samples(rig, 100));
        QCOMPARE(rig.widget->markerTimes(), (QList<int>{99, 20, 99}));
        rig.widget->updataWaveDatas(whole);
        rig.widget->setViewState(state);
        verify(*rig.widget);

        QDomDocument document;
        QDomElement window = rig.widget->save(document);
        window.setAttribute("index", 0);
        WaveMonitorWidget opened(9);
        opened.restore(window);
        opened.setViewState(state);
        opened.resize(rig.widget->size());
        opened.show();
        verify(opened);
        opened.setViewState({-1, {}, qQNaN(), qQNaN()});
        QCOMPARE(opened.cursorTime(), 0);
        QCOMPARE(opened.zoomRate(), 2.0);
    }

    /// Also where the capture gets shorter under the cursor.
    void valuesAreTheCursors()
    {
        MonitorRig rig;
        auto const ready = [&] { return rig.model()->index(2, 1).data().toString(); };
        rig.widget->setCursorTime(150);
        rig.widget->updataWaveDatas(samples(rig, 104));
        QCOMPARE(rig.widget->cursorTime(), 103);
        QCOMPARE(ready(), QString("1"));
        rig.widget->rulerView()->cursorItem()->setTime(99);
        QCOMPARE(ready(), QString("0"));
        rig.widget->setTriggerPosition(500);
        QCOMPARE(ready(), QString("1"));
    }

    void isFittedAtTheFirstShowing()
    {
        for (bool zoomed : {false, true}) {
            QTabWidget tabs;
            tabs.addTab(new QWidget, "front");
            auto* const monitor = new WaveMonitorWidget(&tabs);
            tabs.addTab(monitor, "behind");
            monitor->addData(MonitorRig::signal(0, "s", [](int t) { return t > 9; }));
            monitor->zoomFit();
            tabs.resize(900, 300);
            tabs.show();
            if (zoomed)
                monitor->waveView()->setZoomRate(0.5);
            tabs.setCurrentIndex(1);
            MonitorRig::settle();
            int const shown = monitor->waveView()->viewport()->width();
            QVERIFY(shown > 500);
            QCOMPARE(monitor->waveView()->zoomRate(), zoomed ? 0.5 : shown / 10000.0);
        }
    }

    /// The cursor stays where it is seen, or the middle, and under the mouse what it points at.
    void zoomKeepsItsPlace()
    {
        MonitorRig rig;
        WaveView* const waves = rig.waves();
        int const middle = waves->viewport()->width() / 2;
        auto const keeps = [&](int x, std::function<void()> const& zoom) {
            double const before = waves->mapToScene(x, 0).x();
            zoom();
            MonitorRig::settle();
            return qAbs(waves->mapFromScene(before, 0).x() - x) <= 1;
        };
        rig.widget->setViewState({100, {}, 1.0, 98.0});
        QVERIFY(keeps(100, [&] { rig.widget->zoomIn(); }));
        QVERIFY(keeps(100, [&] { waves->zoomOut(); }));
        rig.widget->setCursorTime(10);
        QVERIFY(keeps(middle, [&] { rig.widget->zoomIn(); }));
        QWidget* const ruler = rig.widget->rulerView()->viewport();
        QVERIFY(keeps(100, [&] { widgettools::wheel(ruler, {0, 120}, Qt::ControlModifier); }));
    }

    /// Whatever changes what is saved is told, and what comes with data is not.
    void editsAreTold()
    {
        MonitorRig rig;
        QSignalSpy edited(rig.widget.get(), &WaveMonitorWidget::layoutEdited);
        auto* const tree = rig.tree();
        std::function<void()> const edits[] = {
            [&] { tree->onWaveColorSetted(0xff0000); },
            [&] { tree->onDataFormatSetted(DataFormat::Octal); },
            [&] { tree->onShortName(); },
            [&] { rig.model()->setData(rig.row(0), "c"); },
            [&] { tree->onReverse(); },
            [&] { rig.model()->append2Parent({rig.row(1)}, {}); },
            [&] { tree->onUngroupBus(); },
            [&] { tree->onNewDivider(); },
        };
        rig.select({rig.row(0)});
        for (auto const& edit : edits) {
            edited.clear();
            edit();
            QVERIFY2(!edited.isEmpty(), qPrintable(QString::number(&edit - edits)));
        }
        edited.clear();
        rig.model()->setData(rig.row(1), rig.text(rig.row(1)));
        rig.widget->addData(MonitorRig::signal(7, "more", [](int) { return true; }));
        QDomDocument document;
        rig.widget->restoreLayout(rig.widget->saveLayout(document));
        tree->onWaveColorSetted(0); // with nothing selected
        QVERIFY(edited.isEmpty());
    }
};

QTEST_MAIN(TestMonitorView)
#include "tst_monitorview.moc"
