#include "model/bits.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>

namespace VEK {
namespace {

using Byte = unsigned char;

/// What a vector holds; its size in bits is an int, rounded up to bytes and words on the way.
constexpr qint64 MostBits = INT_MAX - 64;

/// QBitArray keeps position 0 in the lowest bit of its first byte.
Byte const* storage(QBitArray const& bits)
{
    return reinterpret_cast<Byte const*>(bits.bits());
}

int bytesFor(int bitCount)
{
    return int((qint64(bitCount) + 7) / 8);
}

constexpr Byte mirrored(Byte byte)
{
    Byte result = 0;
    for (int i = 0; i < 8; ++i)
        result = Byte(result | (((byte >> i) & 1) << (7 - i)));
    return result;
}

constexpr std::array<Byte, 256> makeMirrorTable()
{
    std::array<Byte, 256> table{};
    for (int i = 0; i < 256; ++i)
        table[std::size_t(i)] = mirrored(Byte(i));
    return table;
}

constexpr std::array<Byte, 256> MirrorTable = makeMirrorTable();

/// The characters of eight bits, the lowest first.
using EightCharacters = std::array<ushort, 8>;

constexpr std::array<EightCharacters, 256> makeTextTable()
{
    std::array<EightCharacters, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        for (std::size_t k = 0; k < 8; ++k)
            table[i][k] = ushort('0' + (i >> k & 1));
    }
    return table;
}

constexpr std::array<EightCharacters, 256> TextTable = makeTextTable();

/// Up to seven bytes as a number, the first of them lowest. Two loads, which may overlap, do.
quint64 loadFew(Byte const* bytes, int count)
{
    if (count >= 4)
        return qFromLittleEndian<quint32>(bytes) |
               quint64(qFromLittleEndian<quint32>(bytes + count - 4)) << (8 * (count - 4));
    if (count >= 2)
        return qFromLittleEndian<quint16>(bytes) | quint64(bytes[count - 1]) << (8 * (count - 1));
    return *bytes;
}

/// Up to 64 bits of `bytes` from bit `start` on; `size` bits are there, none is read beyond them.
quint64 loadBits(Byte const* bytes, qint64 size, qint64 start)
{
    qint64 const first = start / 8;
    int const shift = int(start % 8);
    qint64 const available = (size + 7) / 8 - first;
    if (available < 8)
        return loadFew(bytes + first, int(available)) >> shift;
    quint64 low = qFromLittleEndian<quint64>(bytes + first) >> shift;
    if (shift && available > 8)
        low |= quint64(bytes[first + 8]) << (64 - shift);
    return low;
}

quint64 lowMask(int count)
{
    return count >= 64 ? ~quint64(0) : (quint64(1) << count) - 1;
}

/// Copies all bits of `source` into the zeroed bytes at `target`, from bit `at` on.
void placeBits(Byte* target, qint64 at, QBitArray const& source)
{
    qint64 const size = source.size();
    qint64 done = 0;
    while (done < size) {
        int const shift = int((at + done) % 8);
        int const count = int(std::min<qint64>(64 - shift, size - done));
        Byte* place = target + (at + done) / 8;
        quint64 const word = (packedBits(source, done, count) << shift);
        int const bytes = (shift + count + 7) / 8;
        for (int i = 0; i < bytes; ++i)
            place[i] = Byte(place[i] | Byte(word >> (8 * i)));
        done += count;
    }
}

QBitArray bitsOf(QByteArray const& bytes, int size)
{
    return QBitArray::fromBits(bytes.constData(), size);
}

/// `length` bits from `start` on, zeros wherever the source has none.
QBitArray slice(QBitArray const& bits, qint64 start, int length)
{
    if (length < 1)
        return QBitArray();
    QByteArray bytes(bytesFor(length) + 8, Qt::Uninitialized);
    for (qint64 done = 0; done < length; done += 64) {
        quint64 const word = qToLittleEndian(packedBits(bits, start + done));
        std::memcpy(bytes.data() + done / 8, &word, sizeof word);
    }
    return bitsOf(bytes, length);
}

/// Swaps the halves off the diagonal of each square of 2 * `Half` words.
template <int Half>
void swapSquares(BitBlock& block, quint64 mask)
{
    for (int square = 0; square < 64; square += 2 * Half) {
        for (int k = square; k < square + Half; ++k) {
            quint64 const swap = ((block[k] >> Half) ^ block[k + Half]) & mask;
            block[k + Half] ^= swap;
            block[k] ^= swap << Half;
        }
    }
}

} // namespace

char* storageOf(QBitArray& bits)
{
    return const_cast<char*>(bits.bits()); // Qt has no other way than bit by bit
}

void transpose(BitBlock& block)
{
    swapSquares<32>(block, 0x00000000FFFFFFFFu);
    swapSquares<16>(block, 0x0000FFFF0000FFFFu);
    swapSquares<8>(block, 0x00FF00FF00FF00FFu);
    swapSquares<4>(block, 0x0F0F0F0F0F0F0F0Fu);
    swapSquares<2>(block, 0x3333333333333333u);
    swapSquares<1>(block, 0x5555555555555555u);
}

quint64 Detail::packedBitsAtEdge(QBitArray const& bits, qint64 start, int count)
{
    qint64 const size = bits.size();
    if (size == 0 || start >= size || start <= -64 || count < 1)
        return 0;
    quint64 word = start < 0 ? loadBits(storage(bits), size, 0) << -start
                             : loadBits(storage(bits), size, start);
    qint64 const left = size - start;
    return word & lowMask(int(std::min<qint64>(left, count)));
}

QBitArray byte2bit(QByteArray const& bytes, int start, int count)
{
    if (bytes.isEmpty() || start < 0 || count < -1)
        return QBitArray();
    if (count == -1)
        count = int(std::max<qint64>(0, qint64(bytes.size()) * 8 - start));
    QByteArray turned(bytes);
    for (char& byte : turned)
        byte = char(MirrorTable[Byte(byte)]);
    return slice(bitsOf(turned, turned.size() * 8), start, count);
}

QString bit2str(QBitArray const& bits)
{
    QString text(bits.size(), Qt::Uninitialized);
    ushort* out = reinterpret_cast<ushort*>(text.data());
    Byte const* const bytes = storage(bits);
    int const whole = bits.size() / 8;
    for (int i = 0; i < whole; ++i, out += 8)
        std::memcpy(out, TextTable[bytes[i]].data(), sizeof(EightCharacters));
    if (int const left = bits.size() % 8)
        std::copy_n(TextTable[bytes[whole]].begin(), left, out);
    return text;
}

QBitArray str2bit(QString const& text)
{
    QBitArray bits(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) != QLatin1Char('0'))
            bits.setBit(i);
    }
    return bits;
}

QBitArray rightJustified(QBitArray const& bits, int n)
{
    return slice(bits, qint64(bits.size()) - n, n);
}

QBitArray leftJustified(QBitArray const& bits, int n)
{
    return slice(bits, 0, n);
}

QBitArray combine(QBitArray const& a, QBitArray const& b)
{
    return combine(QList<QBitArray>{a, b});
}

QBitArray combine(QList<QBitArray> const& list)
{
    if (list.size() == 1)
        return list.first();
    qint64 size = 0;
    for (QBitArray const& bits : list)
        size += bits.size();
    if (size > MostBits)
        return QBitArray();
    QByteArray bytes(bytesFor(int(size)) + 8, '\0');
    qint64 at = 0;
    for (QBitArray const& bits : list) {
        placeBits(reinterpret_cast<Byte*>(bytes.data()), at, bits);
        at += bits.size();
    }
    return bitsOf(bytes, int(size));
}

QBitArray sub(QBitArray const& bits, int start, int length)
{
    if (length < 0)
        length = int(std::min<qint64>(qint64(bits.size()) - start, INT_MAX));
    return slice(bits, start, length);
}

QBitArray cutHead(QBitArray const& bits, int n)
{
    qint64 const left = qint64(bits.size()) - n;
    return left < 1 ? QBitArray() : slice(bits, n, int(left));
}

QBitArray cutTail(QBitArray const& bits, int n)
{
    qint64 const left = qint64(bits.size()) - n;
    return left < 1 ? QBitArray() : slice(bits, 0, int(left));
}

QBitArray reverse(QBitArray const& bits)
{
    int const count = bytesFor(bits.size());
    QByteArray bytes(count, Qt::Uninitialized);
    for (int i = 0; i < count; ++i)
        bytes[count - 1 - i] = char(MirrorTable[storage(bits)[i]]);
    return slice(bitsOf(bytes, count * 8), count * 8 - bits.size(), bits.size());
}

bool is0(QBitArray const& bits)
{
    for (qint64 i = 0; i < bits.size(); i += 64) {
        if (packedBits(bits, i))
            return false;
    }
    return true;
}

bool is1(QBitArray const& bits)
{
    return bits.isEmpty() || (bits.testBit(0) && is0(cutHead(bits, 1)));
}

QBitArray int32ToBit(unsigned int value)
{
    char bytes[4];
    for (int i = 0; i < 4; ++i)
        bytes[i] = char(MirrorTable[Byte(value >> (24 - 8 * i))]);
    return QBitArray::fromBits(bytes, 32);
}

QBitArray int16ToBit(unsigned short value)
{
    char const bytes[2] = {char(MirrorTable[Byte(value >> 8)]), char(MirrorTable[Byte(value)])};
    return QBitArray::fromBits(bytes, 16);
}

} // namespace VEK
