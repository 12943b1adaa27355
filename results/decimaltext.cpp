#include "results/decimaltext.h"

#include "results/valuetext.h"

#include <QVarLengthArray>

#include <algorithm>
#include <gmp.h>

namespace VEK {
namespace {

/// A number as GMP lays it out, the lowest limb first.
using Limbs = QVarLengthArray<mp_limb_t, 72>;

Limbs limbsOf(QBitArray const& bits)
{
    qint64 const size = bits.size();
    Limbs limbs(int(std::max<qint64>(1, (size + GMP_NUMB_BITS - 1) / GMP_NUMB_BITS)));
    for (int i = 0; i < limbs.size(); ++i)
        limbs[i] = mp_limb_t(numberAt(bits, size - GMP_NUMB_BITS * (qint64(i) + 1), GMP_NUMB_BITS));
    return limbs;
}

/// The decimal text behind `prefix`. Consumes the limbs.
QString decimalOf(Limbs& limbs, QLatin1String prefix)
{
    mp_size_t used = limbs.size();
    while (used > 0 && !limbs[int(used) - 1])
        --used;
    if (!used)
        return QStringLiteral("0");
    // each digit as a number, with room for more of them than the limbs can have
    QVarLengthArray<unsigned char, 1600> digits(int(used * GMP_NUMB_BITS / 3 + 2));
    auto const end = digits.cbegin() + mpn_get_str(digits.data(), 10, limbs.data(), used);
    auto const begin = std::find_if(digits.cbegin(), end, [](int digit) { return digit != 0; });
    QString text(prefix.size() + int(end - begin), Qt::Uninitialized);
    ushort* out = reinterpret_cast<ushort*>(text.data());
    out = std::copy(prefix.begin(), prefix.end(), out);
    std::transform(begin, end, out, [](int digit) { return ushort('0' + digit); });
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
    // the sign fills what stands above the other bits
    limbs.last() |= ~mp_limb_t(0) << (std::max(bits.size() - 1, 0) % GMP_NUMB_BITS);
    mpn_neg(limbs.data(), limbs.constData(), limbs.size());
    return decimalOf(limbs, QLatin1String("-"));
}

} // namespace VEK
