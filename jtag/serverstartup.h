#pragma once

#include "jtag/jtagserver.h"
#include "jtag/protocol.h"

#include <QList>
#include <QMap>

class QProcess;

namespace VEK {

/// Path of a server's program in the install root of the running program.
QString serverProgramPath(QString const& program);

/// The local server that is started for a cable of this name.
JtagServer localServer(QString const& cable);

/// Starts the local server of a cable, for a host that keeps its processes itself. Unlike the
/// session's lists it knows a server of its own for TR7QZ. Waits up to 5 s for the start; on
/// success the process is put into `processes` under the server's name (the caller deletes it) and
/// the result holds the one record. The result is empty if the process did not start, and for any
/// other cable value.
QList<JtagServer> initServerList(QMap<QString, QProcess*>& processes, CABLE cable, CHANNEL channel);

} // namespace VEK
