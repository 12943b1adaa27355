#include "triggerui/matchvalue.h"

#include "model/bits.h"
#include "model/capturecore.h"
#include "results/dataformatter.h"

#include <QRegularExpression>
#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace VEK {

namespace {

using WaveMonitor::DataFormat;
using WaveMonitor::DataFormatter;

constexpr int ChunkDigits = 9;
constexpr quint32 PowersOfTen[ChunkDigits + 1] = {1,      10,      100,      1000,      10000,
                                                  100000, 1000000, 10000000, 100000000, 1000000000};

/// Bits in a digit of a radix that is a power of two; 0 for others.
int digitBits(int radix)
{
    switch (radix) {
    case 2:
        return 1;
    case 8:
        return 3;
    case 16:
        return 4;
    default:
        return 0;
    }
}

int digitValue(QChar digit)
{
    ushort const c = digit.unicode();
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : std::numeric_limits<int>::max();
}

bool isNumber(QString const& text, int radix)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [radix](QChar digit) {
        return digitValue(digit) < radix;
    });
}

QBitArray bitsOfDigits(QString const& digits, int bitsEach)
{
    QBitArray bits(digits.size() * bitsEach);
    for (int i = 0; i < digits.size(); ++i) {
        int const value = digitValue(digits[i]);
        for (int k = 0; k < bitsEach; ++k)
            bits.setBit(i * bitsEach + k, value >> (bitsEach - 1 - k) & 1);
    }
    return bits;
}

QBitArray bitsOfDecimal(QString const& digits)
{
    QVector<quint32> limbs; // the lowest first
    for (int at = 0; at < digits.size();) {
        int const count = qMin(ChunkDigits, digits.size() - at);
        quint64 carry = digits.midRef(at, count).toUInt();
        for (quint32& limb : limbs) {
            carry += quint64(limb) * PowersOfTen[count];
            limb = quint32(carry);
            carry >>= 32;
        }
        if (carry)
            limbs << quint32(carry);
        at += count;
    }
    QByteArray bytes;
    for (int i = limbs.size() - 1; i >= 0; --i) {
        quint32 const limb = qToBigEndian(limbs[i]);
        bytes.append(reinterpret_cast<char const*>(&limb), int(sizeof limb));
    }
    return byte2bit(bytes, 0, -1);
}

QString digitsOfBits(QBitArray const& bits, int radix)
{
    switch (radix) {
    case 2:
        return bit2str(bits);
    case 8:
        return DataFormatter(DataFormat::Octal).toOctString(bits);
    case 10:
        return DataFormatter(DataFormat::UnsignedDecimal).toUnsignedString(bits);
    default:
        return DataFormatter(DataFormat::Hexadecimal).toHexString(bits);
    }
}

QString withoutLeadingZeros(QString const& digits)
{
    int zeros = 0;
    while (zeros < digits.size() - 1 && digits[zeros] == QLatin1Char('0'))
        ++zeros;
    return digits.mid(zeros);
}

QString zeros(int width)
{
    return QString(qMax(width, 0), QLatin1Char('0'));
}

} // namespace

int digitCount(int width, int radix)
{
    switch (radix) {
    case 2:
        return width;
    case 8:
        return (width + 2) / 3;
    case 10:
        return int(width * 0.3010299956639812) + 1;
    case 16:
        return (width + 3) / 4;
    default:
        return 0;
    }
}

QString lettersAllowed(int radix, int func, int matchType)
{
    if (radix != 2 || func > FuncNotEqual)
        return QString();
    bool const edges = matchType == MatchBasicEdges || matchType == MatchExtendedEdges ||
                       matchType == MatchRangeEdges;
    return edges ? QStringLiteral("XRFBN") : QStringLiteral("X");
}

QString valuePattern(int radix, int func, int matchType)
{
    switch (radix) {
    case 8:
        return QStringLiteral("[0-7]*");
    case 10:
        return QStringLiteral("[0-9]*");
    case 16:
        return QStringLiteral("[A-F0-9]*");
    default:
        return QStringLiteral("[01%1]*").arg(lettersAllowed(radix, func, matchType));
    }
}

bool holdsLetters(QString const& text)
{
    static QRegularExpression const letters(QStringLiteral("[XRFBN]"));
    return text.contains(letters);
}

QString BitWidthAdjust(QString const& text, int n)
{
    return n < 1 ? QString() : text.right(n).rightJustified(n, QLatin1Char('0'));
}

bool checkExcessBitWidth(QString const& text, int n)
{
    return n >= text.size();
}

QString changeRadix(const QString& text, int from, int to, int width)
{
    bool const known = (from == 10 || digitBits(from)) && (to == 10 || digitBits(to));
    if (!known || !isNumber(text, from))
        return zeros(width);
    QBitArray const bits = from == 10 ? bitsOfDecimal(text) : bitsOfDigits(text, digitBits(from));
    return bits.isEmpty() ? zeros(1) : withoutLeadingZeros(digitsOfBits(bits, to));
}

QString bitsOfText(QString const& text, int radix, int width)
{
    return BitWidthAdjust(radix == 2 ? text : changeRadix(text, radix, 2, width), width);
}

QString textOfBits(QString const& bits, int radix)
{
    int const width = bits.size();
    if (radix == 2)
        return bits;
    return BitWidthAdjust(changeRadix(bits, 2, radix, width), digitCount(width, radix));
}

int counterLimit(int counterWidth)
{
    if (counterWidth >= std::numeric_limits<int>::digits)
        return std::numeric_limits<int>::max();
    return counterWidth > 0 ? 1 << counterWidth : 1;
}

} // namespace VEK
