#include "desk.h"

#include <QtTest>

/// The committed demos, each against what its dump says.
class TestDemos : public QObject
{
    Q_OBJECT

private slots:
    void capture_data()
    {
        QTest::addColumn<QString>("design");
        QTest::addColumn<QVector<int>>("triggers");

        // The samples that fire, core by core and window by window, as the demos' page tells them.
        QTest::newRow("uart-lines") << "uart" << QVector<int>{635, 1292, 1973};
        QTest::newRow("bus-stall") << "bus" << QVector<int>{92, 492};
        QTest::newRow("uart-link") << "uart" << QVector<int>{3298, 5230, 1664};
    }

    void capture()
    {
        QFETCH(QString, design);
        QString const folder = VEK_SOURCE_ROOT "/examples/" + design + "/";
        QString const demo = folder + QTest::currentDataTag();
        QByteArray const vcd = TempFolder::content(folder + design + ".vcd");
        QMap<QString, Waves> waves;
        for (QString const clock : {"clk", "clk_a", "clk_b"})
            waves[clock] = Stimulus::readVcd(vcd, clock);
        auto const captures = expectedCaptures(TempFolder::content(demo + ".vek"), waves);
        QVector<int> triggers;
        for (ExpectedWindow const& capture : captures)
            triggers += capture.trigger;
        QTEST(triggers, "triggers");

        Desk desk;
        desk.bench = demo + ".json";
        QCOMPARE(desk.problem({"-vek", demo + ".vek", "-out", "demo"}, captured(captures, "demo")),
                 QString());
    }
};

QTEST_GUILESS_MAIN(TestDemos)
#include "tst_demos.moc"
