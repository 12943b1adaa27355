#include "jtag/jtagsession.h"

#include "model/alert.h"

namespace VEK {
namespace {

/// The first connection that serves a cable, or null.
template <typename Session>
Session const* findSession(QList<Session> const& connections, QString const& name)
{
    bool const newerUsb = name == Server::Tr7qzName || name == Server::WinUsbName;
    for (Session const& session : connections) {
        if (session.name == name || (newerUsb && session.name == Server::Ft2chName))
            return &session;
    }
    return nullptr;
}

template <typename Client>
void select(JtagSession* session, Client*& current, Client* next)
{
    if (current)
        QObject::disconnect(current, &Client::cmdReceived, session, &JtagSession::dataReturned);
    current = next;
    if (current)
        QObject::connect(current, &Client::cmdReceived, session, &JtagSession::dataReturned);
}

template <typename Session>
QList<QPair<QString, int>> namesAndNumbers(QList<Session> const& connections)
{
    QList<QPair<QString, int>> servers;
    for (Session const& session : connections)
        servers.append({session.name, session.channel + session.cable * 2});
    return servers;
}

} // namespace

JtagSession* JtagSession::shared()
{
    static JtagSession* const session = new JtagSession;
    return session;
}

void JtagSession::createTask(JtagRequest const& request, TaskCallback const& callback)
{
    send(router.numbered(request.pack, callback));
}

void JtagSession::createDataTask(JtagRequest const& request, DataTaskCallback const& callback)
{
    send(router.numbered(request.pack, callback));
}

void JtagSession::send(CmdPack const& pack)
{
    if (workerMode)
        emit createData(pack);
    else if (nlcMode && nlcClient)
        nlcClient->sendCmdPack(pack);
    else if (!nlcMode && client)
        client->sendCmdPack(pack);
}

void JtagSession::cancelAll()
{
    router.forgetAll(false);
}

void JtagSession::abandonAll()
{
    router.forgetAll(true);
}

JtagSession::ReplyDebt JtagSession::replyDebt() const
{
    return router.debt();
}

void JtagSession::dataReturned(CmdPack const& pack)
{
    router.route(pack);
}

bool JtagSession::connectServer(QString const& name)
{
    if (workerMode) {
        emit switchServer(name);
        return true;
    }
    if (name.isEmpty())
        return false;
    if (nlcMode)
        return connectServerForNlc(name);
    _Session const* const found = findSession(connections, name);
    if (found)
        switchSession(*found);
    return found;
}

bool JtagSession::connectServerForNlc(QString const& name)
{
    _SessionNlc const* const found = findSession(nlcConnections, name);
    if (found)
        switchSessionForNlc(*found);
    return found;
}

void JtagSession::switchSession(_Session const& session)
{
    router.forgetWrites();
    select(this, client, session.client);
}

void JtagSession::switchSessionForNlc(_SessionNlc const& session)
{
    router.forgetWrites();
    select(this, nlcClient, session.client);
}

bool JtagSession::hasConnections() const
{
    return nlcMode ? !nlcConnections.isEmpty() : !connections.isEmpty();
}

bool JtagSession::validateConnnection(QString const& address, unsigned short port, int msecs)
{
    if (nlcMode)
        return validateConnnectionForNlc(address, port, msecs);
    if (!client)
        return false;
    if (client->state() == QLocalSocket::UnconnectedState)
        client->connectToServer(address, QIODevice::ReadWrite);
    return client->waitForConnected(msecs);
}

bool JtagSession::validateConnnectionForNlc(QString const& address, unsigned short port, int msecs)
{
    if (!nlcClient)
        return false;
    if (nlcClient->state() == QAbstractSocket::UnconnectedState)
        nlcClient->connectToHost(address, port, QIODevice::ReadWrite);
    return nlcClient->waitForConnected(msecs);
}

void JtagSession::disconnectServer()
{
    connections.clear();
    disconnectServerForNlc();
}

void JtagSession::disconnectServerForNlc()
{
    nlcConnections.clear();
    emit disConnectServer();
    cancelAll();
}

QList<QPair<QString, int>> JtagSession::serverList() const
{
    return nlcMode ? serverListForNlc() : namesAndNumbers(connections);
}

QList<QPair<QString, int>> JtagSession::serverListForNlc() const
{
    return namesAndNumbers(nlcConnections);
}

void JtagSession::diagnosis(QString const&) const
{}

void JtagSession::setNlcMode(bool on)
{
    nlcMode = on;
}

void JtagSession::setNlcAddress(QString const& host, QString const& port)
{
    nlcHost = host;
    nlcPort = port;
}

void JtagSession::setWorkerMode(bool on)
{
    workerMode = on;
}

QString JtagSession::nlcHostText() const
{
    return nlcHost;
}

QString JtagSession::nlcPortText() const
{
    return nlcPort;
}

int JtagSession::kindOfConnection() const
{
    return connectionKind;
}

void JtagSession::setKindOfConnection(int kind)
{
    connectionKind = kind;
}

void JtagSession::startNlcStateMonitor()
{
    if (nlcClient)
        connect(nlcClient, &JtagClientNlc::stateChanged, this, &JtagSession::onStateChanged,
                Qt::UniqueConnection);
}

void JtagSession::clearNlcStateMonitor()
{
    if (!nlcClient)
        return;
    disconnect(nlcClient, &JtagClientNlc::stateChanged, nlcClient, &JtagClientNlc::onStateChanged);
    disconnect(nlcClient, &JtagClientNlc::stateChanged, this, &JtagSession::onStateChanged);
}

void JtagSession::showDisconnected() const
{
    // No blank behind the closing quote mark: the message has always read so.
    showAlert({AlertKind::Warning, QStringLiteral("Warning"),
               QLatin1String("Connection to the remote server via URL \"TCP:") + nlcHost +
                   QLatin1Char(':') + nlcPort +
                   QLatin1String("\"has been disconnected. Please check the network connection and "
                                 "make sure the remote server is running on the target.")});
}

void JtagSession::onDateReceived()
{
    if (nlcMode && nlcClient)
        nlcClient->onDataReady();
    else if (!nlcMode && client)
        client->onDataReady();
}

void JtagSession::onStateChanged(QAbstractSocket::SocketState state)
{
    if (state != QAbstractSocket::UnconnectedState)
        return;
    showDisconnected();
    emit unconnect();
}

} // namespace VEK
