#include "cli/rehearsaldesk.h"

#include "capture/capturesettings.h"
#include "cli/exitstatus.h"

namespace VEK::Cli {
namespace {

Simulator::Bench read(QString const& path)
{
    Simulator::Bench bench;
    QString error;
    if (!Simulator::readBench(path, bench, error))
        throw Failure{Status::Configuration, error};
    return bench;
}

} // namespace

RehearsalDesk::RehearsalDesk(QString const& bench, CaptureSettings& settings)
    : m_bench(read(bench)), m_chip(m_bench, {QStringLiteral("FT2CH")}),
      m_desk(m_chip, Server::Ft2chName)
{
    QString error;
    if (!m_chip.load(error))
        throw Failure{Status::Configuration, error};
    settings.cable = Server::Ft2chName;
    settings.location.clear();
    settings.device = m_bench.device;
    settings.attach = true;
}

} // namespace VEK::Cli
