#pragma once

#include <QAbstractListModel>

namespace VEK {

/// The numbers 1, 2, 3 and so on as items; text and user data of an item are its number. Items
/// exist once they are looked at: a view fetches more when it comes to the end, so that a last
/// number of many millions costs nothing.
class CountingModel : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    /// Counts up to `last`, none below 1, and has the items up to `needed` at once.
    void setRange(int last, int needed);

    int rowCount(QModelIndex const& parent = QModelIndex()) const override;
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    bool canFetchMore(QModelIndex const& parent) const override;
    void fetchMore(QModelIndex const& parent) override;

private:
    int m_last = 0;
    int m_fetched = 0;
};

} // namespace VEK
