#include "wavemonitor/tree/treedragdrop.h"

#include "wavemonitor/mlog.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/layoutnode.h"

#include <QApplication>
#include <QDropEvent>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

namespace WaveMonitor {

namespace {

char const* positionText(SignalTreeView::DragDropDelegate::Position position)
{
    using Delegate = SignalTreeView::DragDropDelegate;
    switch (position) {
    case Delegate::OnItem:
        return "OnItem";
    case Delegate::Above:
        return "Above";
    case Delegate::Below:
        return "Below";
    case Delegate::Prepend:
        return "Prepend";
    case Delegate::Append:
        return "Append";
    default:
        return "Invalid";
    }
}

} // namespace

TreeProxyStyle::TreeProxyStyle(SignalTreeView::DragDropDelegate const& drag)
    : QProxyStyle(QStyleFactory::create(QApplication::style()->objectName())), m_drag(drag)
{}

void TreeProxyStyle::drawPrimitive(PrimitiveElement element, QStyleOption const* option,
                                   QPainter* painter, QWidget const* widget) const
{
    if (element != PE_IndicatorItemViewItemDrop || option->rect.isNull()) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    if (!m_drag.accepts())
        return;
    QRect const marker = m_drag.markerRect();
    bool const above = m_drag.position() == SignalTreeView::DragDropDelegate::Above;
    QStyleOption line(*option);
    line.rect = QRect(marker.left(), above ? marker.top() - 1 : marker.bottom(), marker.width(), 0);
    QProxyStyle::drawPrimitive(element, &line, painter, widget);

    QPolygon const triangle({QPoint(0, 0), QPoint(12, 0), QPoint(6, 6), QPoint(0, 0)});
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::black);
    painter->drawPolygon(triangle.translated(line.rect.topLeft()));
    painter->restore();
}

SignalTreeView::DragDropDelegate::DragDropDelegate(SignalTreeView* view,
                                                   QList<QModelIndex> const& dragged)
    : m_view(view), m_style(std::make_unique<TreeProxyStyle>(*this)),
      m_draggedParent(dragged.value(0).parent())
{
    for (QModelIndex const& index : dragged)
        m_dragged.append(index);
    m_draggedSet = QSet<QPersistentModelIndex>(m_dragged.begin(), m_dragged.end());
    m_view->setStyle(m_style.get());
}

SignalTreeView::DragDropDelegate::~DragDropDelegate()
{
    m_view->setStyle(nullptr);
}

void SignalTreeView::DragDropDelegate::validate()
{
    m_valid = true;
}

void SignalTreeView::DragDropDelegate::invalidate()
{
    m_valid = false;
    place(Invalid, {}, {});
}

void SignalTreeView::DragDropDelegate::process(QEvent* event)
{
    auto* move = static_cast<QDragMoveEvent*>(event);
    QModelIndex index = m_view->indexAt(move->pos());
    index = index.sibling(index.row(), 0);
    if (!index.isValid()) {
        QAbstractItemModel const* model = m_view->model();
        place(AfterLast, {}, m_view->visualRect(model->index(model->rowCount() - 1, 0)));
        return;
    }
    if (index.parent() != m_draggedParent) {
        place(Invalid, {}, {});
        move->setDropAction(Qt::IgnoreAction);
        move->ignore();
        return;
    }
    QRect const marker = markerAround(index);
    bool const lowerHalf = move->pos().y() - marker.top() >= (marker.height() + 1) / 2;
    place(lowerHalf ? Below : Above, index, marker);
}

bool SignalTreeView::DragDropDelegate::isDragged(QModelIndex const& index) const
{
    return index.isValid() && m_draggedSet.contains(QPersistentModelIndex(index));
}

/// The rectangle of a row, or of all the dragged rows next to each other that it is one of.
QRect SignalTreeView::DragDropDelegate::markerAround(QModelIndex const& index) const
{
    QRect marker = m_view->visualRect(index);
    if (!isDragged(index))
        return marker;
    for (int step : {-1, 1}) {
        QModelIndex last = index;
        QModelIndex next = index.sibling(index.row() + step, 0);
        for (; isDragged(next); next = next.sibling(next.row() + step, 0))
            last = next;
        marker |= m_view->visualRect(last); // those between lie between
    }
    return marker;
}

void SignalTreeView::DragDropDelegate::place(Position position, QModelIndex const& target,
                                             QRect const& marker)
{
    m_position = position;
    m_target = target;
    m_marker = marker;
    m_view->viewport()->update();
}

void SignalTreeView::DragDropDelegate::complete(QEvent* event)
{
    auto* drop = static_cast<QDropEvent*>(event);
    if (drop->dropAction() == Qt::IgnoreAction || !accepts())
        return;
    leaveDraggedRows();
    MLog() << "drop " << positionText(m_position);
    moveAndReselect();
    m_view->setStyle(nullptr);
    invalidate();
}

void SignalTreeView::DragDropDelegate::moveAndReselect()
{
    QSet<LayoutNode const*> open; // rows that are taken away and put back come back collapsed
    for (QPersistentModelIndex const& index : qAsConst(m_dragged)) {
        if (m_view->isExpanded(index))
            open.insert(nodeAt(index));
    }
    LayoutNode const* const current = nodeAt(m_view->currentIndex());
    // Selected and current rows that go one by one would lay the whole tree out each time.
    m_view->selectionModel()->clear();
    QItemSelection selection;
    QModelIndex newCurrent;
    for (QModelIndex const& moved : moveRows()) {
        m_view->setExpanded(moved, open.contains(nodeAt(moved)));
        if (nodeAt(moved) == current)
            newCurrent = moved;
        if (!selection.isEmpty() && selection.last().bottom() + 1 == moved.row())
            selection.last() = QItemSelectionRange(selection.last().topLeft(), moved);
        else
            selection.append(QItemSelectionRange(moved));
    }
    m_view->selectionModel()->select(selection, QItemSelectionModel::Select);
    m_view->selectionModel()->setCurrentIndex(newCurrent, QItemSelectionModel::NoUpdate);
}

/// A place next to rows that move away themselves is told by the row behind them that stays, or by
/// their parent.
void SignalTreeView::DragDropDelegate::leaveDraggedRows()
{
    if (m_position == AfterLast) {
        m_position = Append;
        return;
    }
    if (!isDragged(m_target))
        return;
    bool const above = m_position == Above;
    QModelIndex row = m_target;
    while (isDragged(row))
        row = row.sibling(row.row() + (above ? -1 : 1), 0);
    if (row.isValid()) {
        m_target = row;
        m_position = above ? Below : Above;
    } else {
        m_target = m_draggedParent;
        m_position = above ? Prepend : Append;
    }
}

/// Returns the rows' new indexes. Rows that the model has dropped during the drag stay away.
QList<QModelIndex> SignalTreeView::DragDropDelegate::moveRows()
{
    QList<QModelIndex> rows;
    for (QPersistentModelIndex const& index : qAsConst(m_dragged)) {
        if (index.isValid())
            rows.append(index);
    }
    SignalTreeModel* model = m_view->signalModel();
    if (!model || rows.isEmpty())
        return {};
    if (m_position == Prepend)
        return model->prepend2Parent(rows, m_target);
    if (m_position == Append)
        return model->append2Parent(rows, m_target);
    if (!m_target.isValid())
        return {};
    return m_position == Above ? model->insertIndexesForward(m_target, rows)
                               : model->insertIndexesBackward(m_target, rows);
}

} // namespace WaveMonitor
