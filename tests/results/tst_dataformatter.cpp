#include "results/dataformatter.h"

#include "windows.h"

#include <QtTest>

#include <limits>

using namespace WaveMonitor;
using VEK::RealType;

namespace {

/// Decimal of a text of bits, by doubling a text of digits.
QString slowDecimal(QString const& bits)
{
    DataFormatter const formatter(DataFormat::Binary);
    QString digits = "0";
    for (QChar bit : bits)
        digits = formatter.sumStringValues(formatter.sumStringValues(digits, digits), bit);
    return digits;
}

/// Two's complement of a text of bits that starts with 1, as a magnitude of the same width.
QString negated(QString bits)
{
    for (int i = bits.lastIndexOf('1'); i-- > 0;)
        bits[i] = bits.at(i) == '1' ? '0' : '1';
    return bits;
}

/// Digits of `width` bits each, one group at a time.
QString slowGroups(QString const& bits, int width)
{
    QString const padded = QString((width - bits.size() % width) % width, '0') + bits;
    QString text;
    for (int i = 0; i < padded.size(); i += width) {
        int const value = padded.mid(i, width).toInt(nullptr, 2);
        QChar const character = value >= 32 && value <= 126 ? QChar(value) : QChar(' ');
        text += width == 8 ? QString(character) : QString::number(value, 16).toUpper();
    }
    return text;
}

QBitArray bitsOf(QString const& text)
{
    return text.isEmpty() ? QBitArray(0) : VEK::str2bit(text);
}

QString formatted(int type, QString const& bits, RealType const& real = {})
{
    DataFormatter formatter(DataFormat::Hexadecimal);
    formatter.setFormatType(DataFormat::Type(type));
    formatter.setRealType(real);
    return formatter.format(bitsOf(bits));
}

} // namespace

class TestDataFormatter : public QObject
{
    Q_OBJECT

private slots:
    void names()
    {
        for (int i = -1; i < 14; ++i) {
            auto const type = DataFormat::Type(i);
            QString const key = DataFormat::stringFromType(type);
            QCOMPARE(key.isEmpty(), i < 0 || i > 11);
            QCOMPARE(DataFormat::typeFromString(key),
                     key.isEmpty() ? DataFormat::Hexadecimal : type);
        }
        QCOMPARE(DataFormat::stringFromType(DataFormat::UnsignedBarChart), "Unsigned Bar Chart");
        QCOMPARE(DataFormat::typeDescription(DataFormat::UnsignedBarChart), "Unsigend Bar Chart");
        QCOMPARE(DataFormat::typeFromString("Binary"), DataFormat::Hexadecimal);
        QCOMPARE(int(RealType::FixedFloatingtypeFromString("double")), 1);
        QVERIFY(RealType().equal({0, 2, 0, 11, 53})); // The widths are not compared.
    }

    void format_data()
    {
        addTextColumns();
        // Values of `size` bits, with zeros behind those that are given.
        using Rows = std::initializer_list<std::pair<QString, QString>>;
        auto const add = [](int type, int size, Rows rows, RealType const& real = {}) {
            for (auto const& [bits, text] : rows)
                row(qPrintable(QString("%1/%2/%3").arg(type).arg(size).arg(text)),
                    formatted(type, bits.leftJustified(size, '0'), real), text);
        };
        auto const real = [&add](RealType const& real, int size, Rows rows) {
            add(7, size, rows, real);
        };
        for (int type : {-1, 0, 11, 12}) {
            add(type, 0, {{"", "0"}});
            add(type, 1, {{"0", "0"}, {"1", "1"}});
        }
        for (int type : {-1, 12})
            add(type, 4, {{"1011", ""}});
        add(0, 4, {{"0010", "0010"}});
        add(1, 5, {{"10011", "23"}});
        for (int type : {2, 10, 11})
            add(type, 4, {{"1000", "-8"}});
        for (int type : {3, 8, 9})
            add(type, 4, {{"1000", "8"}});
        // A multiple of 10^19 at which the first guess at the quotient is one too low.
        QString const tricky =
            QString::number(9999999999999999632u, 2) + QString::number(18401819125114994688u, 2);
        add(3, 128, {{tricky, "184467440737095509390000000000000000000"}});
        add(4, 20, {{"00001010101111001101", "0ABCD"}});
        add(5, 15, {{"100000101111110", "\"A~\""}, {"100000101111111", "\"A \""}});
        add(6, 4, {{"1000", "0"}, {"1011", "-3"}});
        add(7, 4, {{"1011", "-3.0"}});

        // Fixed point: kind, type, point.
        constexpr int Huge = std::numeric_limits<int>::max();
        real({0, 3, 0}, 4, {{"1011", "11.0"}});
        real({0, 3, 2}, 4, {{"1011", "2.75"}, {"0001", "0.25"}});
        real({0, 3, 1}, 65, {{"1", "9223372036854775808.0"}});
        real({0, 3, 8}, 8, {{"0", "0.00000000"}, {"", "0.00000000"}});
        real({0, 3, 54}, 54, {{QString(54, '1'), "0." + QString(54, '0')}}); // Rounds up to 1.
        for (int point : {5, Huge})
            real({0, 3, point}, 4, {{"1011", "NA"}});
        real({0, 3, -Huge}, 4, {{"1011", "11.0"}});
        real({0, 2, 2}, 4, {{"1011", "-0.75"}, {"0111", "1.75"}, {"1000", "0.00"}});
        real({0, 2, 5}, 4, {{"1000", "NA"}});
        real({0, 4, 0}, 4, {{"1011", ""}});

        // Floating point, in the layout of the widths.
        RealType const single{1, 0};
        RealType const twice{1, 1, 0, 11, 53};
        QString const ones(32, '1');
        QString const zeros(63, '0');
        for (int size : {33, 64})
            real(single, size, {{"", "NA"}});
        real(twice, 32, {{"", "NA"}});
        real(single, 32, {{"011111111", "INF.0"}, {"111111111", "-INF.0"}, {"0111111111", "NA.0"}});
        real(single, 32, {{ones, "-NA.0"}, {"", "0.0"}, {"1", "-0.0"}, {"001111111", "1"}});
        real(single, 32,
             {{"110000001101", "-6.5"}, {zeros.left(31) + "1", "1.40129846432482e-45"}});
        real(single, 32, {{"0111111101" + ones.left(22), "3.40282346638529e+38"}});
        real(twice, 64, {{"001111111111", "1"}, {zeros + "1", "4.94065645841247e-324"}});
        real({1, 1}, 64, {{"001111111", "1"}}); // Read with the widths of a single one.
        real({1, 0, 0, 0, 24}, 32, {{"01", "2.12132034355964"}}); // An empty exponent is normal.
        real({1, 0, 0, -5, -5}, 32, {{"01", "1.4142135623731"}});
        real({1, 0, 0, 8, Huge}, 32, {{"0011111111", "1.5"}});
        real({1, 0, 0, Huge, Huge}, 32, {{"", "0.0"}});
        real({1, 0, 0, 33, 24}, 32, {{ones, "-inf"}});
    }

    void format() { compareTexts(); }
    /// Around the widths of machine words and of exact doubles.
    void widths()
    {
        std::mt19937 random{1};
        QStringList values;
        for (int size : {2, 3, 8, 9, 31, 32, 33, 53, 54, 63, 64, 65, 128, 129, 500}) {
            QString const zeros(size - 1, '0');
            QString const ones(size - 1, '1');
            values += {"0" + zeros, "1" + ones, "1" + zeros, "0" + ones, zeros + "1"};
            for (int i = 0; i < 20; ++i)
                values += randomSamples(random, size);
        }
        values += '1' + randomSamples(random, 4699); // More limbs than stand on the stack.

        DataFormatter const formatter(DataFormat::Binary);
        for (QString const& value : qAsConst(values)) {
            QBitArray const bits = bitsOf(value);
            QString const decimal = slowDecimal(value);
            QString magnitude = slowDecimal(value.mid(1));
            QString complement = decimal;
            if (value.startsWith('1')) {
                complement = "-" + slowDecimal(negated(value));
                magnitude.prepend(magnitude == "0" ? "" : "-");
                QCOMPARE(formatter.toMinusSigned54AndMoreString(bits), complement);
            }
            QCOMPARE(formatter.toBinString(bits), value);
            QCOMPARE(formatter.toOctString(bits), slowGroups(value, 3));
            QCOMPARE(formatter.toHexString(bits), slowGroups(value, 4));
            QCOMPARE(formatter.toAsciiString(bits), '"' + slowGroups(value, 8) + '"');
            QCOMPARE(formatter.toUnsignedString(bits), decimal);
            QCOMPARE(formatter.toDec54AndMore(bits), decimal);
            QCOMPARE(formatter.toSignedString(bits), complement);
            QCOMPARE(formatter.toSignedMagnitudeString(bits), magnitude);
            if (value.size() < 54)
                QCOMPARE(formatter.toDec(bits), decimal.toDouble());
        }
    }

    void helpers()
    {
        DataFormatter const formatter(DataFormat::Hexadecimal);
        QCOMPARE(formatter.sumStringValues("999", "1"), "1000");
        QCOMPARE(formatter.sumStringValues("x9z", "1"), "091");
        QCOMPARE(formatter.shiftLeftString("3", 54), "54043195528445952");

        QMap<QString, QString> const kept{{"12345.123456", "12345.12345"},
                                          {"1234567890.5", "1234567890.0"},
                                          {"1.401298464e-45", "1.401298464"}};
        for (QString text : kept.keys())
            QCOMPARE(formatter.toRetainPoint(text), kept[text]);

        // The highest word is worth more than a double holds: it must not spoil zeros.
        QCOMPARE(formatter.toDec(bitsOf(QString(1002, '0') + "1" + QString(53, '0'))),
                 9007199254740992.0);

        QBitArray const none; // Which format() never hands on.
        QCOMPARE(formatter.toHexString(none) + formatter.toAsciiString(none), "\"\"");
        QCOMPARE(formatter.toSignedString(none) + formatter.toSignedMagnitudeString(none), "00");
        QCOMPARE(formatter.toSignedReal(none) + formatter.toCustomReal(none), "0.0NA");
    }
};

QTEST_GUILESS_MAIN(TestDataFormatter)
#include "tst_dataformatter.moc"
