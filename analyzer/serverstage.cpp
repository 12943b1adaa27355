#include "analyzer/serverstage.h"

#include "analyzer/console.h"
#include "jtag/jtagsession.h"

namespace VEK {
namespace {

constexpr int NoServerStarted = 1;
constexpr int NoServerAnswered = 2;

ServerStage noServerAnswered()
{
    printLine(QStringLiteral("Error: Can not connect to JTAG server."));
    return {NoServerAnswered, QString(), nullptr};
}

} // namespace

ServerStage startServer(CABLE cable, CHANNEL channel)
{
    auto const lock =
        std::make_shared<CableHold>(cable == CableLPT ? Server::LptSocket : Server::UsbSocket);
    if (!lock->take())
        return noServerAnswered();
    JtagSession* session = JtagSession::shared();
    QList<JtagServer> const servers = session->initLocalServerListForveksh(cable, channel);
    if (servers.isEmpty()) {
        printLine(QStringLiteral("Error: Can not lanuch JTAG server."));
        return {NoServerStarted, QString(), lock};
    }
    session->validateServerList(servers);
    if (!session->hasConnections())
        return noServerAnswered();
    return {0, session->serverMap().firstKey(), lock};
}

} // namespace VEK
