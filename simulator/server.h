#pragma once

#include "simulator/bridge.h"

#include <QLocalServer>
#include <QTcpServer>

namespace VEK::Simulator {

/// Serves the protocol on a socket, any number of clients. All share the one desk.
class BridgeServer : public QObject
{
    Q_OBJECT

public:
    /// The bridge must outlive this object.
    BridgeServer(Bridge& bridge, Faults const& faults);
    ~BridgeServer() override;

    /// Local socket of this name under the temporary folder.
    bool listenLocal(QString const& name, QString& error);
    /// TCP, on the loopback address only.
    bool listenTcp(quint16 port, QString& error);

    /// Serves one request and applies the faults that count requests. True when there is a `reply`
    /// to be sent; `closes` tells that the connection ends with this request.
    bool serve(CmdPack const& request, CmdPack& reply, bool& closes);
    /// Whether the process ends with the request that was served last.
    bool dies() const { return m_faults.dieAfter > 0 && m_requests >= m_faults.dieAfter; }
    /// Whether the reply to it must not be readable.
    bool garbles() const { return m_faults.garbledFrom > 0 && m_requests >= m_faults.garbledFrom; }
    Faults const& faults() const { return m_faults; }

private:
    Bridge& m_bridge;
    Faults const m_faults;
    int m_requests = 0;
    QLocalServer m_local;
    QTcpServer m_tcp;
};

} // namespace VEK::Simulator
