#pragma once

#include "wavemonitor/localized.h"

#include <QPointer>
#include <QTreeView>

#include <memory>
#include <optional>

namespace VEK {
class RealDialog;
} // namespace VEK

namespace WaveMonitor {

struct LayoutNode;
class SignalTreeModel;

/// The left pane of a monitor: the rows of signals, buses and dividers, with their context menu,
/// drag and drop, renaming, formats, colours and row heights. Every row is as high as its wave.
///
/// The slots act on the selected rows; a selection that they have no use for changes nothing.
class SignalTreeView : public QTreeView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain WRITE setDomain)

public:
    class ContextMenuDelegate;
    class DragDropDelegate;

    /// A gesture in progress that the view hands its drag events to.
    class ActionDelegate
    {
    public:
        virtual ~ActionDelegate() = default;
        virtual void process(QEvent* event) = 0;
        virtual void complete(QEvent* event) = 0;
        virtual void validate() = 0;
        virtual void invalidate() = 0;
    };

    /// `width` is the one that `sizeHint` tells, in pixels.
    SignalTreeView(QWidget* parent, int width);
    ~SignalTreeView() override;

    /// A `SignalTreeModel` is told of this view. The model stays the caller's.
    void setModel(QAbstractItemModel* model) override;

    QSize sizeHint() const override;

    /// The selected rows, as indexes of column 0 in the order of the tree from top to bottom: a bus
    /// before its members.
    QList<QModelIndex> selectedRowList() const;

    /// The node behind an index of the view's model, or null.
    static LayoutNode* nodeAt(QModelIndex const& index);

    /// Times count in samples. The nearest sample before or after `time` at which a selected signal
    /// or bus takes another value; `time` itself without one.
    int getPreviousTransition(int time) const;
    int getNextTransition(int time) const;

    /// Paints the selected buses again.
    void updateTree();

    ContextMenuDelegate* contextMenuDelegate() const { return m_menu.get(); }

public Q_SLOTS:
    void onCollapsed(QModelIndex const& index);
    void onExpanded(QModelIndex const& index);
    void onGroupBus();
    void onUngroupBus();
    void onRename();
    void onRestoreOrgName();
    void onReverse();
    void onLongName();
    void onShortName();
    void onNewDivider();
    void onDeleteDivider();

    /// `format` is a `DataFormat::Type`. Real and the row height ask in a modal dialog.
    void onDataFormatSetted(int format);

    /// `rgb` holds 0xRRGGBB.
    void onWaveColorSetted(int rgb);

    /// Gives the selected buses what the open dialog of the real format shows.
    void onRealApply();

protected:
    void selectionChanged(QItemSelection const& selected,
                          QItemSelection const& deselected) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    SignalTreeModel* signalModel() const;
    QList<LayoutNode*> selectedBuses() const;
    void postNotification(int type);
    void askRowHeight();
    void askRealType();
    void finishFormatChange();

    std::unique_ptr<DragDropDelegate> m_delegate; // the drag in progress
    std::unique_ptr<ContextMenuDelegate> m_menu;
    QPointer<VEK::RealDialog> m_realDialog; // while it is open
    std::optional<Qt::DropActions> m_pendingDrag;
    int m_preferredWidth;
    bool m_inMouseMove = false;
};

} // namespace WaveMonitor
