#include "results/dataformatter.h"
#include "results/valuetext.h"

#include <algorithm>
#include <cmath>

// The conversions of DataFormatter to real numbers, and the shortening of their texts.
namespace WaveMonitor {
namespace {

QString notAvailable()
{
    return QStringLiteral("NA");
}

/// Sum of 2 to the power -(k + 1) over the set bits k of the `count` bits from `start` on.
double fractionOf(QBitArray const& bits, int start, int count)
{
    double sum = 0;
    int const end = int(std::min<qint64>(bits.size(), qint64(start) + count));
    for (int i = start; i < end; ++i) {
        if (bits.testBit(i))
            sum += std::ldexp(1.0, -(i - start + 1));
    }
    return sum;
}

/// A field of a floating value; the bits of it that the value does not have are 0.
struct Field
{
    int set = 0;      ///< Bits that are 1.
    double value = 0; ///< As an integer, the first bit highest.
};

Field fieldOf(QBitArray const& bits, int start, int count)
{
    Field field;
    int const end = int(std::min<qint64>(bits.size(), qint64(start) + count));
    for (int i = start; i < end; ++i) {
        if (!bits.testBit(i))
            continue;
        ++field.set;
        field.value += std::ldexp(1.0, count - 1 - (i - start));
    }
    return field;
}

} // namespace

QString DataFormatter::toRealString(QBitArray const& bits) const
{
    switch (m_real.type) {
    case VEK::FixedSigned:
        return toSignedReal(bits);
    case VEK::FixedUnsigned:
        return toUnsignedReal(bits);
    case VEK::FloatingSingle:
        return toSingleReal(bits);
    case VEK::FloatingDouble:
        return toDoubleReal(bits);
    default:
        return QString();
    }
}

QString DataFormatter::toUnsignedReal(QBitArray const& bits) const
{
    int const size = bits.size();
    int const point = std::max(0, m_real.binaryPoint);
    if (point > size)
        return notAvailable();
    QString const whole =
        point == size ? QStringLiteral("0") : toUnsignedString(VEK::sub(bits, 0, size - point));
    if (point == 0)
        return whole + QLatin1String(".0");
    // Fractions of more than 53 bits may round up to 1; its "1." is dropped like a "0." would be.
    double const fraction = fractionOf(bits, size - point, point);
    return whole + QLatin1Char('.') + QString::number(fraction, 'f', point).midRef(2);
}

QString DataFormatter::toSignedReal(QBitArray const& bits) const
{
    if (m_real.binaryPoint > bits.size())
        return notAvailable();
    if (bits.isEmpty() || !bits.testBit(0))
        return toUnsignedReal(bits);
    QBitArray magnitude = bits;
    magnitude.clearBit(0);
    QString const text = toUnsignedReal(magnitude);
    return VEK::is0(magnitude) ? text : QLatin1Char('-') + text;
}

QString DataFormatter::toSingleReal(QBitArray const& bits) const
{
    return bits.size() == 32 ? toCustomReal(bits) : notAvailable();
}

QString DataFormatter::toDoubleReal(QBitArray const& bits) const
{
    return bits.size() == 64 ? toCustomReal(bits) : notAvailable();
}

QString DataFormatter::toCustomReal(QBitArray const& bits) const
{
    if (bits.size() != 32 && bits.size() != 64)
        return notAvailable();
    bool const negative = bits.testBit(0);
    auto const named = [negative](QLatin1String text) {
        return negative ? QLatin1Char('-') + text : QString(text);
    };

    int const exponentWidth = std::max(0, m_real.exponentWidth);
    int const fractionStart = 1 + std::min(exponentWidth, bits.size() - 1);
    int const fractionWidth = std::max(1, m_real.fractionWidth) - 1;
    Field const exponent = fieldOf(bits, 1, exponentWidth);
    double const fraction = fractionOf(bits, fractionStart, fractionWidth);
    double const bias = std::pow(2.0, exponentWidth - 1) - 1;

    // An empty exponent field is neither all ones nor all zero: it counts as a normal number.
    if (exponentWidth > 0 && exponent.set == exponentWidth)
        return named(QLatin1String(fraction == 0 ? "INF.0" : "NA.0"));
    bool const subnormal = exponentWidth > 0 && exponent.set == 0;
    if (subnormal && fraction == 0)
        return named(QLatin1String("0.0"));
    double const magnitude = subnormal ? fraction * std::pow(2.0, 1 - bias)
                                       : (1 + fraction) * std::pow(2.0, exponent.value - bias);
    return QString::number(negative ? -magnitude : magnitude, 'g', 15);
}

QString DataFormatter::toRetainPoint(QString& text) const
{
    constexpr int Kept = 11;
    int const exponent = text.indexOf(QLatin1Char('e'));
    if (exponent >= Kept)
        return text.left(Kept);
    if (exponent >= 0)
        return text.left(exponent + 1); // The exponent's digits are cut on purpose.
    if (text.size() <= Kept)
        return text;
    QString const kept = text.left(Kept);
    return kept.endsWith(QLatin1Char('.')) ? kept + QLatin1Char('0') : kept;
}

} // namespace WaveMonitor
