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

/// A number as a field of `size` bits, zeros in front.
QBitArray numberField(quint32 number, int size);

/// Fills a vector from a position on, 64 bits at a time.
class BitWriter
{
public:
    /// `bits` was just made, has room for all that is put, and is complete when this object is
    /// gone. `at` may be negative: what would lie in front of the vector is dropped.
    BitWriter(QBitArray& bits, qint64 at);
    ~BitWriter();

    /// The `count` highest bits of a word, up to 64, the highest first.
    void put(quint64 word, int count);
    /// The same for a row of `count` bits.
    void putRow(quint64 const* words, int count);
    /// So many times the bit.
    void fill(bool bit, int count);

private:
    Q_DISABLE_COPY(BitWriter)

    char* m_place = nullptr; ///< Of the pending bits.
    quint64 m_pending = 0;   ///< The first of them lowest, as the vector keeps them.
    int m_filled = 0;
    qint64 m_dropped; ///< Bits to come that lie in front of the vector.
};

} // namespace VEK::Simulator
