#pragma once

#include "wavemonitor/wavemonitorwidget.h"

#include <QDomDocument>
#include <QList>
#include <QString>

/// A session in one `.rsx` file: the configuration as its own reader takes it, and behind its cores
/// a "Window" element for each core that has a capture, with how it was looked at in a "View".

/// A core's capture.
struct SavedWindow
{
    int core = 0;
    QDomElement window;
    bool hasView = false; ///< Sessions of earlier versions don't have it.
    WaveMonitor::ViewState view;
};

/// False, with an error, when the file can't be written; what stood there before stays whole.
/// `configuration` is the text of the configuration file.
bool writeSession(QString const& path, QByteArray const& configuration,
                  QList<SavedWindow> const& windows, QString& error);

/// The captures of a session file; empty for a plain configuration file. They live as long as
/// `document`.
QList<SavedWindow> readSession(QString const& path, QDomDocument& document);

/// One window out of `count` that lie one after the other in a "Window" element, as an element of
/// its own with the same layout.
QDomElement singleWindow(QDomElement const& all, int window, int count);
