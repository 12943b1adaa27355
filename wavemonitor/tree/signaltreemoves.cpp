// Rows that are grouped, renamed, added and moved.

#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/modellayout.h"

#include <QSet>

#include <algorithm>

namespace WaveMonitor {

namespace {

QString shortName(QString const& name)
{
    QStringList const parts = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return parts.isEmpty() ? QString() : parts.last();
}

SignalLayoutNode* asSignal(LayoutNode* node)
{
    return node->type == LayoutNode::Signal ? static_cast<SignalLayoutNode*>(node) : nullptr;
}

BusLayoutNode* asBus(LayoutNode* node)
{
    return node->type == LayoutNode::Bus ? static_cast<BusLayoutNode*>(node) : nullptr;
}

} // namespace

void SignalTreeModel::addRawDivider(int id, QModelIndex const& at)
{
    auto* divider = new DividerLayoutNode;
    divider->id = id;
    m_layout->insert(m_layout->root(), isOwn(at) ? at.row() : id, {divider});
    post(LayoutChanged);
    Q_EMIT layoutEdited();
}

void SignalTreeModel::NewDivider(QModelIndex const& at)
{
    addRawDivider(waveItems().size(), at);
    updateItems();
}

void SignalTreeModel::DeleteDivider(QModelIndex const& parent, QModelIndex const& at)
{
    if (!isOwn(at) || at.parent() != parent || m_layout->nodeAt(at)->type != LayoutNode::Divider)
        return;
    LayoutNode* const divider = m_layout->nodeAt(at);
    LayoutNode* const owner = divider->parent;
    m_layout->releaseNode(divider);
    dropEmptyBus(owner);
    Q_EMIT layoutEdited();
}

/// A user could not get rid of a bus without members.
void SignalTreeModel::dropEmptyBus(LayoutNode* parent)
{
    if (parent && asBus(parent) && parent->children.isEmpty())
        ungroupBus(m_layout->indexOf(parent));
}

void SignalTreeModel::reverse(QModelIndex const& index)
{
    LayoutNode* const bus = isOwn(index) ? asBus(m_layout->nodeAt(index)) : nullptr;
    if (!bus)
        return;
    QList<QPersistentModelIndex> const parents{m_layout->indexOf(bus)};
    Q_EMIT layoutAboutToBeChanged(parents);
    std::reverse(bus->children.begin(), bus->children.end());
    QModelIndexList from;
    QModelIndexList to;
    for (QModelIndex const& kept : persistentIndexList()) {
        LayoutNode* const node = m_layout->nodeAt(kept);
        if (node->parent != bus)
            continue;
        from.append(kept);
        to.append(createIndex(bus->children.size() - 1 - kept.row(), kept.column(), node));
    }
    changePersistentIndexList(from, to);
    Q_EMIT layoutChanged(parents);
    post(LayoutChanged);
    Q_EMIT layoutEdited();
}

bool SignalTreeModel::haveOneLength(QList<QModelIndex> const& rows) const
{
    int length = -1; // that of the first signal
    auto const fits = [&](LayoutNode const* node) {
        if (node->type != LayoutNode::Signal)
            return true;
        SignalElement const* const element = signalElementByID(node->id);
        int const own = element ? element->data.size() : 0;
        if (length < 0)
            length = own;
        return own == length;
    };
    for (QModelIndex const& index : rows) {
        LayoutNode const* const node = m_layout->nodeAt(index);
        if (!fits(node) || !std::all_of(node->children.begin(), node->children.end(), fits)) {
            MLog() << "signals have different data length!";
            return false;
        }
    }
    return length >= 0;
}

void SignalTreeModel::groupBus(QList<QModelIndex> const& rows)
{
    QMap<int, QModelIndex> inOrder;
    for (QModelIndex const& index : rows) {
        if (!isOwn(index) || index.parent().isValid())
            return;
        inOrder.insert(index.row(), index);
    }
    if (!haveOneLength(inOrder.values()))
        return;
    MLog() << "signals are avilable to group bus: "
           << "YES!";
    selectOutView({});
    m_layout->group(inOrder.values());
    post(LayoutChanged);
    Q_EMIT layoutEdited();
}

void SignalTreeModel::ungroupBus(QModelIndex const& index)
{
    LayoutNode* const bus = isOwn(index) ? asBus(m_layout->nodeAt(index)) : nullptr;
    if (!bus)
        return;
    MLog() << "ungroup bus at index: " << index;
    int const row = bus->row();
    m_layout->take({bus});
    QList<LayoutNode*> const members = bus->children;
    bus->children.clear();
    m_layout->insert(m_layout->root(), row, members);
    m_layout->releaseNode(bus);
    post(LayoutChanged);
    Q_EMIT layoutEdited();
}

void SignalTreeModel::setLongName(LayoutNode* node)
{
    asSignal(node)->text.clear();
    signalElementByID(node->id, [](SignalElement* element) { element->text.clear(); });
}

void SignalTreeModel::setShortName(LayoutNode* node)
{
    signalElementByID(node->id, [node](SignalElement* element) {
        element->text = shortName(element->name);
        asSignal(node)->text = element->text;
    });
}

void SignalTreeModel::setLongNames(BusLayoutNode* bus)
{
    bus->text.clear();
    for (LayoutNode* child : qAsConst(bus->children)) {
        if (!asSignal(child))
            continue;
        child->nameType = LayoutNode::LongName;
        setLongName(child);
    }
}

void SignalTreeModel::ChangeLongName(QModelIndex const& index)
{
    if (!isOwn(index))
        return;
    LayoutNode* const node = m_layout->nodeAt(index);
    if (asSignal(node))
        setLongName(node);
    else if (BusLayoutNode* const bus = asBus(node))
        setLongNames(bus);
    Q_EMIT layoutEdited();
}

void SignalTreeModel::setShortNames(BusLayoutNode* bus)
{
    bus->text = shortName(bus->name);
    for (LayoutNode* child : qAsConst(bus->children)) {
        if (!asSignal(child))
            continue;
        child->nameType = LayoutNode::ShortName;
        setShortName(child);
    }
}

void SignalTreeModel::ChangeShortName(QModelIndex const& index)
{
    if (!isOwn(index))
        return;
    LayoutNode* const node = m_layout->nodeAt(index);
    if (asSignal(node))
        setShortName(node);
    else if (BusLayoutNode* const bus = asBus(node))
        setShortNames(bus);
    Q_EMIT layoutEdited();
}

void SignalTreeModel::restoreOrgName(QModelIndex const& index)
{
    if (!isOwn(index))
        return;
    LayoutNode* const node = m_layout->nodeAt(index);
    // A long or short name that was chosen stays: deliberate.
    if (node->nameType <= LayoutNode::ShortName)
        return;
    if (asSignal(node))
        setLongName(node);
    else if (BusLayoutNode* const bus = asBus(node))
        bus->text.clear();
    Q_EMIT layoutEdited();
}

QList<QModelIndex> SignalTreeModel::insertIndexesForward(QModelIndex const& target,
                                                         QList<QModelIndex> const& indexes)
{
    if (!isOwn(target))
        return indexes;
    return moveRows(indexes, m_layout->nodeAt(target)->parent, target.row());
}

QList<QModelIndex> SignalTreeModel::insertIndexesBackward(QModelIndex const& target,
                                                          QList<QModelIndex> const& indexes)
{
    if (!isOwn(target))
        return indexes;
    return moveRows(indexes, m_layout->nodeAt(target)->parent, target.row() + 1);
}

QList<QModelIndex> SignalTreeModel::prepend2Parent(QList<QModelIndex> const& indexes,
                                                   QModelIndex const& parent)
{
    if (parent.isValid() && !isOwn(parent))
        return indexes;
    return moveRows(indexes, m_layout->nodeAt(parent), 0);
}

QList<QModelIndex> SignalTreeModel::append2Parent(QList<QModelIndex> const& indexes,
                                                  QModelIndex const& parent)
{
    if (parent.isValid() && !isOwn(parent))
        return indexes;
    LayoutNode* const node = m_layout->nodeAt(parent);
    return moveRows(indexes, node, node->children.size());
}

/// Puts rows before the first row of `parent`, from row `from` on, that is none of them.
QList<QModelIndex> SignalTreeModel::moveRows(QList<QModelIndex> const& indexes, LayoutNode* parent,
                                             int from)
{
    QList<LayoutNode*> nodes;
    QSet<LayoutNode*> moving;
    LayoutNode* oldParent = nullptr;
    for (QModelIndex const& index : indexes) {
        LayoutNode* const node = isOwn(index) ? m_layout->nodeAt(index) : nullptr;
        if (!node || moving.contains(node))
            continue;
        bool const fits = parent == m_layout->root() || (asBus(parent) && !asBus(node));
        if (!fits || (oldParent && node->parent != oldParent))
            return indexes;
        nodes.append(node);
        moving.insert(node);
        oldParent = node->parent;
    }
    while (from < parent->children.size() && moving.contains(parent->children.at(from)))
        ++from;
    LayoutNode const* const before = parent->children.value(from);

    m_layout->take(nodes);
    m_layout->insert(parent, before ? before->row() : parent->children.size(), nodes);
    updateItems();
    post(SelectionChanged);
    dropEmptyBus(oldParent);
    Q_EMIT layoutEdited();

    QList<QModelIndex> moved;
    int const row = nodes.isEmpty() ? 0 : nodes.first()->row();
    for (int i = 0; i < nodes.size(); ++i)
        moved.append(createIndex(row + i, NameColumn, nodes.at(i)));
    return moved;
}

} // namespace WaveMonitor
