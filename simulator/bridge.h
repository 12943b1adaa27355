#pragma once

#include "jtag/protocol.h"
#include "simulator/bench.h"
#include "simulator/chip.h"
#include "simulator/requesthandler.h"

#include <QStringList>

#include <memory>

namespace VEK::Simulator {

/// Answers of OPEN.
namespace OpenResult {
constexpr int Opened = 0;
constexpr int NoDevice = -1;      ///< No device, or not the cable that was asked for.
constexpr int NoBitstream = -20;  ///< A device without a design, or an empty desk.
constexpr int BrokenBench = -100; ///< The bench can't be used; "REASON" tells why.
} // namespace OpenResult

/// What a server makes of requests: it owns the desk and the chip, but no socket.
class Bridge : public RequestHandler
{
public:
    /// `kinds`: the cable kinds of this server, the usual one first; cables of other kinds are out
    /// of its sight.
    Bridge(Bench const& bench, QStringList const& kinds);
    ~Bridge() override;

    /// Builds the chip. May take a while for a large stimulus. False with an `error` for a bench
    /// that can't be used; requests are served all the same, and OPEN tells the error.
    bool load(QString& error);
    /// What the user should know about a bench that was loaded, which OPEN tells too; empty when
    /// all is well.
    QString const& warning() const { return m_warning; }
    /// Makes every OPEN answer that the bench can't be used, for this reason.
    void setBroken(QString const& reason);

    bool serve(CmdPack const& request, CmdPack& reply) override;

private:
    int open(CmdPack const& request);
    bool hasCable(CmdPack const& request) const;
    QString cableReport() const;
    QBitArray read(int size);

    Bench m_bench;
    QStringList m_kinds;
    std::unique_ptr<Chip> m_chip;
    QString m_warning;
    bool m_isBroken = false;
    QString m_reason; ///< What OPEN tells about the bench; may be empty.
    bool m_isOpen = false;
};

} // namespace VEK::Simulator
