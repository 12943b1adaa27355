#pragma once

#include <QString>
#include <QStringList>

namespace WaveMonitor {

/// The bus name of signals that are the bits of one vector: from "d[2]", "d[1]", "d[0]" comes
/// "d[2:0]". Empty unless there are at least two, of one stem, with indexes that rise or fall by
/// exactly 1 throughout.
QString vectorName(QStringList const& signalNames);

/// "group_%1" with the smallest number that none of these generated bus names, like "group_0[3:0]",
/// has.
QString freeGroupName(QStringList const& busNames);

} // namespace WaveMonitor
