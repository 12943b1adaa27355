#pragma once

#include "wavemonitor/wavemonitorwidget.h"

#include <QDomElement>

/// How a capture was looked at, as an element in its "Window" element of a session file.

/// Takes the place of the one that is there.
void saveView(WaveMonitor::ViewState const& view, QDomElement window);

/// False when there is none, as in sessions of earlier versions and of the command line.
bool restoreView(QDomElement const& window, WaveMonitor::ViewState& view);
