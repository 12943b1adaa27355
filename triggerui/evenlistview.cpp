#include "triggerui/evenlistview.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

namespace VEK {

EvenListView::EvenListView(QWidget* parent) : QAbstractItemView(parent)
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

int EvenListView::rows() const
{
    return model() ? model()->rowCount(rootIndex()) : 0;
}

int EvenListView::rowHeight() const
{
    return qMax(1, sizeHintForRow(0));
}

int EvenListView::rowsInSight() const
{
    return qMax(1, viewport()->height() / rowHeight());
}

QModelIndex EvenListView::indexOf(int row) const
{
    return row >= 0 && row < rows() ? model()->index(row, 0, rootIndex()) : QModelIndex();
}

/// Rows out of sight lie right above or below it: their true place may exceed an int.
QRect EvenListView::visualRect(QModelIndex const& index) const
{
    if (!index.isValid())
        return QRect();
    int const height = rowHeight();
    int const place =
        qBound(-1, index.row() - verticalScrollBar()->value(), viewport()->height() / height + 1);
    return QRect(0, place * height, viewport()->width(), height);
}

QModelIndex EvenListView::indexAt(QPoint const& point) const
{
    return viewport()->rect().contains(point)
               ? indexOf(verticalScrollBar()->value() + point.y() / rowHeight())
               : QModelIndex();
}

void EvenListView::scrollTo(QModelIndex const& index, ScrollHint hint)
{
    if (!index.isValid())
        return;
    updateGeometries(); // the range may be that of an earlier model or size
    int const row = index.row();
    int const count = rowsInSight();
    int const first = verticalScrollBar()->value();
    if (hint == PositionAtCenter)
        verticalScrollBar()->setValue(row - count / 2);
    else if (row < first || hint == PositionAtTop)
        verticalScrollBar()->setValue(row);
    else if (row - count >= first || hint == PositionAtBottom)
        verticalScrollBar()->setValue(row - count + 1);
}

void EvenListView::updateGeometries()
{
    QAbstractItemView::updateGeometries();
    int const count = rowsInSight();
    verticalScrollBar()->setPageStep(count);
    verticalScrollBar()->setRange(0, qMax(0, rows() - count));
}

void EvenListView::scrollContentsBy(int, int)
{
    viewport()->update();
}

void EvenListView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    int const height = rowHeight();
    int const last = event->rect().bottom() / height;
    for (int place = event->rect().top() / height; place <= last; ++place) {
        QModelIndex const index = indexOf(verticalScrollBar()->value() + place);
        if (!index.isValid())
            break;
        QStyleOptionViewItem option = viewOptions();
        option.rect = visualRect(index);
        if (selectionModel()->isSelected(index))
            option.state |= QStyle::State_Selected;
        if (index == currentIndex() && hasFocus())
            option.state |= QStyle::State_HasFocus;
        itemDelegate(index)->paint(&painter, option, index);
    }
}

QModelIndex EvenListView::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    int const row = currentIndex().row(); // -1 without one
    int const last = rows() - 1;
    switch (action) {
    case MoveUp:
    case MoveLeft:
    case MovePrevious:
        return indexOf(qMax(0, row - 1));
    case MoveDown:
    case MoveRight:
    case MoveNext:
        return indexOf(qMin(last, row + 1));
    case MovePageUp:
        return indexOf(qMax(0, row - rowsInSight()));
    case MovePageDown:
        return indexOf(qMin(last, row + rowsInSight()));
    case MoveHome:
        return indexOf(0);
    default:
        return indexOf(last);
    }
}

void EvenListView::setSelection(QRect const& rect, QItemSelectionModel::SelectionFlags command)
{
    selectionModel()->select(indexAt(rect.topLeft()), command);
}

QRegion EvenListView::visualRegionForSelection(QItemSelection const&) const
{
    return viewport()->rect();
}

bool EvenListView::isIndexHidden(QModelIndex const&) const
{
    return false;
}

} // namespace VEK
