#include "simulator/log.h"
#include "simulator/parentwatch.h"
#include "simulator/server.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <csignal>

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

} // namespace

int main(int argc, char* argv[])
{
    ParentWatch parent;
    if (ParentWatch::isOrphan())
        return EXIT_FAILURE;
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    parent.start();

    Identity identity;
    QStringList const arguments = QCoreApplication::arguments();
    QString const program = QFileInfo(arguments.value(0)).fileName();
    if (!identify(program, identity))
        return refuse(QStringLiteral("%1 is no server's name").arg(program));
    bool const isLocal = arguments.mid(1) == QStringList{Server::LocalArgument};
    if (!isLocal && (arguments.size() > 1 || identity.port == 0))
        return refuse(QStringLiteral("usage: %1 %2").arg(program, Server::LocalArgument));

    Bench bench;
    QString error;
    QString const path = findBench(QCoreApplication::applicationDirPath());
    bool const isReadable = path.isEmpty() || readBench(path, bench, error);
    if (!isReadable)
        refuse(error);

    Bridge bridge(bench, identity.kinds);
    BridgeServer server(bridge, bench.faults);
    if (bench.faults.neverListen)
        return QCoreApplication::exec();
    // The host waits for the socket only so long: design and stimulus come afterwards.
    if (isLocal ? !server.listenLocal(identity.socket, error)
                : !server.listenTcp(quint16(identity.port), error))
        return refuse(error);
    if (!isReadable)
        bridge.setBroken(error);
    else if (!bridge.load(error))
        refuse(error);
    return QCoreApplication::exec();
}
