#include "programmer/deviceselector.h"

#include <QKeyEvent>
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
    m_list->setCurrentRow(qMax(0, names.indexOf(row->device)));
    connect(m_list, &QListWidget::doubleClicked, this, &DeviceSelector::onDoubeClicked);
}

void DeviceSelector::onDoubeClicked(QModelIndex const& index)
{
    if (!index.isValid())
        return;
    m_row->setDevice(index.data().toString());
    accept();
}

void DeviceSelector::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        onDoubeClicked(m_list->currentIndex());
    else
        QDialog::keyPressEvent(event);
}

} // namespace VEK
