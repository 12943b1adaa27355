#pragma once

#include <QBitArray>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QtEndian>

/// Bit vectors as they travel between the host and the capture core.
///
/// The one convention of the whole system: position 0 is the first bit on the wire and the most
/// significant bit of any number that the vector stands for. Text forms read the same way, the
/// leftmost character is position 0. All functions return new vectors; none reports an error.
namespace VEK {

/// The bits of `bytes` from bit `start` on, most significant bit of each byte first. `count` -1
/// means all that are left; a larger count than there are bits is padded with zeros at the end. An
/// empty byte array, a negative start or a count below -1 gives a null vector.
QBitArray byte2bit(QByteArray const& bytes, int start, int count);

/// One character `0` or `1` a bit, position 0 leftmost.
QString bit2str(QBitArray const& bits);

/// A vector of the text's length; every character other than `0` counts as 1.
QBitArray str2bit(QString const& text);

/// The tail of `bits` at the tail of a vector of `n` bits: zeros in front, or the head cut off.
QBitArray rightJustified(QBitArray const& bits, int n);

/// The head of `bits` at the head of a vector of `n` bits: zeros behind, or the tail cut off.
QBitArray leftJustified(QBitArray const& bits, int n);

/// `a` followed by `b`.
QBitArray combine(QBitArray const& a, QBitArray const& b);

/// All vectors in list order, one after the other; a list of one gives that vector itself. Empty
/// when together they are more than a vector holds, nearly 2^31 bits.
QBitArray combine(QList<QBitArray> const& list);

/// `length` bits from `start` on; a negative length means up to the end. Positions beyond the
/// source, at either end, are 0. A length below 1 gives an empty vector.
QBitArray sub(QBitArray const& bits, int start, int length);

/// Without the first `n` bits; empty when nothing is left.
QBitArray cutHead(QBitArray const& bits, int n);

/// Without the last `n` bits; empty when nothing is left.
QBitArray cutTail(QBitArray const& bits, int n);

/// Positions mirrored.
QBitArray reverse(QBitArray const& bits);

/// True for an empty vector and for one whose bits are all 0.
bool is0(QBitArray const& bits);

/// True for an empty vector, else exactly when position 0 is 1 and all others are 0: the number 1
/// read with the lowest bit first. The one place that reads a vector so; it is deliberate.
bool is1(QBitArray const& bits);

/// 32 bits, the highest at position 0.
QBitArray int32ToBit(unsigned int value);

/// 16 bits, the highest at position 0.
QBitArray int16ToBit(unsigned short value);

/// Up to 64 bits from `start` on, packed so that the bit at `start` is bit 0 of the result.
/// Positions beyond either end of the vector read as 0. For loops over many samples.
inline quint64 packedBits(QBitArray const& bits, qint64 start, int count = 64);

/// The bits of a word in reverse order.
inline quint64 mirrored(quint64 word)
{
    word = ((word >> 1) & 0x5555555555555555u) | ((word & 0x5555555555555555u) << 1);
    word = ((word >> 2) & 0x3333333333333333u) | ((word & 0x3333333333333333u) << 2);
    word = ((word >> 4) & 0x0f0f0f0f0f0f0f0fu) | ((word & 0x0f0f0f0f0f0f0f0fu) << 4);
    return qbswap(word);
}

/// The bytes of a vector, to be filled: position i is bit i % 8 of byte i / 8, the bits behind the
/// last position stay 0. For a vector that was just made, and has no copies.
char* storageOf(QBitArray& bits);

/// 64 words of 64 bits each.
using BitBlock = quint64[64];

/// Mirrors a block at its diagonal: bit c of word r becomes bit r of word c.
void transpose(BitBlock& block);

namespace Detail {

/// `packedBits` near the ends of a vector.
quint64 packedBitsAtEdge(QBitArray const& bits, qint64 start, int count);

} // namespace Detail

inline quint64 packedBits(QBitArray const& bits, qint64 start, int count)
{
    constexpr int MostTouched = 72; // bits of the nine bytes that 64 bits may lie in
    if (start < 0 || start + MostTouched > bits.size() || count < 1)
        return Detail::packedBitsAtEdge(bits, start, count);
    char const* const bytes = bits.bits() + start / 8;
    int const shift = int(start % 8);
    quint64 const word = qFromLittleEndian<quint64>(bytes) >> shift |
                         quint64(static_cast<unsigned char>(bytes[8])) << 1 << (63 - shift);
    return count >= 64 ? word : word & ((quint64(1) << count) - 1);
}

} // namespace VEK
