#include "programmer/vekprogrammeritemdelegate.h"

#include "programmer/deviceconfigurationdlg.h"
#include "programmer/vekprogrammermodel.h"

#include <QComboBox>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSpinBox>
#include <QTimer>

namespace VEK {

namespace {

QString const NoDevice = QStringLiteral("JTAG_NOP");

/// Property of a list in which the user chose, be it what was shown before.
constexpr char const* Chosen = "chosen";

QString textBeside(QModelIndex const& index, int column)
{
    return index.sibling(index.row(), column).data().toString();
}

/// The package groups of the row's series, or the entry that stands for none.
QStringList deviceEntries(QModelIndex const& index)
{
    QString const name = textBeside(index, VekProgrammerModel::SeriesColumn);
    Series const* const series = DeviceConfigurations::instance()->series(name);
    return series ? series->deviceNs() : QStringList{NoDevice};
}

} // namespace

QWidget* VekProgrammerItemDelegate::createEditor(QWidget* parent,
                                                 QStyleOptionViewItem const& option,
                                                 QModelIndex const& index) const
{
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    switch (index.column()) {
    case VekProgrammerModel::SeriesColumn:
        return makeList(parent, catalogue->getSeriesNames());
    case VekProgrammerModel::DeviceColumn:
        return makeList(parent, deviceEntries(index));
    case VekProgrammerModel::VersionColumn:
        return makeList(parent, catalogue->getDeviceNVersions(
                                    textBeside(index, VekProgrammerModel::DeviceColumn)));
    case VekProgrammerModel::FsFileColumn:
        return makeFileEditor(parent, index);
    case VekProgrammerModel::IrCodeColumn: {
        auto* const box = new QSpinBox(parent);
        box->setRange(1, 16);
        return box;
    }
    default:
        return QStyledItemDelegate::createEditor(parent, option, index);
    }
}

QWidget* VekProgrammerItemDelegate::makeList(QWidget* parent, QStringList const& entries) const
{
    auto* const box = new QComboBox(parent);
    box->addItems(entries);
    auto* const self = const_cast<VekProgrammerItemDelegate*>(this);
    connect(box, QOverload<int>::of(&QComboBox::activated), self, [self, box] {
        box->setProperty(Chosen, true);
        self->editorDone(box);
    });
    return box;
}

/// The dialog belongs to the editor: when the table changes under both, they go together.
QWidget* VekProgrammerItemDelegate::makeFileEditor(QWidget* parent, QModelIndex const& index) const
{
    auto* const line = new QLineEdit(parent);
    line->setReadOnly(true);
    auto* const dialog = new QFileDialog(line, FsFileTitle, index.data().toString(), FsFileFilter);
    dialog->setFileMode(QFileDialog::ExistingFile);
    auto* const self = const_cast<VekProgrammerItemDelegate*>(this);
    connect(dialog, &QFileDialog::fileSelected, line, &QLineEdit::setText);
    connect(dialog, &QFileDialog::accepted, self, [self, line] { self->editorDone(line); });
    connect(dialog, &QFileDialog::rejected, self, [self, line] { self->editorCancelled(line); });
    QTimer::singleShot(0, dialog, &QDialog::open);
    return line;
}

void VekProgrammerItemDelegate::editorDone(QWidget* editor)
{
    Q_EMIT commitData(editor);
    Q_EMIT closeEditor(editor);
}

void VekProgrammerItemDelegate::editorCancelled(QWidget* editor)
{
    Q_EMIT closeEditor(editor, RevertModelCache);
}

void VekProgrammerItemDelegate::setEditorData(QWidget* editor, QModelIndex const& index) const
{
    QVariant const value = index.data(Qt::EditRole);
    if (auto* const box = qobject_cast<QComboBox*>(editor))
        box->setCurrentIndex(box->findText(value.toString()));
    else if (auto* const number = qobject_cast<QSpinBox*>(editor))
        number->setValue(value.toInt());
    else if (auto* const line = qobject_cast<QLineEdit*>(editor))
        line->setText(value.toString());
}

void VekProgrammerItemDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                             QModelIndex const& index) const
{
    QVariant value;
    if (auto* const box = qobject_cast<QComboBox*>(editor))
        value = box->currentIndex() < 0 ? QVariant() : box->currentText();
    else if (auto* const number = qobject_cast<QSpinBox*>(editor))
        value = number->value();
    else if (auto* const line = qobject_cast<QLineEdit*>(editor))
        value = line->text();
    // a new row shows a series without having one
    auto* const rows = qobject_cast<VekProgrammerModel*>(model);
    DeviceItem const* const row = rows ? rows->device(index) : nullptr;
    bool const first = row && row->known == 0 && editor->property(Chosen).toBool() &&
                       index.column() == VekProgrammerModel::SeriesColumn;
    // leaving an editor without a choice must not clear what depends on it
    if (value.isValid() && (first || value != index.data(Qt::EditRole)))
        model->setData(index, value);
}

bool VekProgrammerItemDelegate::eventFilter(QObject* editor, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && qobject_cast<QComboBox*>(editor)) {
        int const key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter)
            editor->setProperty(Chosen, true);
    }
    return QStyledItemDelegate::eventFilter(editor, event);
}

void VekProgrammerItemDelegate::initStyleOption(QStyleOptionViewItem* option,
                                                QModelIndex const& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() == VekProgrammerModel::EnableColumn &&
        !(index.flags() & Qt::ItemIsUserCheckable)) {
        option->state &= ~QStyle::State_Enabled;
        option->palette.setCurrentColorGroup(QPalette::Disabled);
    }
}

} // namespace VEK
