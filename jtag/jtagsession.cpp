#include "jtag/jtagsession.h"

#include "model/alert.h"

#include <utility>

namespace VEK {
namespace {

using Protocol::Key::DataRequestId;
using Protocol::Key::RequestId;

/// Stores a callback under the lowest id that is free. The ids in the map are always `firstId` and
/// those behind it, as many as tasks were ever in flight together, so the lowest free one is either
/// that of an empty entry or the next one.
template <typename Callback>
unsigned int store(QMap<unsigned int, Callback>& callbacks, FreeIds& freeIds, unsigned int firstId,
                   Callback callback)
{
    unsigned int id = firstId + unsigned(callbacks.size());
    if (!freeIds.empty()) {
        id = freeIds.top();
        freeIds.pop();
    }
    callbacks[id] = std::move(callback);
    return id;
}

/// Moves a callback out, leaving an empty one. An id that is not there leaves the map as it is: a
/// new entry would change the ids to come.
template <typename Callback>
Callback release(QMap<unsigned int, Callback>& callbacks, FreeIds& freeIds, unsigned int id)
{
    auto const entry = callbacks.find(id);
    if (entry == callbacks.end() || !entry.value())
        return Callback();
    freeIds.push(id);
    return std::exchange(entry.value(), Callback());
}

CmdPack without(QString const& key, CmdPack const& pack)
{
    CmdPack rest;
    for (auto entry = pack.begin(); entry != pack.end(); ++entry) {
        if (entry.key() != key)
            rest.insert(rest.cend(), entry.key(), entry.value());
    }
    return rest;
}

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
    CmdPack pack = request.pack;
    noteRequest(bool(callback));
    if (TaskCallback stored = callback) {
        QMutexLocker const locker(&taskLock);
        pack.insert(RequestId, store(taskCallbacks, freeTaskIds, firstTaskId, std::move(stored)));
    }
    send(pack);
}

void JtagSession::createDataTask(JtagRequest const& request, DataTaskCallback const& callback)
{
    CmdPack pack = request.pack;
    noteRequest(bool(callback));
    if (DataTaskCallback stored = callback) {
        QMutexLocker const locker(&dataTaskLock);
        pack.insert(DataRequestId,
                    store(dataTaskCallbacks, freeDataTaskIds, firstDataTaskId, std::move(stored)));
    }
    send(pack);
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
    forgetAll(false);
}

void JtagSession::abandonAll()
{
    forgetAll(true);
}

void JtagSession::forgetAll(bool idsGoOn)
{
    // The old maps die outside the locks, since a callback may own objects with any destructor.
    QMap<unsigned int, TaskCallback> tasks;
    QMap<unsigned int, DataTaskCallback> dataTasks;
    {
        QMutexLocker const locker(&taskLock);
        tasks.swap(taskCallbacks);
        firstTaskId = idsGoOn ? firstTaskId + unsigned(tasks.size()) : 0;
        freeTaskIds = {};
    }
    QMutexLocker const locker(&dataTaskLock);
    dataTasks.swap(dataTaskCallbacks);
    firstDataTaskId = idsGoOn ? firstDataTaskId + unsigned(dataTasks.size()) : 0;
    freeDataTaskIds = {};
    ++cancelCount;
}

int JtagSession::owedReplies() const
{
    int owed = 0;
    {
        QMutexLocker const locker(&taskLock);
        owed = taskCallbacks.size() - int(freeTaskIds.size());
    }
    QMutexLocker const locker(&dataTaskLock);
    return owed + dataTaskCallbacks.size() - int(freeDataTaskIds.size());
}

void JtagSession::noteRequest(bool hasReply)
{
    if (!hasReply)
        ++writesSinceReply;
    else if (owedReplies() == 0)
        silence.start();
}

JtagSession::ReplyDebt JtagSession::replyDebt() const
{
    int const owed = owedReplies();
    return {owed, writesSinceReply, owed > 0 ? silence.elapsed() : 0};
}

void JtagSession::dataReturned(CmdPack const& pack)
{
    writesSinceReply = 0;
    silence.start();
    auto const task = pack.constFind(RequestId);
    if (task != pack.constEnd())
        return returnToTask(task->toUInt(), pack);
    auto const dataTask = pack.constFind(DataRequestId);
    if (dataTask != pack.constEnd())
        returnToDataTask(dataTask->toUInt(), pack);
}

void JtagSession::returnToTask(unsigned int id, CmdPack const& pack)
{
    TaskCallback callback;
    {
        QMutexLocker const locker(&taskLock);
        callback = release(taskCallbacks, freeTaskIds, id);
    }
    if (callback)
        callback(without(RequestId, pack));
}

void JtagSession::returnToDataTask(unsigned int id, CmdPack const& pack)
{
    DataTaskCallback callback; // a copy: the entry stays for further replies
    unsigned int cancelsBefore = 0;
    {
        QMutexLocker const locker(&dataTaskLock);
        callback = dataTaskCallbacks.value(id);
        cancelsBefore = cancelCount;
    }
    if (!callback)
        return;
    bool finished = false;
    callback(without(DataRequestId, pack), &finished);
    if (!finished)
        return;
    DataTaskCallback done; // dies outside the lock
    QMutexLocker const locker(&dataTaskLock);
    // After a cancelAll from inside the callback the id is gone, or is another request's by now.
    if (cancelCount == cancelsBefore)
        done = release(dataTaskCallbacks, freeDataTaskIds, id);
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
    writesSinceReply = 0;
    select(this, client, session.client);
}

void JtagSession::switchSessionForNlc(_SessionNlc const& session)
{
    writesSinceReply = 0;
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
