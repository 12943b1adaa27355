#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QList>
#include <QString>

namespace VEK {

/// A core's capture in a session file.
struct SessionWindow
{
    int core = 0; ///< Its place among the cores.
    QDomElement window;
};

/// A session in one `.rsx` file: the configuration as its own reader takes it, and behind its cores
/// a "Window" element for each core that has a capture, which holds all windows of the core one
/// after the other. `configuration` is the text of the configuration file; `note` becomes a comment
/// in front of all, none for an empty text. False, with an error, when the file can't be written;
/// what stood there before stays whole.
bool writeSession(QString const& path, QByteArray const& configuration,
                  QList<SessionWindow> const& windows, QString const& note, QString& error);

/// The captures of a session file; empty for a plain configuration file. They live as long as
/// `document`.
QList<SessionWindow> readSession(QString const& path, QDomDocument& document);

/// One window out of `count` that lie one after the other in a "Window" element, as an element of
/// its own with the same layout.
QDomElement singleWindow(QDomElement const& all, int window, int count);

} // namespace VEK
