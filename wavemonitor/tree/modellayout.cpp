#include "wavemonitor/tree/modellayout.h"

#include "wavemonitor/mlog.h"
#include "wavemonitor/signalelement.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/busnaming.h"
#include "wavemonitor/tree/layoutreader.h"
#include "wavemonitor/waves/waveviewdatasource.h"

#include <algorithm>

namespace WaveMonitor {

namespace {

LayoutNode* signalNode(SignalElement const* element)
{
    auto* node = new SignalLayoutNode;
    node->id = element->id;
    return node;
}

} // namespace

ModelLayout::ModelLayout(SignalTreeModel* model)
    : m_root(new LayoutNode(LayoutNode::Root)), m_model(model)
{}

ModelLayout::~ModelLayout()
{
    delete m_root;
}

QModelIndex ModelLayout::index(int row, int column, QModelIndex const& parent) const
{
    if (!m_model->hasIndex(row, column, parent))
        return QModelIndex();
    return m_model->createIndex(row, column, nodeAt(parent)->children.at(row));
}

bool ModelLayout::owns(QModelIndex const& index) const
{
    return index.isValid() && index.model() == m_model;
}

LayoutNode* ModelLayout::nodeAt(QModelIndex const& index) const
{
    return index.isValid() ? static_cast<LayoutNode*>(index.internalPointer()) : m_root;
}

QModelIndex ModelLayout::indexOf(LayoutNode const* node, int column) const
{
    if (node == m_root)
        return QModelIndex();
    int const row = node->row();
    return row < 0 ? QModelIndex()
                   : m_model->createIndex(row, column, const_cast<LayoutNode*>(node));
}

LayoutNode* ModelLayout::appendSignal(SignalElement* element)
{
    LayoutNode* const node = signalNode(element);
    insert(m_root, m_root->children.size(), {node});
    return node;
}

LayoutNode* ModelLayout::appendBus(QString const& name, QString const& text,
                                   QList<SignalElement*> const& elements)
{
    auto* bus = new BusLayoutNode;
    if (!name.isEmpty())
        bus->name = name;
    bus->text = text;
    for (SignalElement const* element : elements)
        bus->append(signalNode(element));
    insert(m_root, m_root->children.size(), {bus});
    return bus;
}

void ModelLayout::take(QList<LayoutNode*> const& nodes)
{
    for (int i = 0; i < nodes.size();) {
        LayoutNode* const parent = nodes.at(i)->parent;
        QList<LayoutNode*>& siblings = parent->children;
        int const row = nodes.at(i)->row();
        int count = 1;
        while (i + count < nodes.size() && row + count < siblings.size() &&
               siblings.at(row + count) == nodes.at(i + count))
            ++count;
        m_model->beginRemoveRows(indexOf(parent), row, row + count - 1);
        siblings.erase(siblings.begin() + row, siblings.begin() + row + count);
        for (int k = i; k < i + count; ++k)
            nodes.at(k)->parent = nullptr;
        m_model->endRemoveRows();
        i += count;
    }
}

void ModelLayout::insert(LayoutNode* parent, int row, QList<LayoutNode*> const& nodes)
{
    if (nodes.isEmpty())
        return;
    row = qBound(0, row, parent->children.size());
    m_model->beginInsertRows(indexOf(parent), row, row + nodes.size() - 1);
    QList<LayoutNode*> children = parent->children.mid(0, row);
    children += nodes;
    children += parent->children.mid(row);
    parent->children = children;
    for (LayoutNode* node : nodes)
        node->parent = parent;
    m_model->endInsertRows();
}

void ModelLayout::reverse(LayoutNode* parent)
{
    QList<QPersistentModelIndex> const parents{indexOf(parent)};
    Q_EMIT m_model->layoutAboutToBeChanged(parents);
    std::reverse(parent->children.begin(), parent->children.end());
    QModelIndexList from;
    QModelIndexList to;
    for (QModelIndex const& kept : m_model->persistentIndexList()) {
        LayoutNode* const node = nodeAt(kept);
        if (node->parent != parent)
            continue;
        from.append(kept);
        to.append(
            m_model->createIndex(parent->children.size() - 1 - kept.row(), kept.column(), node));
    }
    m_model->changePersistentIndexList(from, to);
    Q_EMIT m_model->layoutChanged(parents);
}

LayoutNode* ModelLayout::group(QList<QModelIndex> const& rows)
{
    if (rows.isEmpty())
        return nullptr;
    QList<LayoutNode*> nodes;
    QList<LayoutNode*> members;
    bool anyBus = false;
    for (QModelIndex const& index : rows) {
        LayoutNode* const node = nodeAt(index);
        nodes.append(node);
        if (node->type == LayoutNode::Bus) {
            anyBus = true;
            members += node->children;
        } else {
            members.append(node);
        }
    }
    auto const isDivider = [](LayoutNode const* node) { return node->type == LayoutNode::Divider; };
    auto const others = nodes.size() - std::count_if(nodes.begin(), nodes.end(), isDivider);
    auto const width = members.size() - std::count_if(members.begin(), members.end(), isDivider);

    auto* bus = new BusLayoutNode;
    if (!anyBus || others == 1)
        bus->name = getGroupBusNameFromSelected(nodes);
    if (bus->name.isEmpty()) // the names of the buses that go are taken, too
        bus->name = getGroupBusName(m_root->children) + QStringLiteral("[%1:0]").arg(width - 1);

    int const row = nodes.first()->row();
    take(nodes);
    for (LayoutNode* node : qAsConst(nodes))
        node->children.clear();
    for (LayoutNode* member : qAsConst(members))
        bus->append(member);
    insert(m_root, row, {bus});
    for (LayoutNode* node : qAsConst(nodes)) {
        if (node->type == LayoutNode::Bus)
            releaseNode(node);
    }
    return bus;
}

QString ModelLayout::getGroupBusNameFromSelected(QList<LayoutNode*> nodes) const
{
    QStringList names;
    BusLayoutNode const* bus = nullptr;
    for (LayoutNode const* node : qAsConst(nodes)) {
        if (node->type == LayoutNode::Divider)
            continue;
        if (node->type == LayoutNode::Bus)
            bus = static_cast<BusLayoutNode const*>(node);
        names.append(displayText(node));
    }
    if (bus)
        return names.size() == 1 ? bus->name : QString();
    return vectorName(names);
}

QString ModelLayout::getGroupBusName(QList<LayoutNode*> const& buses) const
{
    QStringList names;
    for (LayoutNode const* node : buses) {
        if (node->type == LayoutNode::Bus)
            names.append(static_cast<BusLayoutNode const*>(node)->name);
    }
    return freeGroupName(names);
}

QString ModelLayout::displayText(LayoutNode const* node) const
{
    if (node->type == LayoutNode::Divider)
        return static_cast<DividerLayoutNode const*>(node)->text;
    if (node->type == LayoutNode::Bus) {
        auto const* bus = static_cast<BusLayoutNode const*>(node);
        return bus->text.isEmpty() ? bus->name : bus->text;
    }
    auto const* signal = static_cast<SignalLayoutNode const*>(node);
    if (!signal->text.isEmpty())
        return signal->text;
    SignalElement const* element = m_model->signalElementByID(signal->id);
    if (!element)
        return QString();
    return element->text.isEmpty() ? element->name : element->text;
}

void ModelLayout::releaseNode(LayoutNode* node)
{
    MLog() << "release node: " << displayText(node);
    if (node->parent)
        take({node});
    // the items first: they borrow the nodes' formatters
    for (LayoutNode* child : qAsConst(node->children))
        m_model->m_dataSource->recycleItemForNode(child);
    m_model->m_dataSource->recycleItemForNode(node);
    delete node;
}

void ModelLayout::removeAll()
{
    m_root->removeAll();
}

QDomElement ModelLayout::exportDomElement(QDomDocument& document) const
{
    QDomElement layout = m_root->domElement(document);
    for (LayoutNode const* node : qAsConst(m_root->children)) {
        QDomElement element = node->domElement(document);
        for (LayoutNode const* child : node->children)
            element.appendChild(child->domElement(document));
        layout.appendChild(element);
    }
    return layout;
}

void ModelLayout::restoreLayout(QDomElement const& layout)
{
    readRows(layout, *m_root);
}

} // namespace WaveMonitor
