#include "wavemonitor/buswaveitem.h"
#include "wavemonitor/layoutnode.h"
#include "wavemonitor/modellayout.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signalwaveitem.h"

#include <QGraphicsScene>
#include <QTreeView>
#include <QtTest>

using namespace WaveMonitor;

namespace {

SignalData signal(int id, QString const& bits)
{
    return {id, QStringLiteral("s%1").arg(id), QString(), string2Bits(bits)};
}

} // namespace

/// Rows: signal 0, a divider, the bus of 1, 2 and 3 with a divider after 1, signal 4.
class WaveViewDataSourceTest : public QObject
{
    Q_OBJECT

private:
    LayoutNode* busNode() const { return m_model->layout()->root()->children.at(2); }

    BusWaveItem* bus() const { return dynamic_cast<BusWaveItem*>(m_model->getItem(busNode())); }

    /// The y of each item in display order, in parentheses if it is hidden.
    QString places() const
    {
        QStringList texts;
        for (QGraphicsItem* item : m_model->waveItems()) {
            QString const y = QString::number(item->y());
            texts.append(item->isVisible() ? y : "(" + y + ")");
        }
        return texts.join(' ');
    }

    std::unique_ptr<QTreeView> m_view;
    std::unique_ptr<SignalTreeModel> m_model;

private Q_SLOTS:
    void init()
    {
        m_model = std::make_unique<SignalTreeModel>();
        m_view = std::make_unique<QTreeView>();
        m_view->setModel(m_model.get());
        m_model->setTreeView(m_view.get());
        m_model->addRawSignal(signal(0, "0011"));
        m_model->addRawDivider(1, QModelIndex());
        BusData bus;
        bus.name = "bus";
        bus.signalDataList = {signal(1, "0111"), signal(2, "0001"), signal(3, "01")};
        m_model->addBus(bus);
        m_model->addRawSignal(signal(4, "1111"));
        auto* const divider = new DividerLayoutNode;
        m_model->layout()->insert(busNode(), 1, {divider});
        m_model->updateItems();
    }

    void cleanup()
    {
        m_view.reset();
        m_model.reset();
    }

    void stacksRows()
    {
        QCOMPARE(places(), QString("0 30 60 (90) (90) (90) (90) 90"));
        m_view->expand(m_model->index(2, 0));
        QCOMPARE(places(), QString("0 30 60 90 120 150 180 210"));
        busNode()->formatter->setFormatType(DataFormat::SignedBarChart);
        QCOMPARE(places(), QString("0 30 60 150 180 210 240 270"));
        QCOMPARE(bus()->boundingRect(), QRectF(0, 0, 200, 90));
        m_view->collapse(m_model->index(2, 0));
        QCOMPARE(places(), QString("0 30 60 (150) (150) (150) (150) 150"));
        QCOMPARE(m_model->waveItems().at(1)->boundingRect(), QRectF(0, 0, 200, 30));
    }

    void joinsMembers() // missing bits are 0, and the divider is no member
    {
        QStringList values;
        for (int i = 0; i < bus()->samples().length(); ++i)
            values.append(bits2String(bus()->samples().sample(i)));
        QCOMPARE(values.join(' '), QString("000 101 100 110"));
        QCOMPARE(bus()->samples().runStarts(), QVector<int>({0, 1, 2, 3}));
        m_model->updataSingalDatas({string2Bits("0000"), string2Bits("0110"), string2Bits("0110"),
                                    string2Bits("1111"), string2Bits("0000")});
        QCOMPARE(bus()->samples().runStarts(), QVector<int>({0, 1, 3}));
        BusSamples const& samples = bus()->samples();
        QCOMPARE(samples.runEnd(samples.runAt(2)), 3);
        QCOMPARE(samples.runEnd(samples.runAt(3)), 4);
    }

    void buildsSamplesOnce()
    {
        int const* const runs = bus()->samples().runStarts().constData();
        for (int id = 10; id < 46; ++id)
            m_model->addRawSignal(signal(id, "0101"));
        m_view->expand(m_model->index(2, 0));
        busNode()->formatter->setFormatType(DataFormat::Binary);
        m_model->updateItems();
        QVERIFY(bus()->samples().runStarts().constData() == runs);
        auto const* const member =
            dynamic_cast<SignalWaveItem*>(m_model->getItem(busNode()->children.first()));
        QVERIFY(member->waveData().bits() == m_model->signalElementByID(1)->data.bits());
    }

    void colorsAndUngrouping()
    {
        QGraphicsScene scene;
        for (QGraphicsItem* item : m_model->waveItems())
            scene.addItem(item);
        LayoutNode* const member = busNode()->children.first();
        member->color = 0x123456;
        m_model->updateSignalWaveColor();
        auto* const item = dynamic_cast<WaveItem*>(m_model->getItem(member));
        QCOMPARE(item->color(), QColor(0x12, 0x34, 0x56));
        QCOMPARE(bus()->color(), QColor(0, 255, 0));
        int const count = scene.items().size();
        m_model->ungroupBus(m_model->index(2, 0));
        QCOMPARE(scene.items().size(), count - 1); // the bus's item left, its members stayed
        QCOMPARE(places(), QString("0 30 60 90 120 150 180"));
        for (QGraphicsItem* waveItem : m_model->waveItems())
            scene.removeItem(waveItem);
    }
};

QTEST_MAIN(WaveViewDataSourceTest)
#include "tst_waveviewdatasource.moc"
