#include "wavemonitor/tree/rowheightsetting.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace WaveMonitor {

RowHeightSetting::RowHeightSetting(int height, QWidget* parent)
    : QDialog(parent), height(height), m_spinBox(new QSpinBox(this))
{
    setWindowTitle(tr("Row Height Setting"));
    setFixedSize(300, 110);

    m_spinBox->setRange(30, 1000);
    m_spinBox->setValue(height);
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Row Height:"), this));
    row->addWidget(m_spinBox, 1);
    row->addWidget(new QLabel(tr("pixels"), this));

    auto* ok = new QPushButton(tr("&OK"), this);
    auto* cancel = new QPushButton(tr("&Cancel"), this);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &RowHeightSetting::accept);
    connect(cancel, &QPushButton::clicked, this, &RowHeightSetting::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* whole = new QVBoxLayout(this);
    whole->addLayout(row);
    whole->addLayout(buttons);
}

void RowHeightSetting::accept()
{
    height = m_spinBox->value();
    QDialog::accept();
}

} // namespace WaveMonitor
