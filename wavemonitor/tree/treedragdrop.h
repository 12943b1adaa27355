#pragma once

#include "wavemonitor/signaltreeview.h"

#include <QPersistentModelIndex>
#include <QProxyStyle>
#include <QSet>

class QDragMoveEvent;
class QDropEvent;

namespace WaveMonitor {

/// The style of a tree view while rows are dragged: it draws where they would drop.
class TreeProxyStyle : public QProxyStyle
{
    Q_OBJECT

public:
    /// The delegate must outlive the style.
    explicit TreeProxyStyle(SignalTreeView::DragDropDelegate const& drag);

    void drawPrimitive(PrimitiveElement element, QStyleOption const* option, QPainter* painter,
                       QWidget const* widget) const override;

private:
    SignalTreeView::DragDropDelegate const& m_drag;
};

/// Moves the selected rows among their siblings, from the start of a drag to its end. During that
/// time the view has a style that draws where a drop would go.
class SignalTreeView::DragDropDelegate : public SignalTreeView::ActionDelegate
{
public:
    enum Position {
        Invalid = -1,
        OnItem = 0,
        Above = 1,
        Below = 2,
        Prepend = 3,
        Append = 4,
        AfterLast = 5 ///< Behind the last row of the top level.
    };

    /// `dragged` are rows with one parent, from top to bottom.
    DragDropDelegate(SignalTreeView* view, QList<QModelIndex> const& dragged);
    ~DragDropDelegate() override;

    /// Whether a drop here and now would move the rows somewhere.
    bool accepts() const { return m_valid && m_position != Invalid; }

    Position position() const { return m_position; }
    QModelIndex target() const { return m_target; }

    /// The row, or the dragged rows together, that a drop would go next to; in the viewport.
    QRect markerRect() const { return m_marker; }

    void process(QEvent* event) override;  ///< A drag's move.
    void complete(QEvent* event) override; ///< Its drop.
    void validate() override;
    void invalidate() override;

private:
    bool isDragged(QModelIndex const& index) const;
    QRect markerAround(QModelIndex const& index) const;
    void place(Position position, QModelIndex const& target, QRect const& marker);
    void leaveDraggedRows();
    void moveAndReselect();
    QList<QModelIndex> moveRows();

    SignalTreeView* m_view;
    std::unique_ptr<TreeProxyStyle> m_style;
    bool m_valid = false;
    QList<QPersistentModelIndex> m_dragged;
    QSet<QPersistentModelIndex> m_draggedSet; // the same, to search in
    QPersistentModelIndex m_draggedParent;
    Position m_position = Invalid;
    QPersistentModelIndex m_target;
    QRect m_marker;
};

} // namespace WaveMonitor
