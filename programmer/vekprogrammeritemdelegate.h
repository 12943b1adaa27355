#pragma once

#include <QStyledItemDelegate>

namespace VEK {

/// The editors of the programmer's table: lists of the catalogue for series, device and version, a
/// file dialog for the Fs file, a number for the IR code.
class VekProgrammerItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, QStyleOptionViewItem const& option,
                          QModelIndex const& index) const override;
    void setEditorData(QWidget* editor, QModelIndex const& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      QModelIndex const& index) const override;
    /// Notes that Return in a list chooses what it shows.
    bool eventFilter(QObject* editor, QEvent* event) override;

protected:
    /// The check box of a row that can't be ticked is drawn as a disabled one.
    void initStyleOption(QStyleOptionViewItem* option, QModelIndex const& index) const override;

private:
    QWidget* makeList(QWidget* parent, QStringList const& entries) const;
    QWidget* makeFileEditor(QWidget* parent, QModelIndex const& index) const;
    void editorDone(QWidget* editor);
    void editorCancelled(QWidget* editor);
};

} // namespace VEK
