#include "analyzer/serverstage.h"

#include "analyzer/console.h"
#include "jtag/jtagsession.h"

namespace VEK {
namespace {

constexpr int NoServerStarted = 1;
constexpr int NoServerAnswered = 2;

} // namespace

ServerStage startServer(CABLE cable, CHANNEL channel)
{
    JtagSession* session = JtagSession::shared();
    QList<JtagServer> const servers = session->initLocalServerListForveksh(cable, channel);
    if (servers.isEmpty()) {
        printLine(QStringLiteral("Error: Can not lanuch JTAG server."));
        return {NoServerStarted, QString()};
    }
    session->validateServerList(servers);
    if (!session->hasConnections()) {
        printLine(QStringLiteral("Error: Can not connect to JTAG server."));
        return {NoServerAnswered, QString()};
    }
    return {0, session->serverMap().firstKey()};
}

} // namespace VEK
