#pragma once

#include <QBitArray>

#include <vector>

/// How the simulated chip reads the fields that it is sent. Its own, so that a wrong bit on the
/// host's side finds no like-minded reader here.
namespace VEK::Simulator {

/// The number in `count` positions from `start` on, the first one the highest; up to 64 bits.
quint64 fieldNumber(QBitArray const& bits, int start, int count);

/// An opcode's bits, given as text, as a number.
quint64 opcodeNumber(char const* text);

/// The low min(size, 32) bits of a register's field, as a number.
quint32 registerNumber(QBitArray const& field);

/// The last `count` positions of a field as words, the first of them the highest bit of word 0.
/// Zeros for what the field doesn't have, and behind the last one.
std::vector<quint64> lastPositions(QBitArray const& field, int count);

/// Sets those of `count` positions (1 to 64) from `start` on that are 1 in `word`, whose highest
/// bit is the first of them. Positions outside the vector are passed over.
void putPositions(QBitArray& bits, qint64 start, quint64 word, int count);

/// A number as a field of `size` bits, zeros in front.
QBitArray numberField(quint32 number, int size);

} // namespace VEK::Simulator
