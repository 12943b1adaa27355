#include "results/dataformatter.h"

#include "results/decimaltext.h"
#include "results/valuetext.h"

#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <cmath>

namespace WaveMonitor {
namespace {

Q_LOGGING_CATEGORY(lcFormatter, "vek.results.formatter", QtWarningMsg)

/// From this width on a double does not hold every value.
constexpr int WideDecimal = 54;

struct FormatNames
{
    char const* description;
    char const* key;
};

/// The misspelling is the menu's.
constexpr std::array<FormatNames, 13> Names = {{
    {"Binary", "binary"},
    {"Octal", "octal"},
    {"Signed Decimal", "signed decimal"},
    {"Unsigned Decimal", "unsigned decimal"},
    {"Hexadecimal", "hex"},
    {"Ascii", "ASCII"},
    {"Signed Magnitude", "Signed Magnitude"},
    {"Real", "Real"},
    {"Unsigend Bar Chart", "Unsigned Bar Chart"},
    {"Unsigned Line Chart", "Unsigned Line Chart"},
    {"Signed Bar Chart", "Signed Bar Chart"},
    {"Signed Line Chart", "Signed Line Chart"},
    {"Row Height Setting", ""},
}};
static_assert(Names.size() == DataFormat::RowHeightSetting + 1);

bool isKnown(int type)
{
    return type >= 0 && type < int(Names.size());
}

/// `digits` digits of the value's tail, each of `DigitBits` bits. `write` writes the digits of up
/// to 64 bits.
template <int DigitBits, typename Write>
QString grouped(QBitArray const& bits, qint64 digits, Write write)
{
    constexpr int PerWord = 64 / DigitBits;
    QString text(int(digits), Qt::Uninitialized);
    ushort* out = reinterpret_cast<ushort*>(text.data());
    qint64 at = bits.size() - digits * DigitBits;
    while (digits > 0) {
        int const count = digits % PerWord ? int(digits % PerWord) : PerWord;
        out = write(out, VEK::numberAt(bits, at, count * DigitBits), count);
        at += count * DigitBits;
        digits -= count;
    }
    return text;
}

/// The characters of all bytes, a blank for what is no printable ASCII. A byte is read as it lies
/// in a vector, its highest bit lowest.
constexpr std::array<ushort, 256> makeAsciiTable()
{
    std::array<ushort, 256> table{};
    for (unsigned i = 0; i < table.size(); ++i) {
        unsigned byte = 0;
        for (unsigned k = 0; k < 8; ++k)
            byte |= (i >> k & 1) << (7 - k);
        table[i] = byte >= 32 && byte < 127 ? ushort(byte) : ushort(' ');
    }
    return table;
}

constexpr std::array<ushort, 256> AsciiTable = makeAsciiTable();

QString decimalText(qint64 value)
{
    ushort buffer[24];
    ushort* out = buffer;
    if (value < 0)
        *out++ = '-';
    out = VEK::writeDecimal(out, quint64(std::abs(value)));
    return QString(reinterpret_cast<QChar const*>(buffer), int(out - buffer));
}

quint64 narrowNumber(QBitArray const& bits)
{
    return bits.isEmpty() ? 0 : VEK::numberAt(bits, 0, bits.size());
}

bool isNegative(QBitArray const& bits)
{
    return !bits.isEmpty() && bits.testBit(0);
}

} // namespace

QString DataFormat::typeDescription(Type type)
{
    return isKnown(type) ? QLatin1String(Names[std::size_t(type)].description) : QString();
}

QString DataFormat::stringFromType(Type type)
{
    return isKnown(type) ? QLatin1String(Names[std::size_t(type)].key) : QString();
}

DataFormat::Type DataFormat::typeFromString(QString const& key)
{
    for (int type = 0; type < RowHeightSetting; ++type) {
        if (key == QLatin1String(Names[std::size_t(type)].key))
            return Type(type);
    }
    return Hexadecimal;
}

DataFormat::Type DataFormat::radix(Type type)
{
    switch (type) {
    case UnsignedBarChart:
    case UnsignedLineChart:
        return UnsignedDecimal;
    case SignedBarChart:
    case SignedLineChart:
        return SignedDecimal;
    default:
        return type;
    }
}

QString DataFormatter::format(QBitArray const& bits) const
{
    if (bits.isNull())
        return QStringLiteral("null");
    if (bits.size() <= 1)
        return isNegative(bits) ? QStringLiteral("1") : QStringLiteral("0");
    switch (DataFormat::radix(m_type)) {
    case DataFormat::Binary:
        return toBinString(bits);
    case DataFormat::Octal:
        return toOctString(bits);
    case DataFormat::SignedDecimal:
        return toSignedString(bits);
    case DataFormat::UnsignedDecimal:
        return toUnsignedString(bits);
    case DataFormat::Hexadecimal:
        return toHexString(bits);
    case DataFormat::Ascii:
        return toAsciiString(bits);
    case DataFormat::SignedMagnitude:
        return toSignedMagnitudeString(bits);
    case DataFormat::Real:
        return toRealString(bits);
    default:
        return QString();
    }
}

QString DataFormatter::toBinString(QBitArray const& bits) const
{
    return grouped<1>(bits, bits.size(), VEK::writeBinary<ushort>);
}

QString DataFormatter::toOctString(QBitArray const& bits) const
{
    // In single precision on purpose: it decides the digits of values beyond 2^23 bits.
    auto const digits = qint64(std::ceil(float(bits.size()) / 3.0f));
    return grouped<3>(bits, digits, VEK::writeOctal<ushort>);
}

QString DataFormatter::toHexString(QBitArray const& bits) const
{
    qint64 const digits = (qint64(bits.size()) + 3) / 4;
    qCDebug(lcFormatter).noquote() << printBitArray(bits);
    qCDebug(lcFormatter).noquote() << printBitArray(rightJustified(bits, int(digits * 4)));
    return grouped<4>(bits, digits, VEK::writeHex<ushort>);
}

QString DataFormatter::toAsciiString(QBitArray const& bits) const
{
    int const count = int((qint64(bits.size()) + 7) / 8);
    QString text(count + 2, Qt::Uninitialized);
    ushort* out = reinterpret_cast<ushort*>(text.data());
    *out++ = '"';
    qint64 at = bits.size() - qint64(count) * 8;
    for (int left = count; left > 0; left -= 8, at += 64) {
        quint64 word = VEK::packedBits(bits, at);
        for (int k = std::min(8, left); k > 0; --k, word >>= 8)
            *out++ = AsciiTable[word & 0xff];
    }
    *out = '"';
    return text;
}

QString DataFormatter::toSignedMagnitudeString(QBitArray const& bits) const
{
    if (!isNegative(bits))
        return toUnsignedString(bits);
    QBitArray magnitude = bits;
    magnitude.clearBit(0);
    QString const text = toUnsignedString(magnitude);
    return text == QLatin1String("0") ? text : QLatin1Char('-') + text;
}

QString DataFormatter::toSignedString(QBitArray const& bits) const
{
    if (!isNegative(bits))
        return toUnsignedString(bits);
    if (bits.size() >= WideDecimal)
        return toMinusSigned54AndMoreString(bits);
    return decimalText(qint64(narrowNumber(bits)) - (qint64(1) << bits.size()));
}

QString DataFormatter::toUnsignedString(QBitArray const& bits) const
{
    return bits.size() < WideDecimal ? decimalText(qint64(narrowNumber(bits)))
                                     : toDec54AndMore(bits);
}

QString DataFormatter::toDec54AndMore(QBitArray const& bits) const
{
    return VEK::unsignedDecimal(bits);
}

QString DataFormatter::toMinusSigned54AndMoreString(QBitArray const& bits) const
{
    return VEK::negativeDecimal(bits);
}

double DataFormatter::toDec(QBitArray const& bits) const
{
    double value = 0;
    int place = 0;
    for (qint64 at = bits.size(); at > 0; at -= 32, ++place)
        value += std::ldexp(double(VEK::numberAt(bits, at - 32, 32)), 32 * place);
    return value;
}

int DataFormatter::judge0or1(QBitArray& bits) const
{
    if (bits.isEmpty())
        return -1;
    int const ones = bits.count(true);
    if (ones == 0)
        return 0;
    return ones == bits.size() ? 1 : -1;
}

QString DataFormatter::sumStringValues(QString const& a, QString const& b) const
{
    auto const digitOf = [](QString const& text, int fromEnd) {
        int const at = text.size() - 1 - fromEnd;
        unsigned const digit = at < 0 ? 0u : text.at(at).unicode() - unsigned('0');
        return digit <= 9 ? digit : 0u;
    };
    int const length = std::max(a.size(), b.size());
    QString sum(length, Qt::Uninitialized);
    unsigned carry = 0;
    for (int i = 0; i < length; ++i) {
        unsigned const digit = digitOf(a, i) + digitOf(b, i) + carry;
        carry = digit > 9;
        sum[length - 1 - i] = QChar('0' + digit % 10);
    }
    return carry ? QLatin1Char('1') + sum : sum;
}

QString DataFormatter::shiftLeftString(QString const& text, unsigned long n) const
{
    QString result = text;
    for (; n > 0; --n)
        result = sumStringValues(result, result);
    return result;
}

void DataFormatter::changeBitToByte(unsigned char* bytes, unsigned int count,
                                    QBitArray const& bits) const
{
    qint64 const first = bits.size() - 8 * qint64(count);
    for (unsigned int i = 0; i < count; ++i)
        bytes[i] = static_cast<unsigned char>(VEK::numberAt(bits, first + 8 * qint64(i), 8));
}

} // namespace WaveMonitor
