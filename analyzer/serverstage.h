#pragma once

#include "jtag/cablehold.h"
#include "jtag/protocol.h"

#include <QString>

#include <memory>

namespace VEK {

/// Outcome of starting the server of a run.
struct ServerStage
{
    int exitStatus = 0;              ///< 0, or the status with which the process must end at once.
    QString serverName;              ///< The server that the run works with.
    std::shared_ptr<CableHold> lock; ///< Keeps other runs from that server.
};

/// Starts the local server of a cable and connects to it; a cable that another run is at counts as
/// one whose server does not answer. Says so when it can't; then nothing that was started is left
/// running but what `JtagSession` itself keeps.
ServerStage startServer(CABLE cable, CHANNEL channel);

} // namespace VEK
