#pragma once

#include "programmer/deviceitem.h"

#include <QDialog>
#include <QStringList>

class QListWidget;
class QModelIndex;

namespace VEK {

/// Lets the user choose among the devices that share an ID code. The choice goes into the row,
/// which is not owned; a cancelled dialog leaves it alone. The row's device, if it is among the
/// names, or else the first is selected, and Return takes the selected one.
class DeviceSelector : public QDialog
{
    Q_OBJECT

public:
    DeviceSelector(DeviceItem* row, QStringList const& names, QWidget* parent);

public Q_SLOTS:
    void onDoubeClicked(QModelIndex const& index);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    DeviceItem* m_row;
    QListWidget* m_list;
};

} // namespace VEK
