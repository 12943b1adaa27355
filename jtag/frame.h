#pragma once

#include "jtag/protocol.h"

#include <QByteArray>

class QIODevice;

/// Frames around a CmdPack: a 32-bit big-endian body length, then the QDataStream form of
/// QMap<QString, QVariant>. Apart from any socket; both sides of the protocol use it.
namespace VEK {

/// What `takeFrame` found.
enum class FrameState {
    Incomplete, ///< Wait for more bytes; nothing but a whole length field was consumed.
    Complete,   ///< `pack` holds a message.
    Malformed   ///< A whole frame was consumed that holds no message.
};

/// The largest frame body that is waited for, several times any sample memory. Beyond it the length
/// field can only be corrupt; the bytes are then dropped as they come, so that no peer can make the
/// process grow.
constexpr quint32 MaxFrameBody = 64u * 1024 * 1024;

/// A whole frame, length field included, the entries from the greatest key to the smallest.
QByteArray frameFromPack(CmdPack const& pack);

/// Decodes a frame body. Takes the value types of the protocol and the other plain ones, none
/// nested deeper than a list in a list; false, with `pack` empty, for anything else.
bool packFromBody(QByteArray const& body, CmdPack& pack);

/// Takes one frame off `device`. `blockSize` is the caller's state between calls: 0, or the length
/// of the body that is awaited. `bytes`, where it is given, gets the frame that was taken, length
/// field included, unless the result is Incomplete.
FrameState takeFrame(QIODevice& device, quint32& blockSize, CmdPack& pack,
                     QByteArray* bytes = nullptr);

} // namespace VEK
