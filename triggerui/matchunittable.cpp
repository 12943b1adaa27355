#include "triggerui/matchunittable.h"

#include "triggerui/matchunitmodel.h"

#include <QHeaderView>
#include <QStyle>

namespace VEK {

namespace {

/// The least, in large fonts more: two values of 8 bits.
int valueWidth(QFontMetrics const& metrics)
{
    return qMax(300, 24 * metrics.averageCharWidth());
}

} // namespace

MatchUnitTable::MatchUnitTable(QWidget* parent) : QTableView(parent)
{
    setSelectionBehavior(SelectRows);
    setTabKeyNavigation(false);
    setWordWrap(false); // the second value of a range would go below its row
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->setVisible(false);
}

void MatchUnitTable::setModel(QAbstractItemModel* model)
{
    QTableView::setModel(model);
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(MatchUnitModel::ValueColumn, QHeaderView::Fixed);
    setColumnWidth(MatchUnitModel::ValueColumn, valueWidth(fontMetrics()));
}

void MatchUnitTable::reset()
{
    QTableView::reset();
    updateGeometry();
}

QSize MatchUnitTable::sizeHint() const
{
    int width = valueWidth(fontMetrics()) + 2 * frameWidth() +
                style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    for (int column = 0; column < MatchUnitModel::ValueColumn; ++column)
        if (!isColumnHidden(column))
            width += qMax(sizeHintForColumn(column), horizontalHeader()->sectionSizeHint(column));
    return QSize(width, QTableView::sizeHint().height());
}

void MatchUnitTable::updateGeometries()
{
    int const value = MatchUnitModel::ValueColumn;
    int const room = viewport()->width() - horizontalHeader()->length() + columnWidth(value);
    setColumnWidth(value, qMax(valueWidth(fontMetrics()), room));
    QTableView::updateGeometries();
}

} // namespace VEK
