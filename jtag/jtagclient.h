#pragma once

#include "jtag/protocol.h"
#include "jtag/wiretap.h"

#include <QLocalSocket>
#include <QTcpSocket>

/// The two sockets that carry frames. They differ in their base class only; both belong to the main
/// thread and do all their work in its event loop, never inside `sendCmdPack`.
namespace VEK {

/// Connection to a local server, by its local socket name.
class JtagClient : public QLocalSocket
{
    Q_OBJECT

public:
    explicit JtagClient(QObject* parent = nullptr);

    /// Writes `pack` as one frame with one call, and flushes. While the socket is not connected the
    /// pack is dropped; what becomes of a written one is not looked at. Waits only while tens of
    /// megabytes are still to be taken by the server: until it takes them, or is gone.
    void sendCmdPack(CmdPack const& pack);

    /// Length of the frame body that is awaited, 0 while the length itself is.
    quint32 blockSize = 0;

    /// Is handed all frames, where it is set.
    WireTap tap;

public Q_SLOTS:
    /// Takes at most one frame off the socket, arms itself for the next one, and emits its message.
    /// The receiver may run an event loop: later frames then arrive inside it. A frame that holds
    /// no message is dropped.
    void onDataReady();

Q_SIGNALS:
    void cmdReceived(CmdPack);
};

/// Connection to a remote server, by host and port. Members as in JtagClient.
class JtagClientNlc : public QTcpSocket
{
    Q_OBJECT

public:
    explicit JtagClientNlc(QObject* parent = nullptr);

    void sendCmdPack(CmdPack const& pack);

    quint32 blockSize = 0;
    WireTap tap;

public Q_SLOTS:
    void onDataReady();

    /// On `UnconnectedState` shows that the remote server is gone, with the host and port of the
    /// shared session. For a host that watches a client of its own; nothing is connected to it.
    void onStateChanged(QAbstractSocket::SocketState state);

Q_SIGNALS:
    void cmdReceived(CmdPack);
};

} // namespace VEK
