#include "workbench/overviewaction.h"

#include "wavemonitor/wavemonitorwidget.h"

#include <QSettings>

using WaveMonitor::WaveMonitorWidget;

namespace {

QString const OverviewKey = QStringLiteral("overview");

} // namespace

OverviewAction::OverviewAction(QObject* parent) : QAction(QStringLiteral("&Overview"), parent)
{
    setCheckable(true);
    setChecked(QSettings().value(OverviewKey, true).toBool());
    connect(this, &QAction::toggled, this,
            [](bool shown) { QSettings().setValue(OverviewKey, shown); });
}

void OverviewAction::take(WaveMonitorWidget* monitor)
{
    monitor->setOverviewVisible(isChecked());
    connect(this, &QAction::toggled, monitor, &WaveMonitorWidget::setOverviewVisible);
}
