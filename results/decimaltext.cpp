#include "results/decimaltext.h"

#include "results/valuetext.h"

#include <QVarLengthArray>

namespace VEK {
namespace {

__extension__ typedef unsigned __int128 Wide;

/// Numbers are 64-bit limbs, the lowest first, and are divided by the largest power of ten that
/// fits a limb. Its top bit is set, as the division below requires.
using Limbs = QVarLengthArray<quint64, 72>;
constexpr quint64 Chunk = 10'000'000'000'000'000'000u;
constexpr int ChunkDigits = 19;
constexpr quint64 Reciprocal = quint64(~Wide(0) / Chunk - (Wide(1) << 64));

/// Divides high * 2^64 + low by `Chunk` with two multiplications (the division by an invariant
/// number of Moeller and Granlund). `high` is below `Chunk` and becomes the remainder.
inline quint64 divideByChunk(quint64& high, quint64 low)
{
    Wide const estimate = Wide(Reciprocal) * high + ((Wide(high) << 64) | low);
    quint64 quotient = quint64(estimate >> 64) + 1;
    quint64 remainder = low - quotient * Chunk;
    if (remainder > quint64(estimate)) {
        --quotient;
        remainder += Chunk;
    }
    if (remainder >= Chunk) {
        ++quotient;
        remainder -= Chunk;
    }
    high = remainder;
    return quotient;
}

Limbs limbsOf(QBitArray const& bits)
{
    qint64 const size = bits.size();
    Limbs limbs(int(std::max<qint64>(1, (size + 63) / 64)));
    for (int i = 0; i < limbs.size(); ++i)
        limbs[i] = numberAt(bits, size - 64 * (qint64(i) + 1), 64);
    return limbs;
}

/// The decimal text behind `prefix`. Consumes the limbs.
QString decimalOf(Limbs& limbs, QLatin1String prefix)
{
    Limbs chunks;
    int used = limbs.size();
    do {
        quint64 remainder = 0;
        while (used > 0 && !limbs[used - 1])
            --used;
        for (int i = used - 1; i >= 0; --i)
            limbs[i] = divideByChunk(remainder, limbs[i]);
        chunks.append(remainder);
    } while (used > 1 || (used == 1 && limbs[0]));

    quint64 const top = chunks.last();
    int const digits = decimalDigits(top) + ChunkDigits * (chunks.size() - 1);
    QString text(prefix.size() + digits, Qt::Uninitialized);
    ushort* out = reinterpret_cast<ushort*>(text.data());
    out = std::copy(prefix.begin(), prefix.end(), out);
    out = writeDecimal(out, top);
    for (int i = chunks.size() - 2; i >= 0; --i)
        out = writeDecimalPadded(out, chunks[i], ChunkDigits);
    return text;
}

} // namespace

QString unsignedDecimal(QBitArray const& bits)
{
    Limbs limbs = limbsOf(bits);
    return decimalOf(limbs, QLatin1String());
}

QString negativeDecimal(QBitArray const& bits)
{
    Limbs limbs = limbsOf(bits);
    int const topBits = bits.isEmpty() ? 0 : (bits.size() - 1) % 64;
    for (quint64& limb : limbs)
        limb = ~limb;
    // What stands above the value's lower bits, its sign included, leaves the inverted number.
    limbs.last() &= (quint64(1) << topBits) - 1;
    for (quint64& limb : limbs) {
        if (++limb)
            break;
    }
    return decimalOf(limbs, QLatin1String("-"));
}

} // namespace VEK
