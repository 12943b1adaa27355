#include "results/dataformatter.h"

#include <QLoggingCategory>
#include <QtTest>

#include <random>

using VEK::RealType;
using WaveMonitor::DataFormat;
using WaveMonitor::DataFormatter;

namespace {

/// Decimal of a text of bits by doubling a vector of digits.
QString slowDecimal(QString const& bits)
{
    QVector<int> digits{0}; // Lowest first.
    for (QChar bit : bits) {
        int carry = bit == QLatin1Char('1');
        for (int& digit : digits) {
            digit = digit * 2 + carry;
            carry = digit / 10;
            digit %= 10;
        }
        if (carry)
            digits.append(carry);
    }
    QString text;
    for (int digit : digits)
        text.prepend(QString::number(digit));
    return text;
}

/// Two's complement of a text of bits that starts with 1, as a magnitude of the same width.
QString negated(QString bits)
{
    int const lastOne = bits.lastIndexOf(QLatin1Char('1'));
    for (int i = 0; i < lastOne; ++i)
        bits[i] = bits.at(i) == QLatin1Char('1') ? QLatin1Char('0') : QLatin1Char('1');
    return bits;
}

/// Digits of `width` bits each, one group at a time.
QString slowGroups(QString const& bits, int width)
{
    int const digits = (bits.size() + width - 1) / width;
    QString const padded = bits.rightJustified(digits * width, QLatin1Char('0'));
    QString text;
    for (int i = 0; i < padded.size(); i += width) {
        int const value = padded.midRef(i, width).toInt(nullptr, 2);
        if (width == 8)
            text += value >= 32 && value <= 126 ? QChar(value) : QLatin1Char(' ');
        else
            text += QString::number(value, 16).toUpper();
    }
    return text;
}

QString randomBits(std::mt19937& random, int size)
{
    QString text(size, QLatin1Char('0'));
    for (QChar& bit : text)
        bit = QLatin1Char(random() % 2 ? '1' : '0');
    return text;
}

QBitArray bitsOf(QString const& text)
{
    QBitArray bits(text.size());
    for (int i = 0; i < text.size(); ++i)
        bits.setBit(i, text.at(i) == QLatin1Char('1'));
    return bits;
}

int messageCount = 0;
QString lastMessage;

void countMessage(QtMsgType, QMessageLogContext const&, QString const& message)
{
    ++messageCount;
    lastMessage = message;
}

} // namespace

class TestDataFormatter : public QObject
{
    Q_OBJECT

private slots:
    void names();
    void format_data();
    void format();
    void wide_data();
    void wide();
    void real_data();
    void real();
    void retainPoint_data();
    void retainPoint();
    void digitStrings();
    void helpers();
    void hexDebugLines();
    void realTypes();
};

void TestDataFormatter::names()
{
    QCOMPARE(DataFormat::typeDescription(DataFormat::UnsignedBarChart),
             QStringLiteral("Unsigend Bar Chart"));
    QCOMPARE(DataFormat::typeDescription(DataFormat::RowHeightSetting),
             QStringLiteral("Row Height Setting"));
    QCOMPARE(DataFormat::stringFromType(DataFormat::UnsignedBarChart),
             QStringLiteral("Unsigned Bar Chart"));
    for (int type = 0; type < 12; ++type)
        QCOMPARE(
            int(DataFormat::typeFromString(DataFormat::stringFromType(DataFormat::Type(type)))),
            type);
    for (int type : {-1, 12, 13})
        QVERIFY(DataFormat::stringFromType(DataFormat::Type(type)).isEmpty());
    for (int type : {-1, 13})
        QVERIFY(DataFormat::typeDescription(DataFormat::Type(type)).isEmpty());
    for (char const* key : {"4", "0", "", "Binary", "HEX", "binary ", "Row Height Setting"})
        QCOMPARE(DataFormat::typeFromString(QLatin1String(key)), DataFormat::Hexadecimal);
}

void TestDataFormatter::format_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("bits");
    QTest::addColumn<QString>("text");
    auto const row = [](int type, char const* bits, char const* text) {
        QTest::newRow(qPrintable(QStringLiteral("%1/%2").arg(type).arg(QLatin1String(bits))))
            << type << QString::fromLatin1(bits) << QString::fromLatin1(text);
    };
    for (int type = -1; type < 14; ++type) {
        row(type, "", "0");
        row(type, "0", "0");
        row(type, "1", "1");
    }
    row(0, "0010", "0010");
    row(1, "10011", "23");
    row(1, "111", "7");
    row(1, "1000", "10");
    row(4, "10011", "13");
    row(4, "1010101111001101", "ABCD");
    row(4, "00000000", "00");
    for (int type : {2, 10, 11}) {
        row(type, "1000", "-8");
        row(type, "1111", "-1");
        row(type, "0111", "7");
    }
    for (int type : {3, 8, 9}) {
        row(type, "1000", "8");
        row(type, "0000", "0");
    }
    row(6, "1000", "0");
    row(6, "1011", "-3");
    row(6, "0011", "3");
    row(5, "01111111", "\" \"");
    row(5, "01111110", "\"~\"");
    row(5, "00100000", "\" \"");
    row(5, "0100000101000010", "\"AB\"");
    row(5, "100000101000010", "\"AB\"");
    row(5, "101000010", "\" B\"");
    row(7, "1000", "0.0"); // The default real type: signed fixed point without fraction bits.
    row(7, "1011", "-3.0");
    row(12, "1011", "");
    row(-1, "1011", "");
}

void TestDataFormatter::format()
{
    QFETCH(int, type);
    QFETCH(QString, bits);
    QFETCH(QString, text);
    DataFormatter formatter(DataFormat::Hexadecimal);
    formatter.setFormatType(DataFormat::Type(type));
    QCOMPARE(formatter.format(bitsOf(bits)), text);
    QCOMPARE(formatter.format(QBitArray()), QStringLiteral("null"));
}

void TestDataFormatter::wide_data()
{
    QTest::addColumn<int>("size");
    for (int size : {2,  3,  4,  5,  8,   9,   31,  32,  33,  52,   53,  54,
                     63, 64, 65, 66, 127, 128, 129, 192, 512, 1000, 4096})
        QTest::addRow("%d", size) << size;
}

void TestDataFormatter::wide()
{
    QFETCH(int, size);
    std::mt19937 random{unsigned(size)};
    QString const zeros(size, QLatin1Char('0'));
    QString const ones(size, QLatin1Char('1'));
    QStringList values{zeros, ones, QStringLiteral("1") + zeros.mid(1),
                       QStringLiteral("0") + ones.mid(1), zeros.mid(1) + QStringLiteral("1")};
    for (int i = 0; i < 20; ++i)
        values.append(randomBits(random, size));

    DataFormatter const formatter(DataFormat::Binary);
    for (QString const& value : qAsConst(values)) {
        QBitArray const bits = bitsOf(value);
        QString const magnitude = slowDecimal(value.mid(1));
        bool const negative = value.startsWith(QLatin1Char('1'));
        QCOMPARE(formatter.toBinString(bits), value);
        QCOMPARE(WaveMonitor::printBitArray(bits), value);
        QCOMPARE(formatter.toOctString(bits), slowGroups(value, 3));
        QCOMPARE(formatter.toHexString(bits), slowGroups(value, 4));
        QCOMPARE(formatter.toAsciiString(bits), QStringLiteral("\"%1\"").arg(slowGroups(value, 8)));
        QCOMPARE(formatter.toUnsignedString(bits), slowDecimal(value));
        QCOMPARE(formatter.toDec54AndMore(bits), slowDecimal(value));
        QString const complement = QLatin1Char('-') + slowDecimal(negated(value));
        QCOMPARE(formatter.toSignedString(bits), negative ? complement : magnitude);
        if (negative)
            QCOMPARE(formatter.toMinusSigned54AndMoreString(bits), complement);
        bool const minus = negative && magnitude != QLatin1String("0");
        QCOMPARE(formatter.toSignedMagnitudeString(bits),
                 minus ? QLatin1Char('-') + magnitude : magnitude);
        if (size < 54)
            QCOMPARE(formatter.toDec(bits), double(value.toULongLong(nullptr, 2)));
    }
}

void TestDataFormatter::real_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("point");
    QTest::addColumn<QString>("bits");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("exponentWidth");
    QTest::addColumn<int>("fractionWidth");
    auto const row = [](char const* name, int type, int point, QString const& bits,
                        char const* text, int exponent = 8, int fraction = 24) {
        QTest::newRow(name) << type << point << bits << QString::fromLatin1(text) << exponent
                            << fraction;
    };
    auto const bits = [](char const* head, int size) {
        return QString::fromLatin1(head).leftJustified(size, QLatin1Char('0'));
    };
    constexpr int Huge = std::numeric_limits<int>::max();

    row("unsigned, no fraction", 3, 0, bits("1011", 4), "11.0");
    row("unsigned", 3, 2, bits("1011", 4), "2.75");
    row("unsigned, all fraction", 3, 8, bits("", 8), "0.00000000");
    row("unsigned, half", 3, 4, bits("1", 4), "0.5000");
    row("unsigned, wide whole", 3, 1, bits("1", 65), "9223372036854775808.0");
    row("unsigned, rounds to one", 3, 60, QString(60, QLatin1Char('1')),
        "0.000000000000000000000000000000000000000000000000000000000000");
    row("point beyond", 3, 5, bits("1011", 4), "NA");
    row("huge point", 3, Huge, bits("1011", 4), "NA");
    row("negative point", 3, -Huge, bits("1011", 4), "11.0");
    row("signed, minus", 2, 2, bits("1011", 4), "-0.75");
    row("signed, plus", 2, 2, bits("0111", 4), "1.75");
    row("signed, minus zero", 2, 2, bits("1", 4), "0.00");
    row("signed, point beyond", 2, 5, bits("1", 4), "NA");
    row("no such type", 4, 0, bits("1011", 4), "");

    row("single of 33 bits", 0, 0, bits("", 33), "NA");
    row("single of 64 bits", 0, 0, bits("", 64), "NA");
    row("double of 32 bits", 1, 0, bits("", 32), "NA");
    row("infinite", 0, 0, bits("011111111", 32), "INF.0");
    row("minus infinite", 0, 0, bits("111111111", 32), "-INF.0");
    row("not a number", 0, 0, bits("0111111111", 32), "NA.0");
    row("minus not a number", 0, 0, bits("1111111111", 32), "-NA.0");
    row("zero", 0, 0, bits("", 32), "0.0");
    row("minus zero", 0, 0, bits("1", 32), "-0.0");
    row("one", 0, 0, bits("001111111", 32), "1");
    row("minus 6.5", 0, 0, bits("110000001101", 32), "-6.5");
    row("a tenth", 0, 0, QStringLiteral("00111101110011001100110011001101"), "0.100000001490116");
    row("smallest", 0, 0, bits("", 31) + QLatin1Char('1'), "1.40129846432482e-45");
    row("largest", 0, 0, QStringLiteral("0111111101") + QString(22, QLatin1Char('1')),
        "3.40282346638529e+38");
    row("double one", 1, 0, bits("001111111111", 64), "1", 11, 53);
    row("double smallest", 1, 0, bits("", 63) + QLatin1Char('1'), "4.94065645841247e-324", 11, 53);
    row("double read with the widths of single", 1, 0, bits("001111111", 64), "1");

    row("empty exponent", 0, 0, bits("01", 32), "2.12132034355964", 0, 24);
    row("no fraction", 0, 0, bits("001111111", 32), "1", 8, 1);
    row("negative widths", 0, 0, bits("01", 32), "1.4142135623731", -5, -5);
    row("fraction beyond the value", 0, 0, bits("0011111111", 32), "1.5", 8, Huge);
    row("exponent beyond the value", 0, 0, bits("", 32), "0.0", Huge, Huge);
    row("exponent a little beyond the value", 0, 0, bits("01", 32), "2", 33, 24);
    row("out of range", 0, 0, QString(32, QLatin1Char('1')), "-inf", 33, 24);
}

void TestDataFormatter::real()
{
    QFETCH(int, type);
    QFETCH(int, point);
    QFETCH(QString, bits);
    QFETCH(QString, text);
    QFETCH(int, exponentWidth);
    QFETCH(int, fractionWidth);
    RealType real;
    real.type = type;
    real.binaryPoint = point;
    real.exponentWidth = exponentWidth;
    real.fractionWidth = fractionWidth;
    DataFormatter formatter(DataFormat::Real);
    formatter.setRealType(real);
    QCOMPARE(formatter.format(bitsOf(bits)), text);
}

void TestDataFormatter::retainPoint_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("kept");
    auto const row = [](char const* text, char const* kept) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(kept);
    };
    row("", "");
    row("12345.12345", "12345.12345");
    row("12345.123456", "12345.12345");
    row("1234567890.5", "1234567890.0");
    row("1234567890.", "1234567890.");
    row("1.4e-45", "1.4e");
    row("1.40129846e-45", "1.40129846e");
    row("1.401298464e-45", "1.401298464");
    row("e", "e");
}

void TestDataFormatter::retainPoint()
{
    QFETCH(QString, text);
    QFETCH(QString, kept);
    QCOMPARE(DataFormatter(DataFormat::Real).toRetainPoint(text), kept);
}

void TestDataFormatter::digitStrings()
{
    DataFormatter const formatter(DataFormat::Binary);
    auto const sum = [&formatter](char const* a, char const* b) {
        return formatter.sumStringValues(QLatin1String(a), QLatin1String(b));
    };
    QCOMPARE(sum("0", "0"), QStringLiteral("0"));
    QCOMPARE(sum("", ""), QString());
    QCOMPARE(sum("", "7"), QStringLiteral("7"));
    QCOMPARE(sum("999", "1"), QStringLiteral("1000"));
    QCOMPARE(sum("007", "5"), QStringLiteral("012"));
    QCOMPARE(sum("x9z", "1"), QStringLiteral("091"));
    QCOMPARE(formatter.shiftLeftString(QStringLiteral("3"), 0), QStringLiteral("3"));

    // The whole conversion by these means gives the same as the fast one.
    std::mt19937 random{54};
    for (int size : {54, 61, 200}) {
        QBitArray const bits = bitsOf(randomBits(random, size));
        std::vector<unsigned char> bytes(std::size_t(size + 7) / 8);
        formatter.changeBitToByte(bytes.data(), unsigned(bytes.size()), bits);
        QString result = QStringLiteral("0");
        for (std::size_t k = 0; k < bytes.size(); ++k)
            result = formatter.sumStringValues(
                result,
                formatter.shiftLeftString(QString::number(bytes[k]), 8 * (bytes.size() - 1 - k)));
        QCOMPARE(formatter.toDec54AndMore(bits), result);
    }
}

void TestDataFormatter::helpers()
{
    DataFormatter const formatter(DataFormat::Hexadecimal);
    QCOMPARE(formatter.rowHeight(), 90);
    QCOMPARE(formatter.formatType(), DataFormat::Hexadecimal);

    unsigned char bytes[3] = {9, 9, 9};
    formatter.changeBitToByte(bytes, 3, bitsOf(QStringLiteral("1000000001")));
    QCOMPARE(QByteArray(reinterpret_cast<char*>(bytes), 3), QByteArray("\0\2\1", 3));
    formatter.changeBitToByte(bytes, 1, bitsOf(QStringLiteral("1000000001")));
    QCOMPARE(int(bytes[0]), 1);
    formatter.changeBitToByte(nullptr, 0, QBitArray(8, true));

    auto const judged = [&formatter](char const* text) {
        QBitArray bits = bitsOf(QLatin1String(text));
        return formatter.judge0or1(bits);
    };
    QCOMPARE(judged(""), -1);
    QCOMPARE(judged("0"), 0);
    QCOMPARE(judged("111111111"), 1);
    QCOMPARE(judged("111111110"), -1);

    // The highest word is worth 2 to the power 1024, which no double holds: it must not spoil
    // zeros.
    QBitArray wide(1056);
    wide.setBit(1055);
    QCOMPARE(formatter.toDec(wide), 1.0);
    wide.setBit(1056 - 54);
    QCOMPARE(formatter.toDec(wide), 9007199254740992.0);
    QCOMPARE(formatter.toDec(QBitArray()), 0.0);

    QBitArray const none;
    QCOMPARE(formatter.toBinString(none) + formatter.toOctString(none) +
                 formatter.toHexString(none),
             QString());
    QCOMPARE(formatter.toAsciiString(none), QStringLiteral("\"\""));
    QCOMPARE(formatter.toSignedString(none) + formatter.toSignedMagnitudeString(none),
             QStringLiteral("00"));
    QCOMPARE(formatter.toMinusSigned54AndMoreString(QBitArray(1, true)), QStringLiteral("-1"));
    QCOMPARE(formatter.toSignedReal(none) + formatter.toCustomReal(none), QStringLiteral("0.0NA"));
}

void TestDataFormatter::hexDebugLines()
{
    QtMessageHandler const before = qInstallMessageHandler(countMessage);
    DataFormatter const formatter(DataFormat::Hexadecimal);
    messageCount = 0;
    formatter.format(bitsOf(QStringLiteral("10011")));
    int const silent = messageCount;
    QLoggingCategory::setFilterRules(QStringLiteral("vek.results.formatter.debug=true"));
    formatter.format(bitsOf(QStringLiteral("10011")));
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(before);
    QCOMPARE(silent, 0);
    QCOMPARE(messageCount, 2);
    QCOMPARE(lastMessage, QStringLiteral("00010011"));
}

void TestDataFormatter::realTypes()
{
    for (int type = 0; type < 4; ++type)
        QCOMPARE(
            int(RealType::FixedFloatingtypeFromString(RealType::stringFromFixedFloatingType(type))),
            type);
    QCOMPARE(RealType::stringFromFixedFloatingType(1), QStringLiteral("double"));
    QVERIFY(RealType::stringFromFixedFloatingType(4).isEmpty());
    QVERIFY(RealType::stringFromFixedFloatingType(-1).isEmpty());
    QCOMPARE(RealType::FixedFloatingtypeFromString(QStringLiteral("Single")), VEK::FixedSigned);

    RealType const fixed;
    RealType other;
    other.exponentWidth = 11;
    other.fractionWidth = 53;
    QVERIFY(fixed.equal(other));
    other.binaryPoint = 3;
    QVERIFY(!fixed.equal(other));
    other.kind = 1;
    RealType floating;
    QVERIFY(!floating.equal(other));
    floating.kind = 1;
    QVERIFY(floating.equal(other)); // The point of a floating kind has no meaning.
    other.type = VEK::FloatingDouble;
    QVERIFY(!floating.equal(other));
    other.initial();
    QVERIFY(fixed.equal(other));
    QCOMPARE(other.fractionWidth, 24);
}

QTEST_GUILESS_MAIN(TestDataFormatter)
#include "tst_dataformatter.moc"
