#pragma once

#include <QBitArray>
#include <QString>

/// Exact decimals of bit vectors of any width. The first bit is the highest.
namespace VEK {

/// The vector as an unsigned number; "0" for an empty one.
QString unsignedDecimal(QBitArray const& bits);

/// "-" and the magnitude of the vector in two's complement. The first bit is taken as set.
QString negativeDecimal(QBitArray const& bits);

} // namespace VEK
