#include "wavemonitor/waves/waveviewdatasource.h"

#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/layoutnode.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/waves/buswaveitem.h"
#include "wavemonitor/waves/dividerwaveitem.h"
#include "wavemonitor/waves/signalwaveitem.h"

namespace WaveMonitor {

WaveViewDataSource::WaveViewDataSource(ModelLayout* layout, SignalTreeModel* model)
    : m_layout(layout), m_model(model)
{}

WaveViewDataSource::~WaveViewDataSource()
{
    clear();
}

// A node keeps its kind, so the kind of its item is known.
template <typename Item, typename... Arguments>
Item* WaveViewDataSource::itemOf(LayoutNode* node, Arguments... arguments)
{
    WaveItem*& item = m_items[node];
    if (!item) {
        item = new Item(arguments...);
        item->setColor(QColor(QRgb(node->color)));
    }
    return static_cast<Item*>(item);
}

SignalWaveItem* WaveViewDataSource::signalItemForNode(LayoutNode* node)
{
    return itemOf<SignalWaveItem>(node);
}

BusWaveItem* WaveViewDataSource::busItemForNode(LayoutNode* node)
{
    return itemOf<BusWaveItem>(node, node->formatter);
}

DividerWaveItem* WaveViewDataSource::dividerItemForNode(LayoutNode* node)
{
    return itemOf<DividerWaveItem>(node);
}

WaveItem* WaveViewDataSource::anyItemForNode(LayoutNode* node)
{
    switch (node->type) {
    case LayoutNode::Signal:
        return signalItemForNode(node);
    case LayoutNode::Bus:
        return busItemForNode(node);
    default:
        return dividerItemForNode(node);
    }
}

void WaveViewDataSource::recycleItemForNode(LayoutNode* node)
{
    delete m_items.take(node); // leaves its scene, too
}

void WaveViewDataSource::clear()
{
    qDeleteAll(m_items);
    m_items.clear();
}

LayoutNode* WaveViewDataSource::nodeForItem(QGraphicsItem const* item) const
{
    for (auto entry = m_items.begin(); entry != m_items.end(); ++entry) {
        if (entry.value() == item)
            return entry.key();
    }
    return nullptr;
}

void WaveViewDataSource::clearSelection()
{
    for (WaveItem* item : qAsConst(m_items))
        item->setWaveSelected(false);
}

QBitArray WaveViewDataSource::dataOf(int id) const
{
    SignalElement const* const element = m_model->signalElementByID(id);
    return element ? element->data : QBitArray();
}

WaveItem* WaveViewDataSource::placeLeaf(LayoutNode* node, double y)
{
    WaveItem* item;
    if (node->type == LayoutNode::Signal) {
        SignalWaveItem* const wave = signalItemForNode(node);
        wave->setWaveData(dataOf(node->id));
        item = wave;
    } else {
        DividerWaveItem* const divider = dividerItemForNode(node);
        divider->setWaveData(dataOf(0)); // the signal whose length is everyone's
        item = divider;
    }
    item->setPos(0, y);
    return item;
}

/// The y below the bus.
double WaveViewDataSource::placeBus(LayoutNode* node, int row, double y,
                                    QList<QGraphicsItem*>& placed)
{
    bool const expanded = m_model->indexIsExpanded(m_layout->index(row));
    BusWaveItem* const bus = busItemForNode(node);
    bus->setPos(0, y);
    placed.append(bus);
    bus->setMemberless(node->children.isEmpty());
    y += bus->rowHeight();
    QList<QBitArray> members;
    for (LayoutNode* child : qAsConst(node->children)) {
        WaveItem* const item = placeLeaf(child, y);
        item->setVisible(expanded);
        placed.append(item);
        if (expanded)
            y += item->rowHeight();
        if (child->type == LayoutNode::Signal)
            members.append(static_cast<SignalWaveItem*>(item)->waveData());
    }
    bus->setMemberData(members);
    return y;
}

QList<QGraphicsItem*> WaveViewDataSource::recalculateWaveItems()
{
    QList<QGraphicsItem*> placed;
    double y = 0;
    QList<LayoutNode*> const& rows = m_layout->root()->children;
    for (int row = 0; row < rows.size(); ++row) {
        LayoutNode* const node = rows.at(row);
        if (node->type == LayoutNode::Bus) {
            y = placeBus(node, row, y, placed);
            continue;
        }
        WaveItem* const item = placeLeaf(node, y);
        item->setVisible(true);
        placed.append(item);
        y += item->rowHeight();
    }
    return placed;
}

void WaveViewDataSource::updateWaveColor()
{
    for (LayoutNode* node : qAsConst(m_layout->root()->children)) {
        anyItemForNode(node)->setColor(QColor(QRgb(node->color)));
        for (LayoutNode* child : qAsConst(node->children))
            anyItemForNode(child)->setColor(QColor(QRgb(child->color)));
    }
}

} // namespace WaveMonitor
