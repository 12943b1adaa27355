#include "programmer/deviceconfigurationdlg.h"

#include "triggerui/named.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

namespace VEK {

QString const FsFileTitle = QStringLiteral("Open Fs File...");
QString const FsFileFilter = QStringLiteral("KAVRO Fs File (*.fs)");

/// The form.
class Ui_DeviceConfigurationDlg
{
public:
    void setupUi(QDialog* dialog);

    QComboBox* comboBoxAccessMode = nullptr;
    QComboBox* comboBoxOperation = nullptr;
    QGroupBox* groupProgramming = nullptr;
    QLineEdit* lineEditFile = nullptr;
    QToolButton* buttonFile = nullptr;
    QGroupBox* groupFlash = nullptr;
    QPushButton* buttonSave = nullptr;
    QPushButton* buttonCancel = nullptr;

private:
    QGroupBox* makeOperation(QDialog* dialog);
    QGroupBox* makeProgramming(QDialog* dialog);
    QGroupBox* makeFlash(QDialog* dialog);
};

void Ui_DeviceConfigurationDlg::setupUi(QDialog* dialog)
{
    dialog->setWindowTitle(QStringLiteral("Device Configuration"));
    auto* const layout = new QVBoxLayout(dialog);
    layout->addWidget(makeOperation(dialog));
    layout->addWidget(makeProgramming(dialog));
    layout->addWidget(makeFlash(dialog));
    layout->addStretch(1);
    auto* const buttons = new QDialogButtonBox(dialog);
    buttonSave = named(buttons->addButton(QStringLiteral("save"), QDialogButtonBox::AcceptRole),
                       "buttonSave");
    buttonCancel = named(buttons->addButton(QStringLiteral("cancel"), QDialogButtonBox::RejectRole),
                         "buttonCancel");
    layout->addWidget(buttons);
}

QGroupBox* Ui_DeviceConfigurationDlg::makeOperation(QDialog* dialog)
{
    auto* const group = new QGroupBox(QStringLiteral("Device Operation"), dialog);
    comboBoxAccessMode = named(new QComboBox(group), "comboBoxAccessMode");
    comboBoxAccessMode->setMinimumWidth(250); // gives the dialog room for a file name
    comboBoxOperation = named(new QComboBox(group), "comboBoxOperation");
    comboBoxOperation->setSizeAdjustPolicy(QComboBox::AdjustToContents); // it gets other entries
    auto* const form = new QFormLayout(group);
    form->addRow(QStringLiteral("Access Mode:"), comboBoxAccessMode);
    form->addRow(QStringLiteral("Operation:"), comboBoxOperation);
    return group;
}

QGroupBox* Ui_DeviceConfigurationDlg::makeProgramming(QDialog* dialog)
{
    groupProgramming =
        named(new QGroupBox(QStringLiteral("Programming Options"), dialog), "groupProgramming");
    lineEditFile = named(new QLineEdit(groupProgramming), "lineEditFile");
    buttonFile = named(new QToolButton(groupProgramming), "buttonFile");
    buttonFile->setText(QStringLiteral("..."));
    auto* const row = new QHBoxLayout;
    row->addWidget(lineEditFile);
    row->addWidget(buttonFile);
    auto* const form = new QFormLayout(groupProgramming);
    form->addRow(QStringLiteral("File Name:"), row);
    return groupProgramming;
}

QGroupBox* Ui_DeviceConfigurationDlg::makeFlash(QDialog* dialog)
{
    groupFlash =
        named(new QGroupBox(QStringLiteral("External Flash Options"), dialog), "groupFlash");
    auto* const device = named(new QComboBox(groupFlash), "comboBoxFlash");
    device->addItem(QStringLiteral("Winbond W25Q64"));
    auto* const address =
        named(new QLineEdit(QStringLiteral("0x000000"), groupFlash), "lineEditAddress");
    auto* const form = new QFormLayout(groupFlash);
    form->addRow(QStringLiteral("Device:"), device);
    form->addRow(QStringLiteral("Start Address:"), address);
    return groupFlash;
}

DeviceConfigurationDlg::DeviceConfigurationDlg(DeviceItem* row, QWidget* parent)
    : QDialog(parent), ui(new Ui_DeviceConfigurationDlg), m_row(row)
{
    ui->setupUi(this);
    updateDeviceCfg();
    auto const changed = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(ui->comboBoxAccessMode, changed, this, &DeviceConfigurationDlg::onAccessModeChanged);
    connect(ui->comboBoxOperation, changed, this, &DeviceConfigurationDlg::onOperationChanged);
    connect(ui->buttonFile, &QToolButton::clicked, this, &DeviceConfigurationDlg::onChooseFile);
    connect(ui->buttonSave, &QPushButton::clicked, this, &DeviceConfigurationDlg::onSave);
    connect(ui->buttonCancel, &QPushButton::clicked, this, &DeviceConfigurationDlg::reject);
}

DeviceConfigurationDlg::~DeviceConfigurationDlg() = default;

QString DeviceConfigurationDlg::fileName() const
{
    return ui->lineEditFile->text();
}

AccessMode* DeviceConfigurationDlg::accessMode() const
{
    return m_modes.value(ui->comboBoxAccessMode->currentIndex(), nullptr);
}

Operation* DeviceConfigurationDlg::operation() const
{
    AccessMode const* const mode = accessMode();
    return mode ? mode->programmerOperations().value(ui->comboBoxOperation->currentIndex(), nullptr)
                : nullptr;
}

void DeviceConfigurationDlg::updateDeviceCfg()
{
    DeviceModes* const device = DeviceConfigurations::instance()->deviceModes(m_row->device);
    m_modes = device ? device->accessModesWithProgramming() : QList<AccessMode*>();
    {
        QSignalBlocker const blocked(ui->comboBoxAccessMode);
        ui->comboBoxAccessMode->clear();
        for (AccessMode const* const mode : qAsConst(m_modes))
            ui->comboBoxAccessMode->addItem(mode->name);
        if (m_row->operation && device)
            ui->comboBoxAccessMode->setCurrentIndex(
                device->indexOfPrograming(m_row->operation->accessMode));
    }
    onAccessModeChanged();
    if (AccessMode const* const mode = accessMode())
        ui->comboBoxOperation->setCurrentIndex(mode->indexOfProgramming(m_row->operation));
    onOperationChanged();
    ui->lineEditFile->setText(m_row->fsFile);
}

void DeviceConfigurationDlg::onAccessModeChanged()
{
    {
        QSignalBlocker const blocked(ui->comboBoxOperation);
        ui->comboBoxOperation->clear();
        if (AccessMode const* const mode = accessMode())
            for (Operation const* const entry : mode->programmerOperations())
                ui->comboBoxOperation->addItem(entry->description);
    }
    ui->comboBoxOperation->setMinimumWidth(ui->comboBoxOperation->sizeHint().width());
    onOperationChanged();
}

void DeviceConfigurationDlg::onOperationChanged()
{
    Operation const* const chosen = operation();
    ui->groupProgramming->setVisible(chosen && chosen->hasProgrammingOption());
    ui->groupFlash->setVisible(chosen && chosen->hasExternalFlashOption());
}

void DeviceConfigurationDlg::onSave()
{
    if (Operation* const chosen = operation())
        m_row->operation = chosen;
    accept();
}

void DeviceConfigurationDlg::onChooseFile()
{
    auto* const dialog = new QFileDialog(this, FsFileTitle, ui->lineEditFile->text(), FsFileFilter);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, ui->lineEditFile, &QLineEdit::setText);
    dialog->open();
}

} // namespace VEK
