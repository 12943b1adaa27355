#include "wavemonitor/tree/signaltreeitemdelegate.h"

#include <QLineEdit>
#include <QRegExpValidator>

namespace WaveMonitor {

namespace {

// Backgrounds with less light than this take white letters. Pure green is bright, but its gray is
// only 127; that of the reds, for which either would do, is 87 at most.
constexpr int LightGray = 100;

} // namespace

QWidget* SignalTreeItemDelegate::createEditor(QWidget* parent, QStyleOptionViewItem const&,
                                              QModelIndex const& index) const
{
    if (!index.isValid())
        return nullptr;
    auto* editor = new QLineEdit(parent);
    editor->setValidator(
        new QRegExpValidator(QRegExp(QStringLiteral("^[a-zA-Z0-9_\\:\\[\\]]*$")), editor));
    return editor;
}

void SignalTreeItemDelegate::setEditorData(QWidget* editor, QModelIndex const& index) const
{
    if (auto* line = qobject_cast<QLineEdit*>(editor); line && index.isValid())
        line->setText(index.data(Qt::EditRole).toString());
}

void SignalTreeItemDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                          QModelIndex const& index) const
{
    if (auto* line = qobject_cast<QLineEdit*>(editor); line && index.isValid())
        model->setData(index, line->text(), Qt::EditRole);
}

void SignalTreeItemDelegate::initStyleOption(QStyleOptionViewItem* option,
                                             QModelIndex const& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    // The rows' backgrounds are the model's, light ones and the colours of dividers, so the
    // palette's text colour need not be readable on them.
    if (option->backgroundBrush.style() != Qt::NoBrush) {
        bool const dark = qGray(option->backgroundBrush.color().rgb()) < LightGray;
        option->palette.setColor(QPalette::Text, dark ? Qt::white : Qt::black);
    }
}

} // namespace WaveMonitor
