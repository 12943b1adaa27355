#include "wavemonitor/tree/signaltreeitemdelegate.h"

#include "wavemonitor/constants.h"

#include <QFontInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRegExpValidator>
#include <QToolTip>

namespace WaveMonitor {

namespace {

// Backgrounds with less light than this take white letters. Pure green is bright, but its gray is
// only 127; that of the reds, for which either would do, is 87 at most.
constexpr int LightGray = 100;

constexpr char const* PresentName = "presentName"; ///< Of an editor: the name that its row has.

void sayWhatFits(QLineEdit* editor)
{
    QToolTip::showText(
        editor->mapToGlobal(QPoint(0, editor->height())),
        SignalTreeItemDelegate::tr("A name has letters, digits and the characters _ : [ ] only."),
        editor);
}

} // namespace

QWidget* SignalTreeItemDelegate::createEditor(QWidget* parent, QStyleOptionViewItem const&,
                                              QModelIndex const& index) const
{
    if (!index.isValid())
        return nullptr;
    auto* editor = new QLineEdit(parent);
    editor->setValidator(
        new QRegExpValidator(QRegExp(QStringLiteral("^[a-zA-Z0-9_\\:\\[\\]]*$")), editor));
    connect(editor, &QLineEdit::inputRejected, editor, [editor] { sayWhatFits(editor); });
    return editor;
}

/// The names that rows come with may hold what the filter refuses.
bool SignalTreeItemDelegate::eventFilter(QObject* watched, QEvent* event)
{
    auto* const editor = qobject_cast<QLineEdit*>(watched);
    if (!editor || event->type() != QEvent::KeyPress)
        return QStyledItemDelegate::eventFilter(watched, event);
    int const key = static_cast<QKeyEvent*>(event)->key();
    bool const ends = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (ends && editor->text() == editor->property(PresentName).toString()) {
        Q_EMIT closeEditor(editor, RevertModelCache);
        return true;
    }
    if (ends && !editor->hasAcceptableInput())
        sayWhatFits(editor);
    return QStyledItemDelegate::eventFilter(watched, event);
}

void SignalTreeItemDelegate::setEditorData(QWidget* editor, QModelIndex const& index) const
{
    if (auto* line = qobject_cast<QLineEdit*>(editor); line && index.isValid()) {
        QString const name = index.data(Qt::EditRole).toString();
        line->setProperty(PresentName, name);
        line->setText(name);
    }
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
    // Rows are as high as their waves, whatever the font: a cut-off "_" would look like a space.
    int const height = option->fontMetrics.height();
    if (height > Constants::Graphics::kRowHeight) {
        int const pixels = QFontInfo(option->font).pixelSize();
        option->font.setPixelSize(pixels * Constants::Graphics::kRowHeight / height);
        option->fontMetrics = QFontMetrics(option->font);
    }
}

} // namespace WaveMonitor
