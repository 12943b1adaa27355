#include "cli/privatedesk.h"

#include "cli/exitstatus.h"
#include "jtag/serverstartup.h"

namespace VEK::Cli {
namespace {

char const* const Variable = "TMPDIR";

} // namespace

PrivateDesk::PrivateDesk(Simulator::RequestHandler& handler, QString const& cable)
    : m_folder(QStringLiteral("/tmp/vek-XXXXXX")), // short: a socket lies in it
      m_before(qgetenv(Variable)), m_server(handler, Simulator::Faults())
{
    if (!m_folder.isValid())
        throw Failure{Status::Output, m_folder.errorString()};
    qputenv(Variable, m_folder.path().toLocal8Bit());
    QString error;
    if (!m_server.listenLocal(localServer(cable).address, error))
        throw Failure{Status::NoServer, error};
}

PrivateDesk::~PrivateDesk()
{
    if (m_before.isNull())
        qunsetenv(Variable);
    else
        qputenv(Variable, m_before);
}

} // namespace VEK::Cli
