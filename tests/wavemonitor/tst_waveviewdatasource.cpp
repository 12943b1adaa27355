#include "treerig.h"
#include "wavemonitor/waves/buswaveitem.h"
#include "wavemonitor/waves/signalwaveitem.h"

#include <QGraphicsScene>

using namespace WaveMonitor;

namespace {

/// The bus is closed and has a divider between its members.
struct Rig : TreeRig
{
    Rig()
    {
        model.layout()->insert(busNode(), 1, {new DividerLayoutNode});
        view.collapse(at(0));
        model.updateItems();
    }

    LayoutNode* busNode() const { return node(at(0)); }
    BusWaveItem* bus() { return dynamic_cast<BusWaveItem*>(model.getItem(busNode())); }

    /// The y of each item in display order, in parentheses if it is hidden.
    QString places()
    {
        QStringList texts;
        for (QGraphicsItem* item : model.waveItems()) {
            QString const y = QString::number(item->y());
            texts.append(item->isVisible() ? y : "(" + y + ")");
        }
        return texts.join(' ');
    }
};

} // namespace

class WaveViewDataSourceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stacksRows()
    {
        Rig rig;
        QCOMPARE(rig.places(), QString("0 (30) (30) (30) 30 60 90 120"));
        rig.view.expand(rig.at(0));
        QCOMPARE(rig.places(), QString("0 30 60 90 120 150 180 210"));
        rig.busNode()->formatter->setFormatType(DataFormat::SignedBarChart);
        QCOMPARE(rig.places(), QString("0 90 120 150 180 210 240 270"));
        QCOMPARE(rig.bus()->boundingRect(), QRectF(0, 0, 200, 90));
        rig.view.collapse(rig.at(0));
        QCOMPARE(rig.places(), QString("0 (90) (90) (90) 90 120 150 180"));
        QCOMPARE(rig.model.waveItems().at(7)->boundingRect(), QRectF(0, 0, 200, 30));
    }

    void joinsMembersAndTakesNewSamples() // missing bits are 0, and the divider is no member
    {
        Rig rig;
        rig.model.addRawSignal(signal(1, "t/b[0]", "01"));
        rig.model.updateItems();
        BusSamples const& samples = rig.bus()->samples();
        QStringList values;
        for (int i = 0; i < samples.length(); ++i)
            values.append(bits2String(samples.sample(i)));
        QCOMPARE(values.join(' '), QString("00 01 10 10"));
        QCOMPARE(samples.runStarts(), QVector<int>({0, 1, 2}));
        QCOMPARE(samples.runEnd(samples.runAt(1)), 2);
        QCOMPARE(samples.runEnd(samples.runAt(3)), 4);

        QBitArray const ones(7, true);
        QList<QBitArray> datas{ones, ones, ones, ones};
        rig.model.updataSingalDatas(datas); // one short of the signals
        QCOMPARE(rig.model.timeLength(), 4);
        rig.model.updataSingalDatas(datas << ones);
        QCOMPARE(rig.model.timeLength(), 7);
        QCOMPARE(rig.bus()->samples().runStarts(), QVector<int>({0}));
        QCOMPARE(rig.bus()->boundingRect().width(), 350.0);
    }

    void buildsSamplesOnce()
    {
        Rig rig;
        int const* const runs = rig.bus()->samples().runStarts().constData();
        for (int id = 10; id < 46; ++id)
            rig.model.addRawSignal(signal(id, "further"));
        rig.view.expand(rig.at(0));
        rig.busNode()->formatter->setFormatType(DataFormat::Binary);
        rig.model.updateItems();
        QVERIFY(rig.bus()->samples().runStarts().constData() == runs);
        auto const* const member =
            dynamic_cast<SignalWaveItem*>(rig.model.getItem(rig.busNode()->children.first()));
        QVERIFY(member->waveData().bits() == rig.model.signalElementByID(0)->data.bits());
    }

    void colorsAndUngrouping()
    {
        Rig rig;
        QGraphicsScene scene;
        for (QGraphicsItem* item : rig.model.waveItems())
            scene.addItem(item);
        LayoutNode* const member = rig.busNode()->children.first();
        member->color = 0x123456;
        rig.model.updateSignalWaveColor();
        auto* const item = dynamic_cast<WaveItem*>(rig.model.getItem(member));
        QCOMPARE(item->color(), QColor(0x12, 0x34, 0x56));
        QCOMPARE(rig.bus()->color(), QColor(0, 255, 0));
        int const count = scene.items().size();
        rig.model.ungroupBus(rig.at(0));
        QCOMPARE(scene.items().size(), count - 1); // the bus's item left, its members stayed
        QCOMPARE(rig.places(), QString("0 30 60 90 120 150 180"));
        for (QGraphicsItem* waveItem : rig.model.waveItems())
            scene.removeItem(waveItem);
    }
};

QTEST_MAIN(WaveViewDataSourceTest)
#include "tst_waveviewdatasource.moc"
