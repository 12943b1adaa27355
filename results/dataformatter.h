#pragma once

#include "model/bits.h"
#include "results/realtype.h"

#include <QBitArray>
#include <QString>

namespace WaveMonitor {

/// The radices that a user can choose for a bus.
struct DataFormat
{
    enum Type : int {
        Binary = 0,
        Octal = 1,
        SignedDecimal = 2,
        UnsignedDecimal = 3,
        Hexadecimal = 4,
        Ascii = 5,
        SignedMagnitude = 6,
        Real = 7,
        UnsignedBarChart = 8,
        UnsignedLineChart = 9,
        SignedBarChart = 10,
        SignedLineChart = 11,
        RowHeightSetting = 12 ///< A menu entry; no value is ever shown in it.
    };

    /// Menu text; empty for an unknown type.
    static QString typeDescription(Type type);

    /// The key that documents store; empty for an unknown type and for the row height.
    static QString stringFromType(Type type);

    /// The way back, compared exactly; anything unknown, numbers included, means hexadecimal.
    static Type typeFromString(QString const& key);

    /// The radix that writes a chart's values: charts are unsigned or signed decimals.
    static Type radix(Type type);
};

/// Turns the bits of a value into text. Bit 0 is the most significant bit, and the sign of a signed
/// value. Values have any width; every conversion takes every array, bits that are missing are 0,
/// and what has no text is "NA" or the like: there are no errors.
class DataFormatter
{
public:
    explicit DataFormatter(DataFormat::Type type) : m_type(type) {}

    /// The value in the chosen radix: "null" for a default-constructed array, "0" or "1" for at
    /// most one bit whatever the radix, empty for types that are none.
    QString format(QBitArray const& bits) const;

    QString toBinString(QBitArray const& bits) const;
    QString toOctString(QBitArray const& bits) const;
    QString toHexString(QBitArray const& bits) const;

    /// In quotes, the value's bytes from its last bit backwards; a blank for what is no printable
    /// ASCII.
    QString toAsciiString(QBitArray const& bits) const;

    QString toSignedMagnitudeString(QBitArray const& bits) const;
    QString toSignedString(QBitArray const& bits) const; ///< Two's complement.
    QString toUnsignedString(QBitArray const& bits) const;

    /// By the real type. Fixed-point values below give "NA" for a point beyond the value; a
    /// negative point counts as 0.
    QString toRealString(QBitArray const& bits) const;
    QString toSignedReal(QBitArray const& bits) const; ///< Sign and magnitude.
    QString toUnsignedReal(QBitArray const& bits) const;
    QString toSingleReal(QBitArray const& bits) const; ///< "NA" unless 32 bits.
    QString toDoubleReal(QBitArray const& bits) const; ///< "NA" unless 64 bits.

    /// "NA" unless 32 or 64 bits. The layout comes from the real type's widths, not from the size.
    QString toCustomReal(QBitArray const& bits) const;

    /// The exact unsigned decimal, whatever the width.
    QString toDec54AndMore(QBitArray const& bits) const;

    /// The exact decimal of a negative value in two's complement; bit 0 is taken as set.
    QString toMinusSigned54AndMoreString(QBitArray const& bits) const;

    /// The unsigned value as a double, rounded from 54 bits on.
    double toDec(QBitArray const& bits) const;

    /// A decimal text cut for drawing in a narrow place: 11 characters, or up to and with the "e"
    /// of an exponent. `text` stays as it is.
    QString toRetainPoint(QString& text) const;

    /// The value that all bits have, or -1 when they differ or there are none.
    int judge0or1(QBitArray& bits) const;

    /// Schoolbook sum of two digit strings. The result is as long as the longer one, and one more
    /// with a last carry, so leading zeros survive. Characters that are no digit count as 0.
    QString sumStringValues(QString const& a, QString const& b) const;

    /// A digit string doubled `n` times.
    QString shiftLeftString(QString const& text, unsigned long n) const;

    /// The value right-justified into `count` bytes at `bytes`, highest byte first.
    void changeBitToByte(unsigned char* bytes, unsigned int count, QBitArray const& bits) const;

    void setFormatType(DataFormat::Type type) { m_type = type; }
    DataFormat::Type formatType() const { return m_type; }

    void setRealType(VEK::RealType const& type) { m_real = type; }
    VEK::RealType const& realType() const { return m_real; }

    /// Height of a chart row in scene units; no conversion reads it.
    void setRowHeight(int height) { m_rowHeight = height; }
    int rowHeight() const { return m_rowHeight; }

private:
    DataFormat::Type m_type;
    VEK::RealType m_real;
    int m_rowHeight = 90;
};

/// The bits as a string of "0" and "1", bit 0 first.
inline QString printBitArray(QBitArray const& bits)
{
    return VEK::bit2str(bits);
}

using VEK::rightJustified;

} // namespace WaveMonitor
