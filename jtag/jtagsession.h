#pragma once

#include "jtag/jtagclient.h"
#include "jtag/jtagserver.h"
#include "jtag/requestrouter.h"

#include <QList>
#include <QMap>
#include <QPair>

class QProcess;

namespace VEK {

/// The one object through which the program talks to JTAG servers. It keeps the live connections,
/// selects the one that requests go to, numbers the requests and routes each reply to the callback
/// of its request. Callers hand over a request and a callback, and go back to the event loop; no
/// request has a time limit. Main thread only. Servers are started and stopped here too (in
/// serverstartup.cpp); those calls block.
///
/// In remote mode the operations work on the `...ForNlc` family: TCP instead of local sockets.
class JtagSession : public QObject
{
    Q_OBJECT

public:
    // The records' names are part of the vocabulary, though of a form that the language reserves.
    /// A live local connection. The client is a child of the session.
    struct _Session : JtagServer
    {
        JtagClient* client = nullptr;
    };

    /// A live remote connection. The client is a child of the session.
    struct _SessionNlc : JtagServer
    {
        JtagClientNlc* client = nullptr;
    };

    /// The session. Created at the first call, touches no server then, and is never deleted.
    static JtagSession* shared();

    // Requests

    /// Sends a request. With a callback it gets a `request_id`, and the callback is called with the
    /// reply, at most once; without one it is fire-and-forget. Dropped silently, its callback kept,
    /// while no connection is selected or the selected one is closed.
    void createTask(JtagRequest const& request, TaskCallback const& callback);

    /// The same with a `data_request_id`: the callback stays until it says that it is finished.
    void createDataTask(JtagRequest const& request, DataTaskCallback const& callback);

    /// Forgets all callbacks: replies on their way are dropped, and ids start at 0 again. May be
    /// called from inside a callback.
    void cancelAll();

    /// The same, but ids go on: a reply on its way has an id that no later request gets, so that it
    /// is never taken for the reply to another one.
    void abandonAll();

    /// What the server owes.
    using ReplyDebt = RequestRouter::Debt;
    ReplyDebt replyDebt() const;

    // Connections

    /// Selects the connection of a cable name; the TR7QZ and WINUSB cables are served by the FT2CH
    /// connection too. False, with nothing changed, if there is none or `name` is empty. In worker
    /// mode the name goes out with `switchServer` instead.
    bool connectServer(QString const& name);
    bool connectServerForNlc(QString const& name);

    /// Makes a connection the current one, a null client included.
    void switchSession(_Session const& session);
    void switchSessionForNlc(_SessionNlc const& session);

    bool hasConnections() const;

    /// Connects the current client to an address (unless it is connected) and waits. False as well
    /// if no client is current.
    bool validateConnnection(QString const& address, unsigned short port, int msecs);
    bool validateConnnectionForNlc(QString const& address, unsigned short port, int msecs);

    /// Forgets all connections and callbacks. The sockets stay open and the current client stays
    /// current: they live on as children of the session.
    void disconnectServer();
    void disconnectServerForNlc();

    /// Name and `channel + cable * 2` of each connection.
    QList<QPair<QString, int>> serverList() const;
    QList<QPair<QString, int>> serverListForNlc() const;

    /// A hook for diagnostics; does nothing with its word.
    void diagnosis(QString const& word) const;

    // Server processes. A server is looked for in "../../Programmer/bin", relative to the program.

    /// Starts both local servers; the result holds those that started.
    QList<JtagServer> initLocalServerList();

    /// Starts the one server of a cable for a batch run. Both USB cables get the FT2CH server;
    /// empty if it did not start, and for an unknown cable.
    QList<JtagServer> initLocalServerListForveksh(CABLE cable, CHANNEL channel);

    /// Starts the server of the remote family. `port` is not used: the record's port is fixed.
    QList<JtagServer> initNlcServerList(QString host, unsigned short port);

    /// Opens a connection and adds it to the list. Blocks for up to 64 rounds of 30 ms plus
    /// `msecs`, since a server that was just started is not listening yet.
    bool createSession(JtagServer const& server, int msecs);
    bool createSessionForNlc(JtagServer const& server, int msecs);

    /// Adds a connection whose client the caller made, and keeps alive.
    void setSession(JtagServer server, JtagClient* client);
    void setSessionForNlc(JtagServer server, JtagClientNlc* client);

    /// Opens a connection to each server, and stops the process of each that does not answer.
    void validateServerList(QList<JtagServer> const& list);

    /// Drops everything, starts both local servers and connects to them. False if none answered.
    bool connectLocalServer();

    /// The same for the remote family; shows why it failed. Set remote mode first. The server's
    /// port is fixed, whatever `port` says.
    bool connectNlcServer(QString host, QString port);

    /// Kills and forgets all started servers, waiting up to 3 s for each.
    void clearAllServerMap();

    /// The same for one; a name without a process is ignored.
    void clearServerForMap(QString name);

    /// The started servers by name. The processes belong to the session.
    QMap<QString, QProcess*> serverMap() const;

    // What a host sets. Everything is off and empty at first, and nothing here changes it.

    /// Works with the remote family from now on.
    void setNlcMode(bool on);

    /// Host and port as the message about a lost remote connection names them.
    void setNlcAddress(QString const& host, QString const& port);

    /// Hands packs and cable names to a worker, through `createData` and `switchServer`.
    void setWorkerMode(bool on);

    QString nlcHostText() const;
    QString nlcPortText() const;

    /// 1 makes the programmer work through the remote host; 2 at first.
    int kindOfConnection() const;
    void setKindOfConnection(int kind);

    /// Watches the current remote client: when its connection is lost, `onStateChanged` tells.
    void startNlcStateMonitor();

    /// Takes the watch off the current remote client again, its own `onStateChanged` included.
    void clearNlcStateMonitor();

    /// Shows that the remote server is gone.
    void showDisconnected() const;

Q_SIGNALS:
    void switchServer(QString);
    void createData(CmdPack);
    void closeThread();
    void unconnect();
    void disConnectServer();
    /// A server has closed the connection of that name, which is still in the list. A connection
    /// that `disconnectServer` has forgotten is no loss.
    void connectionLost(QString const& name);

public Q_SLOTS:
    /// Routes a reply by its `request_id`, else by its `data_request_id`. Without either, or with
    /// an id that nobody holds, the pack is dropped.
    void dataReturned(CmdPack const& pack);

    /// Runs `onDataReady` of the current client, if there is one.
    void onDateReceived();

    /// On `UnconnectedState` shows that the remote server is gone, and emits `unconnect`.
    void onStateChanged(QAbstractSocket::SocketState state);

private:
    JtagSession() = default;

    void send(CmdPack const& pack);
    template <typename Session, typename Client>
    void tellLoss(QList<Session> const& connections, Client const* closed);
    void startServer(QString const& program, QStringList const& arguments, JtagServer const& server,
                     QList<JtagServer>& started);

    RequestRouter router;
    JtagClient* client = nullptr;
    JtagClientNlc* nlcClient = nullptr;
    QList<_Session> connections;
    QList<_SessionNlc> nlcConnections;
    bool nlcMode = false;
    QMap<QString, QProcess*> serverProcesses;
    QList<QProcess*> looseProcesses; // not in the map: never started, or replaced by a later start
    int connectionKind = 2;
    QString nlcHost;
    QString nlcPort;
    bool workerMode = false;
};

template <typename Session, typename Client>
void JtagSession::tellLoss(QList<Session> const& connections, Client const* closed)
{
    for (Session const& session : connections) {
        if (session.client == closed) {
            Q_EMIT connectionLost(QString(session.name)); // a copy: a receiver may clear the list
            return;
        }
    }
}

} // namespace VEK
