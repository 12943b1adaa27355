#pragma once

#include <QAction>

namespace WaveMonitor {
class WaveMonitorWidget;
} // namespace WaveMonitor

/// The menu entry that shows the strip of the whole capture above the rulers of all monitors, or
/// hides it. It is remembered; at first the strip is shown.
class OverviewAction : public QAction
{
public:
    explicit OverviewAction(QObject* parent);

    /// Shows the monitor's strip as the entry says, from now on.
    void take(WaveMonitor::WaveMonitorWidget* monitor);
};
