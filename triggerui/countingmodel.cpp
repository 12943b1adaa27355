#include "triggerui/countingmodel.h"

namespace VEK {

namespace {

constexpr int FetchedAtOnce = 65536;

} // namespace

void CountingModel::setRange(int last, int needed)
{
    beginResetModel();
    m_last = qMax(last, 0);
    m_fetched = qMin(m_last, qMax(needed, FetchedAtOnce));
    endResetModel();
}

int CountingModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : m_fetched;
}

QVariant CountingModel::data(QModelIndex const& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (role == Qt::DisplayRole)
        return QString::number(index.row() + 1);
    return role == Qt::UserRole ? QVariant(index.row() + 1) : QVariant();
}

bool CountingModel::canFetchMore(QModelIndex const& parent) const
{
    return !parent.isValid() && m_fetched < m_last;
}

void CountingModel::fetchMore(QModelIndex const& parent)
{
    if (!canFetchMore(parent))
        return;
    int const more = qMin(m_last - m_fetched, FetchedAtOnce);
    beginInsertRows(QModelIndex(), m_fetched, m_fetched + more - 1);
    m_fetched += more;
    endInsertRows();
}

} // namespace VEK
