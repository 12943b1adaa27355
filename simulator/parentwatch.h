#pragma once

#include <QTimer>

#include <sys/types.h>

namespace VEK::Simulator {

/// Ends the process when the one that started it has gone, so that no server outlives its host.
///
/// Watches the parent's process, and looks at its number from time to time, rather than asking for
/// a signal: that signal comes when the parent's thread ends, which need not be the parent's end.
class ParentWatch : public QObject
{
    Q_OBJECT

public:
    /// To be made first in `main`: a parent that goes later is noticed.
    ParentWatch();

    /// Whether the parent was gone even before this object was made. Told by the pipes that a host
    /// gives its server, for there is no parent left to ask.
    static bool isOrphan();

    /// Begins to look; quits the application.
    void start();

private:
    pid_t m_parent;
    QTimer m_timer;
};

} // namespace VEK::Simulator
