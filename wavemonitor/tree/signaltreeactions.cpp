// What the entries of the tree's context menu do.

#include "results/dataformatter.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/tree/layoutnode.h"
#include "wavemonitor/tree/rowheightsetting.h"
#include "widgets/realdialog.h"

#include <QPersistentModelIndex>

#include <algorithm>

namespace WaveMonitor {

namespace {

/// Indexes that stay right while rows come and go.
QList<QPersistentModelIndex> persistent(QList<QModelIndex> const& rows)
{
    QList<QPersistentModelIndex> kept;
    for (QModelIndex const& index : rows)
        kept.append(index);
    return kept;
}

} // namespace

void SignalTreeView::postNotification(int type)
{
    NotificationCenter::shared()->postEvent(new Notification(NotificationType(type), this), this);
}

void SignalTreeView::onCollapsed(QModelIndex const&)
{
    postNotification(RowCollapsed);
}

void SignalTreeView::onExpanded(QModelIndex const&)
{
    postNotification(RowExpanded);
}

void SignalTreeView::onGroupBus()
{
    QList<QModelIndex> const rows = selectedRowList();
    bool const available = std::none_of(rows.begin(), rows.end(), [](QModelIndex const& index) {
        return index.parent().isValid();
    });
    MLog() << "action group bus is avilable: " << (available ? "YES" : "NO");
    if (available && !rows.isEmpty())
        signalModel()->groupBus(rows);
}

void SignalTreeView::onUngroupBus()
{
    QList<QModelIndex> buses;
    QItemSelection rows;
    for (QModelIndex const& index : selectedRowList()) {
        int const members = model()->rowCount(index);
        if (members == 0)
            continue;
        buses.append(index);
        rows.append(QItemSelectionRange(index));
        rows.append(QItemSelectionRange(model()->index(0, 0, index),
                                        model()->index(members - 1, 0, index)));
    }
    if (buses.isEmpty())
        return;
    // Selected and current rows that go one by one would lay the whole tree out each time.
    selectionModel()->select(rows, QItemSelectionModel::Deselect);
    selectionModel()->clearCurrentIndex();
    int const row = buses.first().row();
    for (auto bus = buses.crbegin(); bus != buses.crend(); ++bus) // the rows above stay
        signalModel()->ungroupBus(*bus);
    selectionModel()->setCurrentIndex(model()->index(row, 0), QItemSelectionModel::NoUpdate);
}

void SignalTreeView::onRename()
{
    QList<QModelIndex> const rows = selectedRowList();
    if (rows.size() == 1)
        edit(rows.first());
}

void SignalTreeView::onRestoreOrgName()
{
    for (QModelIndex const& index : selectedRowList()) {
        if (nodeAt(index)->type != LayoutNode::Divider)
            signalModel()->restoreOrgName(index);
    }
    viewport()->update();
}

void SignalTreeView::onLongName()
{
    for (QModelIndex const& index : selectedRowList()) {
        if (nodeAt(index)->type == LayoutNode::Divider)
            continue;
        signalModel()->ChangeLongName(index);
        nodeAt(index)->nameType = LayoutNode::LongName;
    }
    viewport()->update();
}

void SignalTreeView::onShortName()
{
    for (QModelIndex const& index : selectedRowList()) {
        if (nodeAt(index)->type == LayoutNode::Divider)
            continue;
        signalModel()->ChangeShortName(index);
        nodeAt(index)->nameType = LayoutNode::ShortName;
    }
    viewport()->update();
}

void SignalTreeView::onReverse()
{
    QList<QModelIndex> const rows = selectedRowList();
    if (rows.size() != 1)
        return;
    signalModel()->reverse(rows.first());
    viewport()->update();
}

void SignalTreeView::onNewDivider()
{
    QList<QModelIndex> const rows = selectedRowList();
    QModelIndex at = rows.value(0);
    if (at.parent().isValid())
        at = at.parent();
    int const row = at.isValid() ? at.row() : model()->rowCount();
    signalModel()->NewDivider(at);
    QModelIndex const divider = model()->index(row, 0);
    scrollTo(divider);
    edit(divider);
}

void SignalTreeView::onDeleteDivider()
{
    QList<QModelIndex> rows = selectedRowList();
    std::reverse(rows.begin(), rows.end()); // the rows above keep their numbers
    bool any = false;
    for (QPersistentModelIndex const& index : persistent(rows)) {
        if (!index.isValid() || nodeAt(index)->type != LayoutNode::Divider)
            continue; // a selected bus goes with its last divider
        signalModel()->DeleteDivider(index.parent(), index);
        any = true;
    }
    if (any)
        postNotification(LayoutChanged);
}

void SignalTreeView::onWaveColorSetted(int rgb)
{
    QList<QModelIndex> const rows = selectedRowList();
    for (QModelIndex const& index : rows)
        nodeAt(index)->color = rgb;
    signalModel()->updateSignalWaveColor();
    viewport()->update();
    postNotification(WaveColorChanged);
    if (!rows.isEmpty())
        Q_EMIT signalModel()->layoutEdited();
}

void SignalTreeView::onDataFormatSetted(int format)
{
    QList<LayoutNode*> const buses = selectedBuses();
    if (buses.isEmpty())
        return;
    if (format == DataFormat::RowHeightSetting) {
        askRowHeight();
    } else if (format == DataFormat::Real) {
        askRealType();
    } else {
        for (LayoutNode* bus : buses) {
            bus->formatter->setFormatType(DataFormat::Type(format));
            postNotification(DataFormatChanged);
        }
        finishFormatChange();
    }
}

void SignalTreeView::askRowHeight()
{
    QList<LayoutNode*> const before = selectedBuses();
    int height = before.first()->formatter->rowHeight();
    bool const alike = std::all_of(before.begin(), before.end(), [&](LayoutNode* bus) {
        return bus->formatter->rowHeight() == height;
    });
    if (!alike)
        height = Constants::Graphics::kDefaultChartRowHeight;

    QPointer<RowHeightSetting> const dialog = new RowHeightSetting(height, this);
    bool const accepted = dialog->exec() == QDialog::Accepted;
    if (!dialog) // and the view, whose child it was, is gone
        return;
    dialog->deleteLater();
    if (!accepted)
        return;
    for (LayoutNode* bus : selectedBuses()) { // the rows may have changed behind the dialog
        bus->formatter->setRowHeight(dialog->height);
        postNotification(DataFormatChanged);
    }
    finishFormatChange();
}

void SignalTreeView::askRealType()
{
    QList<LayoutNode*> const before = selectedBuses();
    VEK::RealType type = before.first()->formatter->realType();
    bool const alike = std::all_of(before.begin(), before.end(), [&](LayoutNode* bus) {
        return bus->formatter->realType().equal(type);
    });
    if (!alike)
        type.initial();

    QPointer<VEK::RealDialog> const dialog = new VEK::RealDialog(type, this);
    connect(dialog, &VEK::RealDialog::clickApply, this, &SignalTreeView::onRealApply);
    m_realDialog = dialog;
    dialog->exec();
    if (!dialog)
        return;
    dialog->deleteLater();
    if (dialog->confirmed)
        onRealApply();
    m_realDialog = nullptr;
}

void SignalTreeView::onRealApply()
{
    if (!m_realDialog)
        return;
    for (LayoutNode* bus : selectedBuses()) {
        bus->formatter->setFormatType(DataFormat::Real);
        bus->formatter->setRealType(m_realDialog->realType);
    }
    postNotification(DataFormatChanged);
    finishFormatChange();
}

/// The waves are built again, and a row may be higher or lower now.
void SignalTreeView::finishFormatChange()
{
    signalModel()->updateSignalWaveChart();
    doItemsLayout();
    updateTree();
    Q_EMIT signalModel()->layoutEdited();
}

} // namespace WaveMonitor
