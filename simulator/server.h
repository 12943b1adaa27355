#pragma once

#include "simulator/bench.h"
#include "simulator/requesthandler.h"

#include <QLocalServer>
#include <QPointer>
#include <QTcpServer>

namespace VEK::Simulator {

/// Serves the protocol on a socket, any number of clients. All share the one handler.
class BridgeServer : public QObject
{
    Q_OBJECT

public:
    /// The handler must outlive this object.
    BridgeServer(RequestHandler& handler, Faults const& faults);
    ~BridgeServer() override;

    /// Local socket of this name under the temporary folder.
    bool listenLocal(QString const& name, QString& error);
    /// TCP, on the loopback address only.
    bool listenTcp(quint16 port, QString& error);
    /// TCP for other machines, on an address and port such as "0.0.0.0:36547", "[::1]:4000" or
    /// "board-3:4000"; port 0 is any free one. One client at a time: a second one is refused, as by
    /// a board that has one user. Both are told, and the address first of all.
    bool listenAlone(QString const& where, QString& error);

    /// Serves one request and applies the faults that count requests. True when there is a `reply`
    /// to be sent; `closes` tells that the connection ends with this request.
    bool serve(CmdPack const& request, CmdPack& reply, bool& closes);
    /// Whether the process ends with the request that was served last.
    bool dies() const { return m_faults.dieAfter > 0 && m_requests >= m_faults.dieAfter; }
    /// Whether the reply to it must not be readable.
    bool garbles() const { return m_faults.garbledFrom > 0 && m_requests >= m_faults.garbledFrom; }
    Faults const& faults() const { return m_faults; }

Q_SIGNALS:
    /// For those who started the server.
    void told(QString const& text);
    /// A client that has asked for something has gone.
    void clientLeft();

private:
    void onTcpConnection();
    void serveAlone(QTcpSocket* socket);

    RequestHandler& m_handler;
    Faults const m_faults;
    int m_requests = 0;
    QLocalServer m_local;
    QTcpServer m_tcp;
    bool m_isAlone = false;
    QPointer<QObject> m_client; ///< The only one, when there is to be one.
};

} // namespace VEK::Simulator
