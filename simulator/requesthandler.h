#pragma once

#include "jtag/protocol.h"

namespace VEK::Simulator {

/// What stands behind the sockets of a server.
class RequestHandler
{
public:
    virtual ~RequestHandler() = default;

    /// Serves one request. True when there is a `reply`; it carries the ids of the request.
    virtual bool serve(CmdPack const& request, CmdPack& reply) = 0;

    /// Whether the connection ends with the request that was served last.
    virtual bool closes() const { return false; }
};

} // namespace VEK::Simulator
