#pragma once

#include <QList>
#include <QMap>

class QBitArray;
class QGraphicsItem;

namespace WaveMonitor {

class BusWaveItem;
class DividerWaveItem;
struct LayoutNode;
class ModelLayout;
class SignalTreeModel;
class SignalWaveItem;
class WaveItem;

/// Keeps a graphics item for each row, stacks the items in the order of the rows and feeds them
/// with the model's data.
class WaveViewDataSource
{
public:
    /// Both are not owned and must outlive this object, but for its destructor.
    WaveViewDataSource(ModelLayout* layout, SignalTreeModel* model);
    /// Deletes all items, which takes them out of their scene.
    ~WaveViewDataSource();

    /// The node's item, made on the first request. It stays this object's, and must be recycled
    /// before the node is deleted.
    SignalWaveItem* signalItemForNode(LayoutNode* node);
    BusWaveItem* busItemForNode(LayoutNode* node);
    DividerWaveItem* dividerItemForNode(LayoutNode* node);

    /// Deletes the node's item, if there is one.
    void recycleItemForNode(LayoutNode* node);
    /// Deletes all items.
    void clear();

    /// The node's item if it was made, else null.
    WaveItem* itemForNode(LayoutNode* node) const { return m_items.value(node); }
    /// The node of an item, null for none of ours.
    LayoutNode* nodeForItem(QGraphicsItem const* item) const;

    /// Takes the highlight off all rows.
    void clearSelection();

    /// Places all items, hands them their data and returns them in display order, those of
    /// collapsed buses as well. Data that did not change costs nothing.
    QList<QGraphicsItem*> recalculateWaveItems();

    /// Gives each item the colour of its node, making those that are missing.
    void updateWaveColor();

private:
    Q_DISABLE_COPY(WaveViewDataSource)

    template <typename Item, typename... Arguments>
    Item* itemOf(LayoutNode* node, Arguments... arguments);
    WaveItem* anyItemForNode(LayoutNode* node);
    WaveItem* placeLeaf(LayoutNode* node, double y);
    double placeBus(LayoutNode* node, int row, double y, QList<QGraphicsItem*>& placed);
    QBitArray dataOf(int id) const;

    QMap<LayoutNode*, WaveItem*> m_items;
    ModelLayout* m_layout;
    SignalTreeModel* m_model;
};

} // namespace WaveMonitor
