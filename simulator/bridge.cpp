#include "simulator/bridge.h"

#include "simulator/cables.h"
#include "simulator/chipfactory.h"
#include "simulator/log.h"

#include <QFileInfo>

#include <algorithm>

Q_LOGGING_CATEGORY(lcSimulator, "vek.simulator", QtWarningMsg)

namespace VEK::Simulator {
namespace {

/// The largest burst of a wide core stays below.
constexpr int MaxReadBits = 1 << 27;

/// Cable kinds by the number that OPEN gives them.
QString kindOfIndex(int index)
{
    switch (index) {
    case 0:
        return QStringLiteral("FT2CH");
    case 1:
        return QStringLiteral("TR7QZ");
    case 2:
        return QStringLiteral("WINUSB");
    default:
        return QString();
    }
}

void copy(CmdPack const& from, CmdPack& to, std::initializer_list<QString> keys)
{
    for (QString const& key : keys) {
        auto const it = from.constFind(key);
        if (it != from.constEnd())
            to.insert(key, it.value());
    }
}

} // namespace

Bridge::Bridge(Bench const& bench, QStringList const& kinds) : m_bench(bench), m_kinds(kinds)
{}

Bridge::~Bridge() = default;

bool Bridge::load(QString& error)
{
    if (m_bench.device.isEmpty() || m_bench.design.isEmpty())
        return true;
    m_chip = buildChip(m_bench, m_warning, error);
    if (!m_chip)
        setBroken(error);
    return m_chip != nullptr;
}

void Bridge::setBroken(QString const& reason)
{
    m_isBroken = true;
    m_reason = reason;
}

bool Bridge::serve(CmdPack const& request, CmdPack& reply)
{
    QString const command = request.value(Protocol::Key::Cmd).toString();
    reply.clear();
    copy(request, reply, {Protocol::Key::RequestId, Protocol::Key::DataRequestId});
    auto const tell = [&reply](QString const& reason) {
        if (!reason.isEmpty())
            reply.insert(Protocol::Key::Reason, reason);
    };
    if (command == Protocol::Cmd::Open) {
        int const result = open(request);
        reply.insert(Protocol::Key::Res, result);
        tell(result == OpenResult::BrokenBench ? m_reason : m_warning);
        return true;
    }
    if (command == Protocol::Cmd::Query) {
        reply.insert(Protocol::Key::Res, 0);
        reply.insert(Protocol::Key::Cables, cableReport());
        return true;
    }
    if (command == Protocol::Cmd::Read && m_isOpen) {
        copy(request, reply, {Protocol::Key::SectionCount, Protocol::Key::Window});
        reply.insert(Protocol::Key::Data, read(request.value(Protocol::Key::Size).toInt()));
        if (request.value(Protocol::Key::Oprate) == Protocol::Oprate::ReadStartReg &&
            !m_bench.endless)
            tell(m_chip->reason());
        return true;
    }
    // The widths of WRITE_INFOR are what the chip was built with; it needs no telling.
    if (command == Protocol::Cmd::Write && m_isOpen)
        m_chip->write(request.value(Protocol::Key::Data).toBitArray());
    else if (command == Protocol::Cmd::Close)
        m_isOpen = false;
    else if (command != Protocol::Cmd::WriteInfor)
        qCDebug(lcSimulator) << "no use for the request" << request;
    return false;
}

int Bridge::open(CmdPack const& request)
{
    m_isOpen = false;
    if (m_bench.openResult != 0)
        return m_bench.openResult;
    if (m_isBroken)
        return OpenResult::BrokenBench;
    if (m_bench.isEmpty)
        return OpenResult::NoBitstream;
    if (m_bench.device.isEmpty() || !hasCable(request))
        return OpenResult::NoDevice;
    QString const bitstream = m_bench.loader.bitstream;
    if (!m_chip || (!bitstream.isEmpty() && !QFileInfo::exists(bitstream)))
        return OpenResult::NoBitstream;
    m_chip->powerUp();
    m_isOpen = true;
    return OpenResult::Opened;
}

/// Whether the cable that the request asks for, or any, is plugged in.
bool Bridge::hasCable(CmdPack const& request) const
{
    if (!m_bench.listsCables)
        return true;
    bool const isLocated = request.contains(Protocol::Key::CableIndex);
    QString const kind = kindOfIndex(request.value(Protocol::Key::CableIndex).toInt());
    int const location = request.value(Protocol::Key::CableLocation).toInt();
    return std::any_of(m_bench.cables.begin(), m_bench.cables.end(), [&](BenchCable const& cable) {
        return m_kinds.contains(cable.kind) &&
               (!isLocated || (cable.kind == kind && cable.location == location));
    });
}

QString Bridge::cableReport() const
{
    QString report;
    for (BenchCable const& cable : cablesInSight(m_bench, m_kinds))
        report += cableLine(cable) + QLatin1Char(';');
    return report;
}

QBitArray Bridge::read(int size)
{
    if (size >= 0 && size <= MaxReadBits)
        return m_chip->read(size);
    qCDebug(lcSimulator) << "no read of" << size << "bits";
    return QBitArray();
}

} // namespace VEK::Simulator
