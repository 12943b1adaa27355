#include "wavemonitor/tree/treelink.h"

#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/waves/waveitem.h"
#include "wavemonitor/waves/waveviewdatasource.h"

#include <QItemSelectionModel>

namespace WaveMonitor {

TreeLink::TreeLink(ModelLayout const* layout, WaveViewDataSource const* waves)
    : m_layout(layout), m_waves(waves)
{}

void TreeLink::repaint()
{
    if (m_view)
        m_view->viewport()->update();
}

bool TreeLink::isExpanded(QModelIndex const& index) const
{
    return m_view && m_view->isExpanded(index);
}

void TreeLink::highlight(QList<QModelIndex> const& selected, QList<QModelIndex> const& deselected)
{
    auto const mark = [this](QList<QModelIndex> const& indexes, bool on) {
        for (QModelIndex const& index : indexes) {
            WaveItem* const item =
                m_layout->owns(index) ? m_waves->itemForNode(m_layout->nodeAt(index)) : nullptr;
            if (item)
                item->setWaveSelected(on);
        }
    };
    mark(selected, true);
    mark(deselected, false);
}

void TreeLink::select(QList<QModelIndex> const& indexes)
{
    if (!m_view || !m_view->selectionModel())
        return;
    QItemSelection selection;
    for (QModelIndex const& index : indexes) {
        if (m_layout->owns(index))
            selection.select(index, index);
    }
    m_view->selectionModel()->clearSelection();
    m_view->selectionModel()->select(selection, QItemSelectionModel::Select);
}

void TreeLink::selectRowOf(QGraphicsItem const* item)
{
    LayoutNode const* const node = item ? m_waves->nodeForItem(item) : nullptr;
    select(node ? QList<QModelIndex>{m_layout->indexOf(node)} : QList<QModelIndex>());
}

} // namespace WaveMonitor
