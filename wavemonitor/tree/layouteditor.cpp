#include "wavemonitor/tree/layouteditor.h"

#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/tree/signalstore.h"

#include <QMap>
#include <QSet>

#include <algorithm>

namespace WaveMonitor {

namespace {

/// The display text that shows a hierarchical name in this form; the long one needs none.
QString textInForm(LayoutNode::NameType form, QString const& name)
{
    if (form == LayoutNode::LongName)
        return QString();
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

LayoutEditor::LayoutEditor(SignalTreeModel* model, ModelLayout* layout, SignalStore* store)
    : m_model(model), m_layout(layout), m_store(store)
{}

void LayoutEditor::announceEdit()
{
    m_model->post(LayoutChanged);
    Q_EMIT m_model->layoutEdited();
}

LayoutNode* LayoutEditor::busAt(QModelIndex const& index) const
{
    return m_layout->owns(index) ? asBus(m_layout->nodeAt(index)) : nullptr;
}

void LayoutEditor::addDivider(int id, QModelIndex const& at)
{
    auto* divider = new DividerLayoutNode;
    divider->id = id;
    m_layout->insert(m_layout->root(), m_layout->owns(at) ? at.row() : id, {divider});
    announceEdit();
}

void LayoutEditor::deleteDivider(QModelIndex const& parent, QModelIndex const& at)
{
    if (!m_layout->owns(at) || at.parent() != parent ||
        m_layout->nodeAt(at)->type != LayoutNode::Divider)
        return;
    LayoutNode* const divider = m_layout->nodeAt(at);
    LayoutNode* const owner = divider->parent;
    m_layout->releaseNode(divider);
    dropEmptyBus(owner);
    Q_EMIT m_model->layoutEdited();
}

/// A user could not get rid of a bus without members.
void LayoutEditor::dropEmptyBus(LayoutNode* parent)
{
    if (parent && asBus(parent) && parent->children.isEmpty())
        ungroup(m_layout->indexOf(parent));
}

void LayoutEditor::reverse(QModelIndex const& index)
{
    LayoutNode* const bus = busAt(index);
    if (!bus)
        return;
    m_layout->reverse(bus);
    announceEdit();
}

bool LayoutEditor::haveOneLength(QList<QModelIndex> const& rows) const
{
    int length = -1; // that of the first signal
    auto const fits = [&](LayoutNode const* node) {
        if (node->type != LayoutNode::Signal)
            return true;
        int const own = m_store->length(node->id);
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

void LayoutEditor::group(QList<QModelIndex> const& rows)
{
    QMap<int, QModelIndex> inOrder;
    for (QModelIndex const& index : rows) {
        if (!m_layout->owns(index) || index.parent().isValid())
            return;
        inOrder.insert(index.row(), index);
    }
    if (!haveOneLength(inOrder.values()))
        return;
    MLog() << "signals are avilable to group bus: "
           << "YES!";
    m_model->selectOutView({});
    m_layout->group(inOrder.values());
    announceEdit();
}

void LayoutEditor::ungroup(QModelIndex const& index)
{
    LayoutNode* const bus = busAt(index);
    if (!bus)
        return;
    MLog() << "ungroup bus at index: " << index;
    int const row = bus->row();
    m_layout->take({bus});
    QList<LayoutNode*> const members = bus->children;
    bus->children.clear();
    m_layout->insert(m_layout->root(), row, members);
    m_layout->releaseNode(bus);
    announceEdit();
}

void LayoutEditor::rename(QModelIndex const& index, QString const& text)
{
    LayoutNode* const node = m_layout->nodeAt(index);
    QString const before = m_layout->displayText(node);
    if (BusLayoutNode* const bus = asBus(node))
        bus->text = text == bus->name ? QString() : text;
    else if (SignalLayoutNode* const signal = asSignal(node))
        signal->text = text;
    else
        static_cast<DividerLayoutNode*>(node)->text = text;
    if (text != before)
        Q_EMIT m_model->layoutEdited();
}

void LayoutEditor::setSignalName(LayoutNode* node, LayoutNode::NameType form)
{
    SignalElement* const element = m_store->element(node->id);
    if (!element && form == LayoutNode::ShortName)
        return; // there is nothing to shorten
    QString const text = element ? textInForm(form, element->name) : QString();
    asSignal(node)->text = text;
    if (element)
        element->text = text;
}

void LayoutEditor::setNameForm(QModelIndex const& index, LayoutNode::NameType form)
{
    if (!m_layout->owns(index))
        return;
    LayoutNode* const node = m_layout->nodeAt(index);
    if (asSignal(node)) {
        setSignalName(node, form);
    } else if (BusLayoutNode* const bus = asBus(node)) {
        bus->text = textInForm(form, bus->name);
        for (LayoutNode* child : qAsConst(bus->children)) {
            if (!asSignal(child))
                continue;
            child->nameType = form;
            setSignalName(child, form);
        }
    }
    Q_EMIT m_model->layoutEdited();
}

void LayoutEditor::restoreName(QModelIndex const& index)
{
    if (!m_layout->owns(index))
        return;
    LayoutNode* const node = m_layout->nodeAt(index);
    // A long or short name that was chosen stays: deliberate.
    if (node->nameType <= LayoutNode::ShortName)
        return;
    if (asSignal(node))
        setSignalName(node, LayoutNode::LongName);
    else if (BusLayoutNode* const bus = asBus(node))
        bus->text.clear();
    Q_EMIT m_model->layoutEdited();
}

QList<QModelIndex> LayoutEditor::moveNextTo(QModelIndex const& target, Side side,
                                            QList<QModelIndex> const& indexes)
{
    if (!m_layout->owns(target))
        return indexes;
    return moveRows(indexes, m_layout->nodeAt(target)->parent,
                    side == Before ? target.row() : target.row() + 1);
}

QList<QModelIndex> LayoutEditor::moveInto(QModelIndex const& parent, Side side,
                                          QList<QModelIndex> const& indexes)
{
    if (parent.isValid() && !m_layout->owns(parent))
        return indexes;
    LayoutNode* const node = m_layout->nodeAt(parent);
    return moveRows(indexes, node, side == Before ? 0 : node->children.size());
}

/// Puts rows before the first row of `parent`, from row `from` on, that is none of them.
QList<QModelIndex> LayoutEditor::moveRows(QList<QModelIndex> const& indexes, LayoutNode* parent,
                                          int from)
{
    QList<LayoutNode*> nodes;
    QSet<LayoutNode*> moving;
    LayoutNode* oldParent = nullptr;
    for (QModelIndex const& index : indexes) {
        LayoutNode* const node = m_layout->owns(index) ? m_layout->nodeAt(index) : nullptr;
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
    m_model->updateItems();
    m_model->post(SelectionChanged);
    dropEmptyBus(oldParent);
    Q_EMIT m_model->layoutEdited();

    QList<QModelIndex> moved;
    for (LayoutNode const* node : qAsConst(nodes))
        moved.append(m_layout->indexOf(node));
    return moved;
}

} // namespace WaveMonitor
