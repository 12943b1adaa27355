#pragma once

#include <QString>

class SampleTimes;

namespace WaveMonitor {
class WaveMonitorWidget;
}

/// In words where a monitor's cursor stands: its sample, how far it is from the active marker with
/// the edges of the selected rows between them, and how far that one is from the next marker.
QString whereabouts(WaveMonitor::WaveMonitorWidget const& monitor, SampleTimes const& times);
