#include "programmer/deviceconfigurationdlg.h"

#include "ui_deviceconfigurationdlg.h"

#include <QFileDialog>
#include <QPushButton>
#include <QSignalBlocker>

namespace VEK {

QString const FsFileTitle = QStringLiteral("Open Fs File...");
QString const FsFileFilter = QStringLiteral("KAVRO Fs File (*.fs)");

DeviceConfigurationDlg::DeviceConfigurationDlg(DeviceItem* row, QWidget* parent)
    : QDialog(parent), ui(new Ui_DeviceConfigurationDlg), m_row(row)
{
    ui->setupUi(this);
    auto* const save =
        ui->buttonBox->addButton(QStringLiteral("save"), QDialogButtonBox::AcceptRole);
    save->setObjectName(QStringLiteral("buttonSave"));
    auto* const cancel =
        ui->buttonBox->addButton(QStringLiteral("cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("buttonCancel"));
    updateDeviceCfg();
    auto const changed = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(ui->comboBoxAccessMode, changed, this, &DeviceConfigurationDlg::onAccessModeChanged);
    connect(ui->comboBoxOperation, changed, this, &DeviceConfigurationDlg::onOperationChanged);
    connect(ui->buttonFile, &QToolButton::clicked, this, &DeviceConfigurationDlg::onChooseFile);
    connect(save, &QPushButton::clicked, this, &DeviceConfigurationDlg::onSave);
    connect(cancel, &QPushButton::clicked, this, &DeviceConfigurationDlg::reject);
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
