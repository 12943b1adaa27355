#include "jtag/serverstartup.h"

#include "jtag/jtagsession.h"
#include "model/alert.h"

#include <QCoreApplication>
#include <QProcess>

#include <memory>
#include <unistd.h>

namespace VEK {
namespace {

JtagServer usbServer(int channel)
{
    return {Server::Ft2chName, Server::UsbSocket, Server::UsbPort, CableFT2CH, channel};
}

JtagServer tr7qzServer(int channel)
{
    return {Server::Tr7qzName, Server::Tr7qzSocket, Server::RemotePort, CableTR7QZ, channel};
}

JtagServer lptServer(int channel)
{
    return {Server::LptName, Server::LptSocket, Server::LptPort, CableLPT, channel};
}

JtagServer remoteServer(QString const& host)
{
    return {Server::Ft2chName, host, Server::RemotePort, CableFT2CH, Channel0};
}

/// Starts a server of the install root; false if it did not start in time.
bool launch(QProcess& process, QString const& program, QStringList const& arguments)
{
    // Nobody reads what a server prints; unread, it would pile up in the process object.
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(serverProgramPath(program), arguments, QIODevice::ReadWrite);
    return process.waitForStarted(Server::StartTimeout);
}

void stop(QProcess& process)
{
    process.kill();
    process.waitForFinished(Server::StopTimeout);
}

/// Waits until `client` is connected, `connect` being what begins an attempt. A socket that is
/// still at an attempt is left at it: Qt would complain about another.
template <typename Client, typename Connect>
bool connectInRounds(Client& client, int msecs, Connect connect)
{
    for (int round = 0; round < Server::ConnectRounds; ++round) {
        usleep(Server::ConnectPause);
        if (client.state() == Client::UnconnectedState)
            connect();
        if (client.waitForConnected(msecs))
            return true;
    }
    return false;
}

void showStartError(QString const& text)
{
    showAlert({AlertKind::Critical, QStringLiteral("Error"), text});
}

} // namespace

QString serverProgramPath(QString const& program)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + Server::Folder +
           QLatin1Char('/') + program;
}

JtagServer localServer(QString const& cable)
{
    return cable == Server::LptName ? lptServer(Channel0) : usbServer(Channel0);
}

QList<JtagServer> initServerList(QMap<QString, QProcess*>& processes, CABLE cable, CHANNEL channel)
{
    QString program;
    JtagServer server;
    switch (cable) {
    case CableFT2CH:
        program = Server::UsbProgram;
        server = usbServer(channel);
        break;
    case CableTR7QZ:
        program = Server::Tr7qzProgram;
        server = tr7qzServer(channel);
        break;
    case CableLPT:
        program = Server::LptProgram;
        server = lptServer(channel);
        break;
    default:
        return {};
    }
    auto process = std::make_unique<QProcess>();
    if (!launch(*process, program, {Server::LocalArgument}))
        return {};
    processes.insert(server.name, process.release());
    return {server};
}

void JtagSession::startServer(QString const& program, QStringList const& arguments,
                              JtagServer const& server, QList<JtagServer>& started)
{
    auto* const process = new QProcess;
    if (!launch(*process, program, arguments)) {
        looseProcesses.append(process);
        return;
    }
    if (QProcess* const replaced = serverProcesses.take(server.name))
        looseProcesses.append(replaced);
    serverProcesses.insert(server.name, process);
    started.append(server);
}

QList<JtagServer> JtagSession::initLocalServerList()
{
    QList<JtagServer> started;
    startServer(Server::UsbProgram, {Server::LocalArgument}, usbServer(Channel0), started);
    startServer(Server::LptProgram, {Server::LocalArgument}, lptServer(Channel0), started);
    return started;
}

QList<JtagServer> JtagSession::initLocalServerListForveksh(CABLE cable, CHANNEL channel)
{
    QList<JtagServer> started;
    if (cable == CableTR7QZ || cable == CableFT2CH)
        startServer(Server::UsbProgram, {Server::LocalArgument}, usbServer(channel), started);
    else if (cable == CableLPT)
        startServer(Server::LptProgram, {Server::LocalArgument}, lptServer(channel), started);
    return started;
}

QList<JtagServer> JtagSession::initNlcServerList(QString host, unsigned short)
{
    QList<JtagServer> started;
    startServer(Server::UsbProgram, {}, remoteServer(host), started);
    return started;
}

bool JtagSession::createSession(JtagServer const& server, int msecs)
{
    if (nlcMode)
        return createSessionForNlc(server, msecs);
    auto socket = std::make_unique<JtagClient>(this);
    auto const connectOnce = [&] { socket->connectToServer(server.address, QIODevice::ReadWrite); };
    connectOnce();
    if (!connectInRounds(*socket, msecs, connectOnce))
        return false;
    setSession(server, socket.release());
    return true;
}

bool JtagSession::createSessionForNlc(JtagServer const& server, int msecs)
{
    auto socket = std::make_unique<JtagClientNlc>(this);
    auto const connectOnce = [&] {
        socket->connectToHost(server.address, quint16(server.port), QIODevice::ReadWrite);
    };
    connectOnce();
    if (!socket->waitForConnected(msecs) && !connectInRounds(*socket, msecs, connectOnce))
        return false;
    setSessionForNlc(server, socket.release());
    return true;
}

void JtagSession::setSession(JtagServer server, JtagClient* client)
{
    connections.append({server, client});
    if (client)
        connect(client, &JtagClient::disconnected, this,
                [this, client] { tellLoss(connections, client); });
}

void JtagSession::setSessionForNlc(JtagServer server, JtagClientNlc* client)
{
    nlcConnections.append({server, client});
    if (client)
        connect(client, &JtagClientNlc::disconnected, this,
                [this, client] { tellLoss(nlcConnections, client); });
}

void JtagSession::validateServerList(QList<JtagServer> const& list)
{
    for (JtagServer const& server : list) {
        if (!createSession(server, Server::ConnectTimeout))
            clearServerForMap(server.name);
    }
}

bool JtagSession::connectLocalServer()
{
    disconnectServer();
    clearAllServerMap();
    validateServerList(initLocalServerList());
    return hasConnections();
}

bool JtagSession::connectNlcServer(QString host, QString port)
{
    disconnectServer();
    clearAllServerMap();
    QList<JtagServer> const servers = initNlcServerList(host, quint16(port.toUInt()));
    if (servers.isEmpty()) {
        showStartError(QStringLiteral("Can not launch JTAG server."));
        return false;
    }
    validateServerList(servers);
    if (hasConnections())
        return true;
    showStartError(QStringLiteral("Can not connect to JTAG server."));
    return false;
}

void JtagSession::clearAllServerMap()
{
    QList<QProcess*> const processes = serverProcesses.values() + looseProcesses;
    for (QProcess* process : processes)
        stop(*process);
    qDeleteAll(processes);
    serverProcesses.clear();
    looseProcesses.clear();
}

void JtagSession::clearServerForMap(QString name)
{
    std::unique_ptr<QProcess> const process(serverProcesses.take(name));
    if (process)
        stop(*process);
}

QMap<QString, QProcess*> JtagSession::serverMap() const
{
    return serverProcesses;
}

} // namespace VEK
