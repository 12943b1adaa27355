#pragma once

#include "cli/privatedesk.h"
#include "simulator/bridge.h"

namespace VEK {
struct CaptureSettings;
}

namespace VEK::Cli {

/// The simulated chip of one run of a rehearsal, in this process: neither a cable nor a server of
/// this machine is touched.
class RehearsalDesk
{
public:
    /// Loads the bench and its stimulus, and has the run go there. Throws a Failure.
    RehearsalDesk(QString const& bench, CaptureSettings& settings);

    /// What the user should know about the bench; empty when all is well.
    QString const& warning() const { return m_chip.warning(); }

private:
    Simulator::Bench m_bench;
    Simulator::Bridge m_chip;
    PrivateDesk m_desk;
};

} // namespace VEK::Cli
