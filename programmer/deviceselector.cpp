#include "programmer/deviceselector.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

namespace VEK {

DeviceSelector::DeviceSelector(DeviceItem* row, QStringList const& names, QWidget* parent)
    : QDialog(parent), m_row(row), m_list(new QListWidget(this))
{
    setWindowTitle(QStringLiteral("Device Chooser"));
    m_list->setObjectName(QStringLiteral("listWidget"));
    m_list->addItems(names);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(new QLabel(
        QStringLiteral("* Multiple devices found. Please double click to select one"), this));
    connect(m_list, &QListWidget::doubleClicked, this, &DeviceSelector::onDoubeClicked);
}

void DeviceSelector::onDoubeClicked(QModelIndex const& index)
{
    m_row->setDevice(index.data().toString());
    accept();
}

} // namespace VEK
