#pragma once

#include "wavemonitor/tree/layoutnode.h"

#include <QList>
#include <QModelIndex>
#include <QString>

namespace WaveMonitor {

class SignalTreeModel;
struct SignalElement;

/// The arrangement of a monitor's rows: a root with signals, buses and dividers, and the members of
/// the buses. All changes of rows go through here, so that the model's views hear of them.
class ModelLayout
{
public:
    /// The model is not owned.
    explicit ModelLayout(SignalTreeModel* model);
    ~ModelLayout();
    ModelLayout(ModelLayout const&) = delete;
    ModelLayout& operator=(ModelLayout const&) = delete;

    LayoutNode* root() const { return m_root; }

    /// The model's index, invalid where there is no row.
    QModelIndex index(int row, int column = 0, QModelIndex const& parent = QModelIndex()) const;

    /// Whether an index is valid and the model's.
    bool owns(QModelIndex const& index) const;

    /// The node behind an index of the model, the root for an invalid one.
    LayoutNode* nodeAt(QModelIndex const& index) const;

    /// The index of an attached node, invalid for the root.
    QModelIndex indexOf(LayoutNode const* node, int column = 0) const;

    /// New rows at the end of the top level. The elements stay the caller's.
    LayoutNode* appendSignal(SignalElement* element);
    LayoutNode* appendBus(QString const& name, QString const& text,
                          QList<SignalElement*> const& elements);

    /// Takes nodes of one parent out of the arrangement, contiguous ones together; the caller owns
    /// them then. They stand in the order of their rows.
    void take(QList<LayoutNode*> const& nodes);

    /// Puts nodes without a parent into the arrangement, which owns them from then on. The row is
    /// held within those of the parent.
    void insert(LayoutNode* parent, int row, QList<LayoutNode*> const& nodes);

    /// Reverses the order of a node's children; the model's persistent indexes follow them.
    void reverse(LayoutNode* parent);

    /// Replaces top-level rows by one bus at the place of the first. Signals and dividers become
    /// its members, selected buses give theirs and are released. `rows` stand in the order of their
    /// rows. Returns the new bus; null for an empty list.
    LayoutNode* group(QList<QModelIndex> const& rows);

    /// The name that a bus of these nodes has by itself: that of the only bus, or of the vector
    /// whose bits they are; else empty. Dividers don't count.
    QString getGroupBusNameFromSelected(QList<LayoutNode*> nodes) const;

    /// "group_%1" with the smallest number that is not taken. Nodes that are no buses don't count.
    QString getGroupBusName(QList<LayoutNode*> const& buses) const;

    /// The text that a node's row shows.
    QString displayText(LayoutNode const* node) const;

    /// Deletes the wave items of the node and its children, and then the node. An attached node is
    /// taken out of its row first.
    void releaseNode(LayoutNode* node);

    /// Deletes all nodes but the root. The model resets around it, with no wave items left.
    void removeAll();

    /// The element "Layout", made in the document but not placed in it.
    QDomElement exportDomElement(QDomDocument& document) const;

    /// Appends the rows of an element "Layout", in a reset of the model. Unknown kinds of nodes are
    /// passed over.
    void restoreLayout(QDomElement const& layout);

private:
    LayoutNode* m_root;
    SignalTreeModel* m_model;
};

} // namespace WaveMonitor
