#pragma once

#include "programmer/deviceitem.h"

#include <QDialog>

#include <memory>

namespace VEK {

class Ui_DeviceConfigurationDlg;

/// Chooses what the programmer does with a device. Saving writes the operation into the row, which
/// is not owned and must outlive the dialog.
class DeviceConfigurationDlg : public QDialog
{
    Q_OBJECT

public:
    DeviceConfigurationDlg(DeviceItem* row, QWidget* parent);
    ~DeviceConfigurationDlg() override;

    /// The Fs file as it stands in the dialog; who opened it takes it into the table.
    QString fileName() const;

public Q_SLOTS:
    void onAccessModeChanged();
    void onOperationChanged();
    void updateDeviceCfg();
    void onSave();
    void onChooseFile();

private:
    AccessMode* accessMode() const;
    Operation* operation() const;

    std::unique_ptr<Ui_DeviceConfigurationDlg> ui;
    DeviceItem* m_row;
    QList<AccessMode*> m_modes;
};

/// The dialog's title and filter, wherever an Fs file is chosen.
extern QString const FsFileTitle;
extern QString const FsFileFilter;

} // namespace VEK
