#include "simulator/bridge.h"
#include "simulator/hostwatch.h"
#include "simulator/log.h"
#include "simulator/server.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <csignal>
#include <cstdio>
#include <cstring>

using namespace VEK;
using namespace VEK::Simulator;

namespace {

/// One program under several names: what the name stands for.
struct Identity
{
    QString socket;
    int port = 0; ///< 0: serves the local socket only.
    QStringList kinds;
};

bool identify(QString const& program, Identity& identity)
{
    QString const ft2ch = QStringLiteral("FT2CH");
    QString const tr7qz = QStringLiteral("TR7QZ");
    if (program == Server::UsbProgram)
        identity = {
            Server::UsbSocket, Server::RemotePort, {ft2ch, tr7qz, QStringLiteral("WINUSB")}};
    else if (program == Server::LptProgram)
        identity = {Server::LptSocket, 0, {QStringLiteral("LPT")}};
    else if (program == Server::Tr7qzProgram)
        identity = {Server::Tr7qzSocket, 0, {tr7qz}};
    else
        return false;
    return true;
}

int refuse(QString const& message)
{
    qCWarning(lcSimulator).noquote() << message;
    return EXIT_FAILURE;
}

/// On standard output, at once also where that is a pipe.
void say(QString const& text)
{
    std::puts(qPrintable(text));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[])
{
    // Before anything else: a server whose host has gone would be in the way of the next one.
    // One that serves other machines belongs to its own, whoever started it.
    bool const isAlone = argc == 3 && std::strcmp(argv[1], "--listen") == 0;
    if (!isAlone && HostWatch::isHostGone())
        return refuse(
            QStringLiteral("standard input is a pipe that nobody holds: no host to serve"));
    if (isAlone)
        std::signal(SIGHUP, SIG_IGN);
    else
        HostWatch::start();
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);

    Identity identity;
    QStringList const arguments = QCoreApplication::arguments();
    QString const program = QFileInfo(arguments.value(0)).fileName();
    if (!identify(program, identity))
        return refuse(QStringLiteral("%1 is no server's name").arg(program));
    bool const isLocal = arguments.mid(1) == QStringList{Server::LocalArgument};
    if (!isLocal && (identity.port == 0 || (!isAlone && arguments.size() > 1)))
        return refuse(
            QStringLiteral("usage: %1 %2%3")
                .arg(program, Server::LocalArgument,
                     identity.port == 0 ? QString() : QStringLiteral(" | --listen ADDRESS:PORT")));

    Bench bench;
    QString error;
    QString const path = findBench(QCoreApplication::applicationDirPath());
    bool const isReadable = path.isEmpty() || readBench(path, bench, error);
    if (!isReadable)
        refuse(error);

    Bridge bridge(bench, identity.kinds);
    BridgeServer server(bridge, bench.faults);
    QObject::connect(&server, &BridgeServer::told, say);
    if (bench.faults.neverListen)
        return QCoreApplication::exec();
    // The host waits for the socket only so long: design and stimulus come afterwards.
    bool const isListening = isLocal   ? server.listenLocal(identity.socket, error)
                             : isAlone ? server.listenAlone(arguments.at(2), error)
                                       : server.listenTcp(quint16(identity.port), error);
    if (!isListening)
        return refuse(error);
    if (!isReadable)
        bridge.setBroken(error);
    else if (!bridge.load(error))
        refuse(error);
    else if (!bridge.warning().isEmpty())
        qCWarning(lcSimulator).noquote() << bridge.warning();
    return QCoreApplication::exec();
}
