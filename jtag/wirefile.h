#pragma once

#include "jtag/wireblocks.h"
#include "jtag/wiretap.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// Recordings of the wire, files that end in .vekwire: every frame between a host and its JTAG
/// server, with direction and time. docs/formats.md describes them byte by byte.
namespace VEK {

/// What the head of a recording says. All of it is text for people but `cable`.
struct WireHeader
{
    QString program; ///< That recorded, with its version.
    QDateTime started;
    QString cable;  ///< The cable's name, as the server of a cable is chosen by.
    QString socket; ///< "local" or "tcp".
};

/// One thing that happened on the wire.
struct WireFrame
{
    WireEvent event = WireEvent::Request;
    qint64 time = 0;  ///< us since the recording began.
    QByteArray bytes; ///< The frame with its length field; empty for `Lost`.
};

/// Writes a recording. All functions say whether the device took it.
class WireWriter
{
public:
    /// `device` is open for writing, and must outlive this object.
    explicit WireWriter(QIODevice& device) : m_blocks(device) {}

    bool begin(WireHeader const& header);
    bool add(WireFrame const& frame);
    /// Has all that was added on the device, which else happens in blocks.
    bool flush() { return m_blocks.flush(); }
    /// Ends the recording; one without this counts as cut.
    bool finish() { return m_blocks.finish(); }

private:
    WireBlockWriter m_blocks;
};

/// Reads a recording, a frame at a time, and never takes more memory than the largest frame needs.
class WireReader
{
public:
    enum class State {
        Ok,     ///< Another frame.
        End,    ///< All frames were read, and nothing is missing.
        Cut,    ///< The frames that were read are right, but the rest is missing.
        Refused ///< This is no recording, or it was altered, or is of another version.
    };

    /// `device` is open for reading, and must outlive this object.
    explicit WireReader(QIODevice& device);

    /// Reads the head: Ok, Cut or Refused. To be called first, and once.
    State begin(WireHeader& header);
    /// The next frame.
    State next(WireFrame& frame);

    /// What is wrong, for a person, after Cut and Refused: "it is empty", and the like.
    QString error() const { return m_error; }

private:
    State fail(WireBlockReader::State state);
    State refuse(QString const& error);
    bool readHead(QByteArray& head) const;

    QIODevice& m_device;
    WireBlockReader m_blocks;
    QString m_error;
    qint64 m_frames = 0;
};

} // namespace VEK
