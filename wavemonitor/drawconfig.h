#pragma once

#include "results/dataformatter.h"

#include <QDomDocument>
#include <QDomElement>

namespace WaveMonitor {

/// What a host keeps to show a monitor again as it was: no captured data.
struct DrawConfig
{
    int coreIndex = 0;
    int windowIndex = 0;
    int nameColumnWidth = 200; ///< In pixels.
    int valueColumnWidth = 100;
    QDomElement layout; ///< The element "Layout"; null leaves a monitor's rows as they are.
    DataFormat::Type dataFormat = DataFormat::Hexadecimal;
    double zoomRate = 1.0;

    /// Holds `layout`: an element dies with the last handle of its document.
    QDomDocument document;
};

} // namespace WaveMonitor
