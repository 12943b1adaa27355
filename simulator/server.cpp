#include "simulator/server.h"

#include "simulator/connection.h"
#include "simulator/hostwatch.h"
#include "simulator/listen.h"

#include <QLocalSocket>
#include <QTcpSocket>

namespace VEK::Simulator {

BridgeServer::BridgeServer(Bridge& bridge, Faults const& faults)
    : m_bridge(bridge), m_faults(faults)
{
    connect(&m_local, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_local.nextPendingConnection())
            new Connection(socket, *this);
    });
    connect(&m_tcp, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = m_tcp.nextPendingConnection())
            new Connection(socket, *this);
    });
}

BridgeServer::~BridgeServer() = default;

bool BridgeServer::listenLocal(QString const& name, QString& error)
{
    if (!Simulator::listenLocal(m_local, name, error))
        return false;
    HostWatch::closeAtEnd(m_local.socketDescriptor());
    return true;
}

bool BridgeServer::listenTcp(quint16 port, QString& error)
{
    if (!m_tcp.listen(QHostAddress(QHostAddress::LocalHost), port)) {
        error = QStringLiteral("port %1: %2").arg(port).arg(m_tcp.errorString());
        return false;
    }
    HostWatch::closeAtEnd(m_tcp.socketDescriptor());
    return true;
}

bool BridgeServer::serve(CmdPack const& request, CmdPack& reply, bool& closes)
{
    QString const oprate = request.value(Protocol::Key::Oprate).toString();
    QString const word = oprate.isEmpty() ? request.value(Protocol::Key::Cmd).toString() : oprate;
    bool const counts = m_faults.of.isEmpty() || m_faults.of == word;
    m_requests += counts;
    closes = counts && m_requests == m_faults.closeAfter;
    bool const hasReply =
        m_bridge.serve(request, reply) && !(counts && m_requests == m_faults.loses);
    if (counts && m_requests == m_faults.shortens) {
        QBitArray data = reply.value(Protocol::Key::Data).toBitArray();
        data.resize(data.size() / 2);
        reply.insert(Protocol::Key::Data, data);
    }
    return hasReply && (m_faults.silentFrom == 0 || m_requests < m_faults.silentFrom);
}

} // namespace VEK::Simulator
