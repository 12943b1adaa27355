#pragma once

#include <QBitArray>
#include <QList>

#include <functional>

namespace VEK {

class SxCore;

/// The words that load the trigger tables of a dynamic core; none for a static one. Each expression
/// gets one word for each combination of the used match units: the combination stands in the data
/// field, bit 0 for the lowest-numbered used unit, and the table's output is the lowest bit of the
/// register address. Without any expression the first table is true for every combination.
QList<QBitArray> generateExpressionBit(SxCore const* core);

/// Hands out the same words in the same order, a table at a time: a file may hold thousands of
/// expressions, and all their words at once are 5 MiB for each.
void forEachExpressionTable(SxCore const* core,
                            std::function<void(QList<QBitArray> const&)> const& take);

} // namespace VEK
