#pragma once

#include "model/capturecore.h"
#include "triggerui/treelineedit.h"

#include <QObject>
#include <QPointer>

class QPoint;
class QRegExpValidator;
class QTreeWidget;

namespace VEK {

/// The value fields of the match unit dialog: a tree for each of the two values, with a row for
/// each signal or bus of a port. A row shows its value in the radix, a bus also below it, bit by
/// bit: both are written together, whichever was edited.
class MatchValueEditor : public QObject
{
    Q_OBJECT

public:
    /// The texts of both values, one character a bit.
    struct Values
    {
        QString first;
        QString second;
    };

    /// The trees are not owned; they lie in `dialog`, whose focus says which row is being edited.
    /// The editor ends before they do. The radix is 2 at first.
    MatchValueEditor(QTreeWidget* first, QTreeWidget* second, QWidget* dialog);
    ~MatchValueEditor() override;

    /// Gives both trees, which have no rows, those of the signals, all zeros.
    void fill(QList<SignalItem> const& items);
    void clear();

    /// Radix, function and type decide which texts the rows accept. Setting one zeroes
    /// all rows; values read before go back by `applyValues`.
    int radix() const { return m_radix; }
    void setRadix(int radix);
    void setKind(int func, int matchType);

    /// The number of digits that a value of `width` bits has in the present radix.
    int calculatedBitwidth(int width) const;

    /// Reads both values, also what is still being typed. With `replaceLetters` a row that holds
    /// letters counts as zeros.
    Values readValues(bool replaceLetters);

    /// Shows both values; one that does not fit radix, function and type is dropped.
    void applyValues(Values const& values);

    /// Shows both values of a file, in the width of the rows as the chip gets them: a short one is
    /// preceded by zeros, a long one keeps its head, and what the rows would refuse is zero.
    void loadValues(Values const& values);

    /// Gives each row of a tree its whole range as its tool tip.
    void toolTipValueChanged(QTreeWidget* tree);

    /// Hands what a row, or a bit of a bus, shows to all that show it too; null does nothing.
    void spread(TreeLineEdit* edit);

    /// Opens the menu of letters at a place of a row, or of a bit; null only forgets the last one.
    void openMenu(TreeLineEdit* edit, QPoint position);

    /// Fills the row that the menu was opened on. A letter that it refuses changes nothing.
    void changeAll(QChar to);

private:
    void fillTree(QTreeWidget* tree, QList<SignalItem> const& items);
    TreeLineEdit* Signal2treeItemAndEdit(QTreeWidget* tree, SignalItem const& item, int row);
    void watch(TreeLineEdit* edit);
    void clearTree(QTreeWidget* tree);
    void setEditorType(QLineEdit* edit, int width);
    void resetTree(QTreeWidget* tree);
    void resetTrees();
    QString getEditor(QTreeWidget* tree, bool replaceLetters) const;
    void setEditor(QString const& value, QTreeWidget* tree);
    QString fitted(QString const& value) const;
    QString lettersAllowed() const;
    QString bitsOfRow(TreeLineEdit const* row) const;
    QString bitOf(TreeLineEdit const* edit) const;
    void showRow(TreeLineEdit* row, QString const& bits);

    QTreeWidget* m_first;
    QTreeWidget* m_second;
    QWidget* m_dialog;
    QRegExpValidator* m_validator; ///< Of all rows and bits.
    int m_radix = 2;
    int m_func = FuncEqual;
    int m_matchType = MatchBasic;
    QPointer<TreeLineEdit> m_menuEdit; ///< The row or bit that the menu was opened on.
};

} // namespace VEK
