#pragma once

#include <QStyledItemDelegate>

namespace WaveMonitor {

/// Renames rows in place. A text with other characters than letters, digits, "_", ":" and brackets
/// can't be entered: the editor stays open until it is mended or left with Esc.
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
    void initStyleOption(QStyleOptionViewItem* option, QModelIndex const& index) const override;
};

} // namespace WaveMonitor
