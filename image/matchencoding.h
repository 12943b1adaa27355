#pragma once

#include <QBitArray>

/// The small encoders under the register image. Position 0 of every vector is the first bit sent
/// and the highest bit of a number, but for the masks of the two site functions.
namespace VEK {

class MatchUnit;

/// Write word: opcode, 16-bit address, the data as given.
QBitArray regWriteData(unsigned short address, QBitArray const& data);

/// Select word: opcode, 16-bit address; 21 bits.
QBitArray regSelectData(unsigned short address);

/// Burst read word: opcode, 16-bit address, 16-bit count; 37 bits.
QBitArray brustReadData(unsigned short address, unsigned short count);

/// Fills the three value vectors of a unit, each with one position for each single signal of its
/// port. The unit must be bound.
void bitForM(MatchUnit const* unit, QBitArray& a, QBitArray& b, QBitArray& c);

/// The 4-bit control vector of a unit: continuous counting, then the function.
QBitArray bitForMatchCtrl(MatchUnit const* unit);

/// Spreads the low bits of `value` over the set positions of the low 16 of `mask`, lowest first.
/// Position i of mask and result is site i.
QBitArray int16ShiftByUsedSite(int value, QBitArray const& mask);

/// Gathers the bits of `value` that `mask` selects, packed to the bottom. Position i of the mask
/// is bit i of the value.
int bitFilter(int value, QBitArray const& mask);

/// The same as `reverse`.
QBitArray bitarratReverse(QBitArray const& bits);

} // namespace VEK
