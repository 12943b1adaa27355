#pragma once

#include <QList>
#include <QModelIndex>
#include <QPointer>
#include <QTreeView>

class QGraphicsItem;

namespace WaveMonitor {

class ModelLayout;
class WaveViewDataSource;

/// Joins the tree view that shows a model with the waves: rows selected there are highlighted here,
/// and the other way round. Without a view there is nothing selected or expanded.
class TreeLink
{
public:
    /// Both are not owned.
    TreeLink(ModelLayout const* layout, WaveViewDataSource const* waves);

    /// Not owned.
    void setView(QTreeView* view) { m_view = view; }

    /// Paints the view again.
    void repaint();

    bool isExpanded(QModelIndex const& index) const;

    /// Passes a change of the view's selection on to the waves.
    void highlight(QList<QModelIndex> const& selected, QList<QModelIndex> const& deselected);

    /// Selects these rows alone in the view; those of other models are passed over.
    void select(QList<QModelIndex> const& indexes);

    /// Selects the row of a wave item alone; none for a null or a foreign item.
    void selectRowOf(QGraphicsItem const* item);

private:
    ModelLayout const* m_layout;
    WaveViewDataSource const* m_waves;
    QPointer<QTreeView> m_view;
};

} // namespace WaveMonitor
