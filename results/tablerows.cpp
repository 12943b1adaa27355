#include "results/tablerows.h"

#include <QtEndian>

#include <algorithm>
#include <limits>

namespace VEK {
namespace {

using std::string_view;

constexpr int NumberBits = 64;
constexpr string_view HexMark = "0x";

bool isHexadecimal(string_view value)
{
    return value.substr(0, HexMark.size()) == HexMark;
}

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool parseDecimal(string_view digits, quint64& number)
{
    number = 0;
    for (char const c : digits) {
        quint64 const digit = quint64(c) - '0';
        if (digit > 9 || number > (std::numeric_limits<quint64>::max() - digit) / 10)
            return false;
        number = number * 10 + digit;
    }
    return !digits.empty();
}

/// Eight values of one character, each behind a comma and a blank. The result is of their bits, the
/// first lowest; what is neither bit nor separator shows in `wrong`.
quint64 gatherEight(char const* at, quint64& wrong)
{
    static constexpr char Zeros[] = ", 0, 0, 0, 0, 0, 0, 0, 0";
    constexpr quint64 Bits[] = {0x0000010000010000u, 0x0001000001000001u, 0x0100000100000100u};
    quint64 words[3];
    for (int i = 0; i < 3; ++i) {
        words[i] =
            qFromLittleEndian<quint64>(at + i * 8) ^ qFromLittleEndian<quint64>(Zeros + i * 8);
        wrong |= words[i] & ~Bits[i];
    }
    // bits 0, 24 and 48 become bits 0 to 2
    auto const fold = [](quint64 word) { return (word | word >> 23 | word >> 46) & 7; };
    return (fold(words[0] >> 16) & 3) | fold(words[1]) << 2 | fold(words[2] >> 8) << 5;
}

/// Values of one character behind separators of `Gap` bytes: what of them is no bit, or no
/// separator, sets bits of the result.
template <int Gap>
unsigned gatherBits(char const* at, char const* separator, int first, int count, quint64* row)
{
    unsigned wrong = 0;
    int i = first;
    if (Gap == 2) {
        quint64 odd = 0;
        for (; i + 8 <= first + count; i += 8, at += 24) {
            quint64 const bits = gatherEight(at, odd);
            row[i / 64] |= bits << (i % 64);
            if (i % 64 > 56)
                row[i / 64 + 1] |= bits >> (64 - i % 64);
        }
        wrong = odd != 0 ? 2 : 0;
    }
    for (; i < first + count; ++i, at += Gap + 1) {
        for (int k = 0; k < Gap; ++k)
            wrong |= unsigned(at[k] ^ separator[k]);
        unsigned const bit = unsigned(at[Gap] ^ '0');
        wrong |= bit & ~1u;
        row[i / 64] |= quint64(bit & 1) << (i % 64);
    }
    return wrong;
}

} // namespace

bool TableRows::read(QString& error)
{
    string_view line;
    while (m_error.isEmpty() && m_lines.next(line)) {
        ++m_line;
        if (!readRow(line))
            break;
    }
    if (m_error.isEmpty() && m_lines.tooLong())
        fail(QStringLiteral("the line is too long"));
    if (m_error.isEmpty() && !m_rows)
        fail(QStringLiteral("there are no samples"));
    error = m_error;
    return m_error.isEmpty();
}

bool TableRows::fail(QString const& what)
{
    m_error = QStringLiteral("line %1: %2").arg(m_line).arg(what);
    return false;
}

bool TableRows::readRow(string_view line)
{
    bool const isCut = m_lines.isCut();
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    string_view const end = m_form.end;
    if (!end.empty() && line.size() >= end.size() && line.substr(line.size() - end.size()) == end)
        line.remove_suffix(end.size());
    else if (isCut)
        return fail(QStringLiteral("the file ends within the row"));
    std::size_t at = 0;
    if (!readNumber(line, at))
        return false;
    if (!m_rows)
        measure(line, at);
    for (std::size_t column = 0; column < m_columns.size();) {
        if (readBits(line, at, column))
            continue;
        if (line.substr(at, m_form.separator.size()) != m_form.separator)
            return fail(
                QStringLiteral("of %1 values only %2 are there").arg(m_columns.size()).arg(column));
        at += m_form.separator.size();
        std::size_t const stop = valueEnd(line, at, m_columns[column]);
        if (!readValue(m_columns[column], line.substr(at, stop - at)))
            return false;
        at = stop;
        ++column;
    }
    if (at != line.size())
        return fail(QStringLiteral("there are more than %1 values").arg(m_columns.size()));
    return m_rows->next() || fail(QStringLiteral("these are more samples than a capture has"));
}

/// The number in front of a row, which tells whether rows are missing.
bool TableRows::readNumber(string_view line, std::size_t& at)
{
    at = std::min(line.find(m_form.separator), line.size());
    quint64 number = 0;
    if (!parseDecimal(line.substr(0, at), number))
        return fail(QStringLiteral("it does not begin with a time"));
    int const row = m_rows ? m_rows->count() : 0;
    if (row == (m_form.isFromZero ? 1 : 0))
        m_step = number;
    bool const isNext = m_form.isFromZero && row == 0 ? number == 0 : number == m_before + m_step;
    m_isUneven = m_isUneven || !isNext;
    if (m_isUneven && (m_form.isEven || (row > 0 && number < m_before)))
        return fail(QStringLiteral("the time %1 does not follow on the one before").arg(number));
    m_before = number;
    return true;
}

/// What the values of the first row take.
void TableRows::measure(string_view line, std::size_t at)
{
    int place = 0;
    for (TableColumn& column : m_columns) {
        at = std::min(at + m_form.separator.size(), line.size());
        std::size_t const stop = valueEnd(line, at, column);
        bool const isPrefixed = isHexadecimal(line.substr(at, stop - at));
        int const digits = int(stop - at) - (isPrefixed ? int(HexMark.size()) : 0);
        if (column.kind == TableColumn::Number && isPrefixed)
            column.kind = TableColumn::Hexadecimal;
        column.first = place;
        if (column.kind == TableColumn::Hexadecimal)
            column.width = 4 * digits;
        else
            column.width = column.kind == TableColumn::Number
                               ? NumberBits
                               : int(column.kind == TableColumn::Bit);
        place += column.width;
        at = stop;
    }
    m_rows = std::make_unique<PackedRows>(place);
    for (std::size_t i = m_columns.size(), end = i; i-- > 0; m_columns[i].runEnd = end)
        end = m_columns[i].kind == TableColumn::Bit ? end : i;
}

/// A text in quotes may hold separators.
std::size_t TableRows::valueEnd(string_view line, std::size_t at, TableColumn const& column) const
{
    std::size_t const end = at + column.quotedLength;
    if (column.quotedLength && at < line.size() && line[at] == '"' && end <= line.size() &&
        line[end - 1] == '"')
        return end;
    return std::min(line.find(m_form.separator, at), line.size());
}

/// All single bits from a column on, at once; false when there are none, or one is wrong.
bool TableRows::readBits(string_view line, std::size_t& at, std::size_t& column)
{
    std::size_t const end = m_columns[column].runEnd;
    std::size_t const gap = m_form.separator.size();
    std::size_t const bytes = (end - column) * (gap + 1);
    if (end == column || line.size() - at < bytes)
        return false;
    char const* const place = line.data() + at;
    int const first = m_columns[column].first;
    auto const gather = gap == 2 ? gatherBits<2> : gatherBits<1>;
    if (gather(place, m_form.separator.data(), first, int(end - column), m_rows->row()))
        return false;
    at += bytes;
    column = end;
    return true;
}

bool TableRows::readValue(TableColumn const& column, string_view value)
{
    switch (column.kind) {
    case TableColumn::Passed:
        return true;
    case TableColumn::Bit:
        if (value != "0" && value != "1")
            return fail(QStringLiteral("\"%1\" is neither 0 nor 1")
                            .arg(QString::fromUtf8(value.data(),
                                                   int(std::min<std::size_t>(value.size(), 40)))));
        if (value == "1")
            setBit(column.first);
        return true;
    case TableColumn::Hexadecimal:
        return readHexadecimal(column, isHexadecimal(value) ? value.substr(HexMark.size()) : value);
    case TableColumn::Number:
        return readDecimal(column, value);
    }
    return false;
}

bool TableRows::readHexadecimal(TableColumn const& column, string_view digits)
{
    if (digits.empty() || int(digits.size()) * 4 != column.width)
        return fail(QStringLiteral("a value has not the length of those before"));
    for (std::size_t i = 0; i < digits.size(); ++i) {
        int const digit = digitOf(digits[i]);
        if (digit < 0)
            return fail(QStringLiteral("a value is not hexadecimal"));
        for (int bit = 0; bit < 4; ++bit) {
            if (digit >> (3 - bit) & 1)
                setBit(column.first + int(i) * 4 + bit);
        }
    }
    return true;
}

bool TableRows::readDecimal(TableColumn const& column, string_view digits)
{
    quint64 number = 0;
    if (!parseDecimal(digits, number))
        return fail(QStringLiteral("a value is no number of up to 64 bits"));
    for (int bit = 0; number; ++bit, number >>= 1) {
        if (number & 1)
            setBit(column.first + column.width - 1 - bit);
    }
    return true;
}

void TableRows::setBit(int place)
{
    m_rows->row()[place / 64] |= quint64(1) << (place % 64);
}

} // namespace VEK
