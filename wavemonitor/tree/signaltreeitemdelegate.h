#pragma once

#include <QStyledItemDelegate>

namespace WaveMonitor {

/// Renames rows in place. A text with other characters than letters, digits, "_", ":" and brackets
/// can't be entered: a tip says so, and the editor stays open until it is mended or left with Esc.
/// Return over the present name, which may hold such characters, leaves the row as it is.
class SignalTreeItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, QStyleOptionViewItem const& option,
                          QModelIndex const& index) const override;
    void setEditorData(QWidget* editor, QModelIndex const& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      QModelIndex const& index) const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void initStyleOption(QStyleOptionViewItem* option, QModelIndex const& index) const override;
};

} // namespace WaveMonitor
