#include "wavemonitor/images.h"

#include <QtGlobal>

/// Outside of any namespace, as the macro demands.
static void initWaveMonitorResources()
{
    Q_INIT_RESOURCE(wavemonitor);
}

namespace WaveMonitor {

void initImages()
{
    initWaveMonitorResources();
}

} // namespace WaveMonitor
