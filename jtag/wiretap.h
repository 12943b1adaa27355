#pragma once

#include <QByteArray>

#include <functional>

namespace VEK {

/// What a tap is told of. The values stand in recordings.
enum class WireEvent : char {
    Request = '>', ///< A frame to the server.
    Reply = '<',   ///< A frame from the server, also one that holds no message.
    Lost = 'x'     ///< The server has closed the connection; there is no frame.
};

/// Is handed each frame of a connection as it is on the wire, length field included: a request
/// before it is written, a reply before it is delivered. Called from inside sending and receiving,
/// so it must neither send nor run an event loop.
using WireTap = std::function<void(WireEvent event, QByteArray const& frame)>;

} // namespace VEK
