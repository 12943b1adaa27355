#include "triggerui/countingmodel.h"

namespace VEK {

void CountingModel::setLast(int last)
{
    beginResetModel();
    m_last = qMax(last, 0);
    endResetModel();
}

int CountingModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : m_last;
}

QVariant CountingModel::data(QModelIndex const& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (role == Qt::DisplayRole)
        return QString::number(index.row() + 1);
    return role == Qt::UserRole ? QVariant(index.row() + 1) : QVariant();
}

QModelIndexList CountingModel::match(QModelIndex const& start, int role, QVariant const& value,
                                     int hits, Qt::MatchFlags flags) const
{
    Qt::MatchFlags const kind = flags & Qt::MatchFlags(0x0F);
    bool const byText = kind == Qt::MatchStartsWith;
    if (!start.isValid() || hits != 1 || (role != Qt::DisplayRole && role != Qt::UserRole) ||
        (!byText && kind != Qt::MatchExactly))
        return QAbstractListModel::match(start, role, value, hits, flags);
    qint64 const number = value.toLongLong();
    if (number < 1)
        return {};

    // with 7 begin 7, then 70 to 79, then 700 to 799 and so on
    qint64 const from = start.row() + 1;
    qint64 found = flags & Qt::MatchWrap && number <= m_last ? number : 0;
    for (qint64 low = number, count = 1; low <= m_last; low *= 10, count *= 10) {
        qint64 const next = qMax(low, from);
        if (next < low + count && next <= m_last) {
            found = next;
            break;
        }
        if (!byText)
            break;
    }
    return found ? QModelIndexList{index(int(found - 1), 0)} : QModelIndexList();
}

} // namespace VEK
