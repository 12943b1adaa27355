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
constexpr int Lanes = 2; ///< Divisions side by side, as many chunks as come out at a time.
constexpr quint64 Reciprocal = quint64(~Wide(0) / Chunk - (Wide(1) << 64));

/// Divides high * 2^64 + low by `Chunk` with two multiplications (the division by an invariant
/// number of Moeller and Granlund). `high` is below `Chunk` and becomes the remainder.
inline quint64 divideByChunk(quint64& high, quint64 low)
{
    Wide const estimate = Wide(Reciprocal) * high + ((Wide(high) << 64) | low);
    quint64 quotient = quint64(estimate >> 64) + 1;
    quint64 remainder = low - quotient * Chunk;
    // as good as random, so without a branch
    quint64 const tooFar = remainder > quint64(estimate);
    quotient -= tooFar;
    remainder += Chunk & (0 - tooFar);
    if (Q_UNLIKELY(remainder >= Chunk)) {
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
    while (used > 0) {
        // one division of all limbs after the other would wait for each limb's quotient; so they
        // go over the limbs side by side, each one dividing what the one before it has made
        quint64 remainders[Lanes] = {};
        for (int i = used - 1; i >= 0; --i) {
            quint64 limb = limbs[i];
            for (quint64& remainder : remainders)
                limb = divideByChunk(remainder, limb);
            limbs[i] = limb;
        }
        chunks.append(remainders, Lanes);
        while (used > 0 && !limbs[used - 1])
            --used;
    }
    while (chunks.size() > 1 && !chunks.last())
        chunks.removeLast();

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
