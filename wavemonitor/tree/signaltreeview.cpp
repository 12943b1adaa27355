#include "wavemonitor/signaltreeview.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/layoutnode.h"
#include "wavemonitor/tree/signalheaderview.h"
#include "wavemonitor/tree/signaltreeitemdelegate.h"
#include "wavemonitor/tree/treecontextmenu.h"
#include "wavemonitor/tree/treedragdrop.h"
#include "wavemonitor/waves/transitions.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>

#include <algorithm>
#include <utility>

namespace WaveMonitor {

namespace {

constexpr int NameColumnWidth = 200;

/// Where a row stands in the tree: top-level row, then 0 for that row itself or 1 + the member's
/// row.
std::pair<int, int> treePlace(QModelIndex const& index)
{
    QModelIndex const parent = index.parent();
    return parent.isValid() ? std::make_pair(parent.row(), index.row() + 1)
                            : std::make_pair(index.row(), 0);
}

RowSamples samplesOf(LayoutNode const* node, SignalTreeModel const* model)
{
    RowSamples row;
    auto const take = [&](LayoutNode const* signal) {
        SignalElement const* element = model->signalElementByID(signal->id);
        QBitArray const bits = element ? element->data : QBitArray();
        if (row.arrays.isEmpty()) // the first one tells a bus's length
            row.length = bits.size();
        row.arrays.append(bits);
    };
    if (node->type == LayoutNode::Signal)
        take(node);
    for (LayoutNode const* child : node->children) {
        if (child->type == LayoutNode::Signal)
            take(child);
    }
    return row;
}

} // namespace

SignalTreeView::SignalTreeView(QWidget* parent, int width)
    : QTreeView(parent), m_preferredWidth(width)
{
    m_menu = std::make_unique<ContextMenuDelegate>(this);
    // The model paints its rows light; the indentation beside them goes along in a dark theme.
    QPalette light = palette();
    light.setColor(QPalette::Base, Qt::white);
    for (auto role : {QPalette::Text, QPalette::WindowText})
        light.setColor(role, Qt::black);
    light.setColor(QPalette::Highlight, QColor(0x3299ff));
    setPalette(light);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setItemDelegate(new SignalTreeItemDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setStyleSheet(QStringLiteral("QTreeView::item { height: %1px; }"
                                 "QTreeView::item::selected "
                                 "{ color : white;  background-color : #3299ff }")
                      .arg(Constants::Graphics::kRowHeight));
    setHeader(new SignalHeaderView(Qt::Horizontal, this));
    setTextElideMode(Qt::ElideRight);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    connect(this, &QTreeView::collapsed, this, &SignalTreeView::onCollapsed);
    connect(this, &QTreeView::expanded, this, &SignalTreeView::onExpanded);
}

SignalTreeView::~SignalTreeView()
{
    if (m_delegate)
        QDrag::cancel(); // ends the event loop of the drag
    m_delegate.reset();
}

void SignalTreeView::setModel(QAbstractItemModel* model)
{
    QTreeView::setModel(model);
    if (auto* tree = signalModel())
        tree->setTreeView(this);
    setColumnWidth(0, NameColumnWidth);
}

QSize SignalTreeView::sizeHint() const
{
    return {m_preferredWidth, QTreeView::sizeHint().height()};
}

SignalTreeModel* SignalTreeView::signalModel() const
{
    return qobject_cast<SignalTreeModel*>(model());
}

LayoutNode* SignalTreeView::nodeAt(QModelIndex const& index)
{
    return static_cast<LayoutNode*>(index.internalPointer());
}

QList<QModelIndex> SignalTreeView::selectedRowList() const
{
    QList<QModelIndex> rows;
    for (QModelIndex const& index : selectedIndexes()) {
        if (index.column() == 0)
            rows.append(index);
    }
    std::stable_sort(rows.begin(), rows.end(), [](QModelIndex const& a, QModelIndex const& b) {
        return treePlace(a) < treePlace(b);
    });
    return rows;
}

QList<LayoutNode*> SignalTreeView::selectedBuses() const
{
    QList<LayoutNode*> buses;
    for (QModelIndex const& index : selectedRowList()) {
        if (nodeAt(index)->type == LayoutNode::Bus)
            buses.append(nodeAt(index));
    }
    return buses;
}

int SignalTreeView::getPreviousTransition(int time) const
{
    int nearest = -1;
    for (QModelIndex const& index : selectedRowList())
        nearest = qMax(nearest, previousChange(samplesOf(nodeAt(index), signalModel()), time));
    return nearest < 0 ? time : nearest;
}

int SignalTreeView::getNextTransition(int time) const
{
    int nearest = -1;
    for (QModelIndex const& index : selectedRowList()) {
        int const found = nextChange(samplesOf(nodeAt(index), signalModel()), time);
        if (found >= 0 && (nearest < 0 || found < nearest))
            nearest = found;
    }
    return nearest < 0 ? time : nearest;
}

void SignalTreeView::updateTree()
{
    for (QModelIndex const& index : selectedRowList()) {
        if (nodeAt(index)->type == LayoutNode::Bus) {
            update(index);
            update(index.sibling(index.row(), 1));
        }
    }
}

void SignalTreeView::selectionChanged(QItemSelection const& selected,
                                      QItemSelection const& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (auto* tree = signalModel())
        tree->updateSelection(selected.indexes(), deselected.indexes());
}

void SignalTreeView::contextMenuEvent(QContextMenuEvent* event)
{
    if (!signalModel() || model()->rowCount() == 0)
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addActions(m_menu->actions());
    menu->popup(event->globalPos());
    event->accept();
}

void SignalTreeView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (!m_delegate || !m_delegate->accepts())
        return;
    QPainter painter(viewport());
    QStyleOption option;
    option.initFrom(this);
    option.rect = m_delegate->markerRect();
    style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemDrop, &option, &painter, this);
}

void SignalTreeView::mouseMoveEvent(QMouseEvent* event)
{
    // The base class goes on using the view after a drag, so the drag, in which the view may be
    // deleted, runs once it has returned.
    m_inMouseMove = true;
    QTreeView::mouseMoveEvent(event);
    m_inMouseMove = false;
    if (auto const pending = std::exchange(m_pendingDrag, std::nullopt))
        startDrag(*pending);
}

void SignalTreeView::startDrag(Qt::DropActions supportedActions)
{
    if (m_inMouseMove) {
        m_pendingDrag = supportedActions;
        return;
    }
    m_delegate.reset();
    QList<QModelIndex> const rows = selectedRowList();
    if (rows.isEmpty())
        return;
    bool const siblings = std::all_of(rows.begin(), rows.end(), [&](QModelIndex const& index) {
        return index.parent() == rows.first().parent();
    });
    if (!siblings) {
        MLog() << "moving indexes have different parent is unsupported!";
        return;
    }
    m_delegate = std::make_unique<DragDropDelegate>(this, rows);
    QPointer<SignalTreeView> const self(this);
    QObject source; // not the view: a drag dies with its source
    auto* drag = new QDrag(&source);
    // A type of our own: nothing else takes these rows, and the base class leaves them to us.
    auto* mimeData = new QMimeData;
    mimeData->setData(QStringLiteral("application/x-wavemonitor-rows"), QByteArray());
    drag->setMimeData(mimeData);
    drag->exec(supportedActions, Qt::MoveAction);
    if (self)
        m_delegate.reset();
}

// Rows come from this view alone: without a drag of its own it takes nothing. The base class knows
// nothing of our rows and refuses them, so the answer is given after it.

void SignalTreeView::dragEnterEvent(QDragEnterEvent* event)
{
    if (m_delegate)
        m_delegate->validate();
    QTreeView::dragEnterEvent(event);
    event->setAccepted(m_delegate != nullptr);
}

void SignalTreeView::dragMoveEvent(QDragMoveEvent* event)
{
    if (m_delegate)
        m_delegate->process(event);
    QTreeView::dragMoveEvent(event);
    if (m_delegate && m_delegate->accepts()) {
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        event->setDropAction(Qt::IgnoreAction);
        event->ignore();
    }
}

void SignalTreeView::dragLeaveEvent(QDragLeaveEvent* event)
{
    if (m_delegate)
        m_delegate->invalidate();
    QTreeView::dragLeaveEvent(event);
}

void SignalTreeView::dropEvent(QDropEvent* event)
{
    if (!m_delegate) {
        event->ignore();
        return;
    }
    m_delegate->complete(event);
    QTreeView::dropEvent(event);
    event->accept();
}

} // namespace WaveMonitor
