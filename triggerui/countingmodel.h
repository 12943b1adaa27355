#pragma once

#include <QAbstractListModel>

namespace VEK {

/// The numbers 1, 2, 3 and so on as items; text and user data of an item are its number. An item is
/// made when it is looked at, so that a last number of many millions costs nothing; the view should
/// be an `EvenListView`, as Qt's own lay out every row.
class CountingModel : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    /// Counts up to `last`; below 1 there are no items.
    void setLast(int last);

    int rowCount(QModelIndex const& parent = QModelIndex()) const override;
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;

    /// Finds numbers, and texts that they begin with, without looking at each item.
    QModelIndexList match(QModelIndex const& start, int role, QVariant const& value, int hits,
                          Qt::MatchFlags flags) const override;

private:
    int m_last = 0;
};

} // namespace VEK
