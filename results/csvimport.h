#pragma once

#include "model/capturecore.h"

#include <QBitArray>
#include <QList>
#include <QString>

namespace VEK {

/// Reads a file that `exportCSV` wrote and appends what it holds.
///
/// `signalList` gets the buses of the group block with their members, then every column that is
/// neither a bus nor a member, all with the name only. `dataList` gets one array a column, in the
/// order of the title line, with one bit a line below it: position 0 is the row of unknown values.
/// A bit is clear where the value is "X" or "0" and set for any other, so a bus of several bits has
/// a bit too, which does not stand for its value. Rows that end early leave the rest of their bits
/// clear.
///
/// False, with both lists untouched, if the file can't be opened, has the older layout that begins
/// with "Group:", or has lines or a table out of all proportion to what an export writes. Names
/// that hold ", " can't be told apart from several names.
bool readCsv(QString const& file, QList<SignalItem>& signalList, QList<QBitArray>& dataList);

} // namespace VEK
