#pragma once

#include "model/capturecore.h"

#include <QAbstractTableModel>
#include <QList>

namespace VEK {

/// A table of match units, one a row. The units are not owned and must outlive their stay here;
/// whoever changes one calls `updateRow`.
class MatchUnitModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column : int {
        EnabledColumn = 0, ///< Checked when the unit is enabled; panels hide it.
        UnitColumn = 1,
        PortColumn = 2,
        TypeColumn = 3,
        FunctionColumn = 4,
        CounterColumn = 5,
        ValueColumn = 6,
        ColumnCount = 7
    };

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(QModelIndex const& parent = QModelIndex()) const override;
    int columnCount(QModelIndex const& parent = QModelIndex()) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;

    /// Takes a check state of the first column into the unit's `enabled`; refuses all else.
    bool setData(QModelIndex const& index, QVariant const& value, int role = Qt::EditRole) override;

    void setMatcherList(QList<MatchUnit*> const& units);
    void reset();

    /// Announces that a unit changed; a row out of range is ignored.
    void updateRow(int row);

    /// The unit of the index's row, or null.
    MatchUnit* muFromIndex(QModelIndex const& index) const;

Q_SIGNALS:
    /// A unit was switched on or off here.
    void modified();

private:
    QList<MatchUnit*> units;
};

} // namespace VEK
