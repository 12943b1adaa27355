#include "simulator/cables.h"

#include "jtag/protocol.h"

namespace VEK::Simulator {

namespace {

QString cableName(QString const& kind)
{
    for (QString const& name :
         {Server::Ft2chName, Server::Tr7qzName, Server::WinUsbName, Server::LptName}) {
        if (name.contains(kind))
            return name;
    }
    return kind;
}

} // namespace

QList<BenchCable> cablesInSight(Bench const& bench, QStringList const& kinds)
{
    if (bench.isEmpty)
        return {};
    if (!bench.listsCables)
        return {{kinds.first(), 0, QStringLiteral("SIM0")}};
    QList<BenchCable> cables;
    for (BenchCable const& cable : bench.cables)
        if (kinds.contains(cable.kind))
            cables.append(cable);
    return cables;
}

QString cableLine(BenchCable const& cable)
{
    return QStringLiteral("Cable found: %1/%2/%3/%4 (simulated)")
        .arg(cable.kind, cableName(cable.kind), QString::number(cable.location), cable.serial);
}

} // namespace VEK::Simulator
