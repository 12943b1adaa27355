#pragma once

#include "model/capturecore.h"

#include <QLineEdit>
#include <QList>

class QTreeWidget;
class QTreeWidgetItem;

namespace VEK {

/// The editor of one value row: a signal, a bus, or one bit of a bus. The keys + and - unfold and
/// fold the bus, as in the tree itself.
///
/// Its text must be read with `displayText`: the mask fills blanks with "0", and `text` leaves
/// every 0 out.
class TreeLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit TreeLineEdit(QWidget* parent = nullptr);

    /// A new editor in column 1 of a tree's row; the tree owns it.
    static TreeLineEdit* inItem(QTreeWidgetItem* item);

    /// The editor of a row that has one.
    static TreeLineEdit* ofItem(QTreeWidgetItem* item);

    int width = 1;                 ///< Single signals in this row; hides the width of the widget.
    int index = -1;                ///< Place of the row in its tree, or of a bit in its bus.
    QList<TreeLineEdit*> subEdits; ///< Of a bus: the editors of its bits, in order. Not owned.
    TreeLineEdit* bus = nullptr;   ///< Of a bit: the editor of its bus. Not owned.

protected:
    /// The tab key may lead to a row out of sight, which must come into view.
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QTreeWidgetItem* m_item = nullptr; ///< The row that it is in, if any.
};

/// Appends a row, and for a bus a row below it for each member, named by the text of the signal or,
/// without one, by its name. The tree owns the rows; the top row is returned.
QTreeWidgetItem* Signal2treeItem(QTreeWidget* tree, SignalItem const& item);

} // namespace VEK
