// The captured signals, and what joins the rows with the tree and the waves.

#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/waves/waveitem.h"
#include "wavemonitor/waves/waveviewdatasource.h"

#include <QItemSelectionModel>
#include <QTreeView>

namespace WaveMonitor {

SignalElement* SignalTreeModel::storeElement(SignalElement const& element)
{
    SignalElement*& place = m_elements[element.id];
    delete place;
    return place = new SignalElement(element);
}

void SignalTreeModel::addRawSignal(SignalData const& signal)
{
    m_layout->appendSignal(storeElement({signal.id, signal.name, signal.text, signal.data}));
    post(LayoutChanged);
}

void SignalTreeModel::addBus(BusData const& bus)
{
    for (SignalData const& signal : bus.signalDataList)
        storeElement({signal.id, signal.name, signal.text, signal.data});
    QList<SignalElement*> elements; // an id that is there twice has one element, the last
    for (SignalData const& signal : bus.signalDataList)
        elements.append(m_elements.value(signal.id));
    m_layout->appendBus(bus.name, bus.text, elements);
    post(LayoutChanged);
}

void SignalTreeModel::setDataFormat(DataFormat::Type type)
{
    m_dataFormatter.setFormatType(type);
    updateTreeView();
}

DataFormat::Type SignalTreeModel::dataFormat() const
{
    return m_dataFormatter.formatType();
}

void SignalTreeModel::setTriggerPosition(int time)
{
    m_triggerPosition = time;
    setCurrentTime(time);
    post(LayoutChanged);
}

void SignalTreeModel::setCurrentTime(int time)
{
    m_currentTime = time;
    updateTreeView();
}

void SignalTreeModel::setWindowsNum(int count)
{
    m_windowsNum = qMax(1, count);
}

int SignalTreeModel::timeLength() const
{
    int length = 0;
    for (SignalElement const* element : m_elements)
        length = qMax(length, element->data.size());
    return length;
}

int SignalTreeModel::oneWindowSize()
{
    SignalElement const* const first = m_elements.value(0);
    return first ? first->data.size() : 0;
}

SignalElement*
SignalTreeModel::signalElementByID(int id, std::function<void(SignalElement*)> const& visit) const
{
    SignalElement* const element = m_elements.value(id);
    if (element && visit)
        visit(element);
    return element;
}

void SignalTreeModel::updataSingalDatas(QList<QBitArray> const& datas)
{
    if (datas.size() != m_elements.size())
        return;
    for (int id = 0; id < datas.size(); ++id)
        signalElementByID(id, [&](SignalElement* element) { element->data = datas.at(id); });
    updateItems();
    updateTreeView();
}

void SignalTreeModel::clear()
{
    int const count = m_elements.size();
    qDeleteAll(m_elements);
    m_elements.clear();
    MLog() << "signals cleared: " << count << "remains: " << m_elements.size();
}

QGraphicsItem* SignalTreeModel::getItem(LayoutNode* node) const
{
    return m_dataSource->itemForNode(node);
}

QList<QGraphicsItem*> SignalTreeModel::waveItems()
{
    return m_dataSource->recalculateWaveItems();
}

void SignalTreeModel::updateItems()
{
    m_dataSource->recalculateWaveItems();
}

void SignalTreeModel::updateSignalWaveChart()
{
    m_dataSource->clearSelection();
    updateItems();
}

void SignalTreeModel::updateSignalWaveColor()
{
    m_dataSource->updateWaveColor();
}

void SignalTreeModel::updateSelection(QList<QModelIndex> const& selected,
                                      QList<QModelIndex> const& deselected)
{
    auto const mark = [this](QList<QModelIndex> const& indexes, bool on) {
        for (QModelIndex const& index : indexes) {
            WaveItem* const item =
                isOwn(index) ? m_dataSource->itemForNode(m_layout->nodeAt(index)) : nullptr;
            if (item)
                item->setWaveSelected(on);
        }
    };
    mark(selected, true);
    mark(deselected, false);
    post(SelectionChanged);
}

void SignalTreeModel::highlightItem(QGraphicsItem* item)
{
    LayoutNode const* const node = item ? m_dataSource->nodeForItem(item) : nullptr;
    selectOutView(node ? QList<QModelIndex>{m_layout->indexOf(node)} : QList<QModelIndex>());
}

void SignalTreeModel::selectOutView(QList<QModelIndex> const& indexes)
{
    if (!m_treeView || !m_treeView->selectionModel())
        return;
    QItemSelection selection;
    for (QModelIndex const& index : indexes) {
        if (isOwn(index))
            selection.select(index, index);
    }
    m_treeView->selectionModel()->clearSelection();
    m_treeView->selectionModel()->select(selection, QItemSelectionModel::Select);
}

bool SignalTreeModel::indexIsExpanded(QModelIndex const& index) const
{
    return m_treeView && m_treeView->isExpanded(index);
}

void SignalTreeModel::setTreeView(QTreeView* view)
{
    m_treeView = view;
}

void SignalTreeModel::updateTreeView()
{
    if (m_treeView)
        m_treeView->viewport()->update();
}

} // namespace WaveMonitor
