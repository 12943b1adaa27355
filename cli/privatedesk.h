#pragma once

#include "simulator/server.h"

#include <QByteArray>
#include <QTemporaryDir>

namespace VEK::Cli {

/// A server in this process, at the cable's socket in a folder of its own: while it is there runs
/// that attach find it, and no other server or cable of this machine. Takes the place of TMPDIR for
/// that time.
class PrivateDesk
{
public:
    /// The handler must outlive this object. Throws a Failure.
    PrivateDesk(Simulator::RequestHandler& handler, QString const& cable);
    ~PrivateDesk();

private:
    QTemporaryDir m_folder;
    QByteArray m_before;
    Simulator::BridgeServer m_server;
};

} // namespace VEK::Cli
