#pragma once

#include <QTableView>

namespace VEK {

/// The view of a `MatchUnitModel`. The columns are as wide as what they hold, but for the last, the
/// value, which takes the room that is left. The tab key leaves the table.
class MatchUnitTable : public QTableView
{
    Q_OBJECT

public:
    explicit MatchUnitTable(QWidget* parent);

    /// Wide enough for all columns.
    QSize sizeHint() const override;

    /// The model has the columns of a `MatchUnitModel`.
    void setModel(QAbstractItemModel* model) override;
    void reset() override;

protected:
    void updateGeometries() override;
};

} // namespace VEK
