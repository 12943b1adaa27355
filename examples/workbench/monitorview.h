#pragma once

#include <QDomElement>
#include <QList>

namespace WaveMonitor {
class WaveMonitorWidget;
}

/// How a user looks at a capture in a monitor: what neither the samples nor the rows tell.
struct MonitorView
{
    int cursor = 0;     ///< Sample.
    QList<int> markers; ///< Samples, the active marker's first.
    double zoom = 0;    ///< Rate; 0 leaves the monitor's.
    int scroll = 0;     ///< Of the waves, in pixels; in no document.

    static MonitorView of(WaveMonitor::WaveMonitorWidget const& monitor);

    /// Shows it again. Markers behind the end of the capture are left out.
    void show(WaveMonitor::WaveMonitorWidget& monitor) const;

    /// The element "View", made in the document but not placed in it.
    QDomElement save(QDomDocument& document) const;
    static MonitorView read(QDomElement const& view);
};

/// The name of that element within a "Window".
extern QString const ViewTag;
