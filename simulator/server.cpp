#include "simulator/server.h"

#include "simulator/connection.h"
#include "simulator/hostwatch.h"
#include "simulator/listen.h"

#include <QBitArray>
#include <QHostInfo>
#include <QLocalSocket>
#include <QTcpSocket>
#include <QTimer>

namespace VEK::Simulator {
namespace {

constexpr int LeavingTime = 100; ///< ms that a client has to make room for the next one.

QString addressText(QHostAddress const& address, quint16 port)
{
    bool const isV6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    return (isV6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(address.toString())
        .arg(port);
}

} // namespace

BridgeServer::BridgeServer(RequestHandler& handler, Faults const& faults)
    : m_handler(handler), m_faults(faults)
{
    connect(&m_local, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_local.nextPendingConnection())
            new Connection(socket, *this);
    });
    connect(&m_tcp, &QTcpServer::newConnection, this, &BridgeServer::onTcpConnection);
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

bool BridgeServer::listenAlone(QString const& where, QString& error)
{
    int const colon = where.lastIndexOf(QLatin1Char(':'));
    bool ok = false;
    quint16 const port = where.midRef(colon + 1).toUShort(&ok);
    QString host = where.left(colon);
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    QList<QHostAddress> const addresses = QHostInfo::fromName(host).addresses();
    if (colon < 1 || !ok || addresses.isEmpty()) {
        error = QStringLiteral("%1: no ADDRESS:PORT of this machine").arg(where);
        return false;
    }
    if (!m_tcp.listen(addresses.first(), port)) {
        error = QStringLiteral("%1: %2").arg(where, m_tcp.errorString());
        return false;
    }
    m_isAlone = true;
    emit told(QStringLiteral("listening on %1")
                  .arg(addressText(m_tcp.serverAddress(), m_tcp.serverPort())));
    return true;
}

void BridgeServer::onTcpConnection()
{
    while (QTcpSocket* socket = m_tcp.nextPendingConnection()) {
        if (!m_isAlone)
            new Connection(socket, *this);
        else if (m_client) // which may be leaving: its end comes round with the events
            QTimer::singleShot(LeavingTime, socket, [this, socket] { serveAlone(socket); });
        else
            serveAlone(socket);
    }
}

void BridgeServer::serveAlone(QTcpSocket* socket)
{
    QString const peer = addressText(socket->peerAddress(), socket->peerPort());
    if (m_client) {
        emit told(QStringLiteral("refused %1: there is a client already").arg(peer));
        socket->abort();
        socket->deleteLater();
        return;
    }
    emit told(QStringLiteral("serving %1").arg(peer));
    socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1); // its machine may vanish
    m_client = new Connection(socket, *this);
}

bool BridgeServer::serve(CmdPack const& request, CmdPack& reply, bool& closes)
{
    QString const oprate = request.value(Protocol::Key::Oprate).toString();
    QString const word = oprate.isEmpty() ? request.value(Protocol::Key::Cmd).toString() : oprate;
    bool const counts = m_faults.of.isEmpty() || m_faults.of == word;
    m_requests += counts;
    bool const hasReply =
        m_handler.serve(request, reply) && !(counts && m_requests == m_faults.loses);
    closes = m_handler.closes() || (counts && m_requests == m_faults.closeAfter);
    if (counts && m_requests == m_faults.shortens) {
        QBitArray data = reply.value(Protocol::Key::Data).toBitArray();
        data.resize(data.size() / 2);
        reply.insert(Protocol::Key::Data, data);
    }
    return hasReply && (m_faults.silentFrom == 0 || m_requests < m_faults.silentFrom);
}

} // namespace VEK::Simulator
