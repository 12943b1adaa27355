#pragma once

#include <QAbstractItemView>

namespace VEK {

/// A list whose rows are all as high as the first. It keeps nothing for a row, so that a model with
/// many millions costs no more than what is in sight. One row at a time is selected.
class EvenListView : public QAbstractItemView
{
    Q_OBJECT

public:
    explicit EvenListView(QWidget* parent = nullptr);

    QRect visualRect(QModelIndex const& index) const override;
    QModelIndex indexAt(QPoint const& point) const override;
    void scrollTo(QModelIndex const& index, ScrollHint hint = EnsureVisible) override;

protected:
    void updateGeometries() override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void setSelection(QRect const& rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(QItemSelection const& selection) const override;
    int horizontalOffset() const override { return 0; }
    int verticalOffset() const override { return 0; }
    bool isIndexHidden(QModelIndex const& index) const override;

private:
    int rows() const;
    int rowHeight() const;
    int rowsInSight() const;
    QModelIndex indexOf(int row) const;
};

} // namespace VEK
