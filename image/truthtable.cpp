#include "image/truthtable.h"

#include "model/bits.h"
#include "model/capturecore.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <vector>

namespace VEK {
namespace {

bool isLetter(char character)
{
    return character >= 'A' && character <= 'Z';
}

/// The bound of every loop of `calcuate`: not the end of the text but the code of the character
/// itself. A NUL ends a loop, and so does a `!` from position 33 on, a `&` from 38, a `0` from 48,
/// a `1` from 49 and a letter from 65. Deliberate: tables of very long expressions depend on it.
bool isWithin(int position, char character)
{
    return position < int(static_cast<unsigned char>(character));
}

/// No loop bounded by `isWithin` gets further.
constexpr int HighestCode = 255;

/// The value of `letter`; one without a value reads as the NUL behind them all.
char valueOf(char letter, char const* values, int count)
{
    int const index = letter - 'A';
    return index >= 0 && index < count ? values[index] : '\0';
}

bool binaryResult(char op, bool a, bool b)
{
    if (op == '&')
        return a && b;
    return op == '|' ? (a || b) : (a != b);
}

/// Runs the stack of `calcuate`; false when an operand is missing.
bool runStack(QByteArray const& text, QByteArray& stack)
{
    for (int i = 0; isWithin(i, text.constData()[i]); ++i) {
        char const character = text.at(i);
        if (character == '0' || character == '1') {
            stack.append(character);
        } else if (character == '!') {
            if (stack.isEmpty())
                return false;
            stack[stack.size() - 1] = stack.back() == '1' ? '0' : '1';
        } else if (character == '&' || character == '|' || character == '^') {
            if (stack.size() < 2)
                return false;
            bool const b = stack.back() == '1';
            stack.chop(1);
            bool const a = stack.back() == '1';
            stack[stack.size() - 1] = binaryResult(character, a, b) ? '1' : '0';
        }
    }
    return true;
}

/// Row by row with `calcuate`.
QString plainTable(char const* postfix, char const* letters, int rows)
{
    int const count = int(std::strlen(letters));
    QString table(rows, Qt::Uninitialized);
    QByteArray digits(count, '0');
    char text[40];
    for (int i = 0; i < rows; ++i) {
        itoa(i, text, 2);
        int const length = int(std::strlen(text));
        std::fill(digits.begin(), digits.end(), '0');
        if (count)
            std::memcpy(digits.data() + count - length, text, std::size_t(length));
        table[i] = QLatin1Char(calcuate(postfix, letters, digits.constData()));
    }
    return table;
}

/// Whether `calcuate` gets to the end of the text whatever the values are. Only then is a text
/// worth what it says.
bool isWalkedThrough(char const* postfix)
{
    for (int i = 0; postfix[i]; ++i) {
        char const character = postfix[i];
        // a letter turns into a digit, and the lower digit ends the walk sooner
        if (!isWithin(i, isLetter(character) ? '0' : character))
            return false;
    }
    return true;
}

/// Whether the stack of `calcuate` ends with one value, which depends on the text only.
bool leavesOneValue(char const* postfix)
{
    int depth = 0;
    for (; *postfix; ++postfix) {
        if (isLetter(*postfix))
            ++depth;
        else if (*postfix == '!' && depth < 1)
            return false;
        else if (std::strchr("&|^", *postfix) && depth-- < 2)
            return false;
    }
    return depth == 1;
}

/// The values of 2,048 rows: enough that walking through the text hardly counts, and few enough
/// that a stack of them stays in the fastest cache.
using Block = std::array<quint64, 32>;
constexpr int BlockRows = 64 * int(std::tuple_size_v<Block>);

/// Bit `bit` of the row numbers from `BlockRows` * `block` on.
Block rowBits(int bit, int block)
{
    constexpr quint64 LowBits[] = {0xAAAAAAAAAAAAAAAAu, 0xCCCCCCCCCCCCCCCCu, 0xF0F0F0F0F0F0F0F0u,
                                   0xFF00FF00FF00FF00u, 0xFFFF0000FFFF0000u, 0xFFFFFFFF00000000u};
    constexpr int Count = int(std::size(LowBits));
    Block rows;
    for (unsigned i = 0; i < rows.size(); ++i) {
        unsigned const word = unsigned(block) * unsigned(rows.size()) + i;
        rows[i] = bit < Count ? LowBits[bit] : 0 - quint64((word >> (bit - Count)) & 1);
    }
    return rows;
}

template <typename Operation>
void applyTo(Block& a, Block const& b, Operation operation)
{
    std::transform(a.begin(), a.end(), b.begin(), a.begin(), operation);
}

/// The text leaves one value, and `calcuate` would walk through it.
Block evaluateBlock(char const* postfix, int count, int block)
{
    std::array<Block, 64> stack; // no value stands behind position 48 of such a text
    unsigned depth = 0;
    for (; *postfix; ++postfix) {
        char const character = *postfix;
        if (isLetter(character)) {
            stack[depth++] = rowBits(count - 1 - (character - 'A'), block);
            continue;
        }
        switch (character) {
        case '!':
            for (quint64& word : stack[depth - 1])
                word = ~word;
            break;
        case '&':
            --depth;
            applyTo(stack[depth - 1], stack[depth], std::bit_and<quint64>());
            break;
        case '|':
            --depth;
            applyTo(stack[depth - 1], stack[depth], std::bit_or<quint64>());
            break;
        case '^':
            --depth;
            applyTo(stack[depth - 1], stack[depth], std::bit_xor<quint64>());
            break;
        }
    }
    return stack[0];
}

/// A block at a time.
QString parallelTable(char const* postfix, int count, int rows)
{
    std::vector<Block> blocks;
    for (int block = 0; block * BlockRows < rows; ++block) {
        blocks.push_back(evaluateBlock(postfix, count, block));
        for (quint64& word : blocks.back())
            word = qToLittleEndian(word);
    }
    return bit2str(QBitArray::fromBits(reinterpret_cast<char const*>(blocks.data()), rows));
}

/// Whether a text holds a capital letter that is part of no unit.
bool hasForeignLetter(QString text)
{
    for (int i = CoreUnitCount - 1; i >= 0; --i)
        text.replace(QStringLiteral("M%1").arg(i), QStringLiteral(" "));
    QByteArray const rest = text.toLatin1();
    return std::any_of(rest.begin(), rest.end(), isLetter);
}

} // namespace

QString changeExpItem(QString text)
{
    char letter = 'A';
    // from high to low: M10 must be gone before M1 can match its head
    for (int i = CoreUnitCount - 1; i >= 0; --i) {
        QString const unit = QStringLiteral("M%1").arg(i);
        if (text.contains(unit))
            text.replace(unit, QString(QLatin1Char(letter++)));
    }
    return text;
}

int priority(char character)
{
    switch (character) {
    case '!':
        return 4;
    case '&':
        return 3;
    case '^':
        return 2;
    case '|':
        return 1;
    default:
        return 0;
    }
}

void translet(char const* infix, char* postfix)
{
    QByteArray stack;
    auto const popToOutput = [&] {
        *postfix++ = stack.back();
        stack.chop(1);
    };
    for (; *infix; ++infix) {
        char const character = *infix;
        if (isLetter(character)) {
            *postfix++ = character;
        } else if (!std::strchr("()!&^|", character)) {
            continue; // a blank between tokens, say
        } else if (stack.isEmpty() || character == '(') {
            stack.append(character);
        } else if (character == ')') {
            while (!stack.isEmpty() && stack.back() != '(')
                popToOutput();
            stack.chop(1);
        } else {
            while (!stack.isEmpty() && stack.back() != '(' &&
                   priority(stack.back()) >= priority(character))
                popToOutput();
            stack.append(character);
        }
    }
    while (!stack.isEmpty())
        popToOutput();
    *postfix = '\0';
}

void getOperand(char const* text, char* out)
{
    char* end = out;
    for (; *text; ++text) {
        if (isLetter(*text) && std::find(out, end, *text) == end)
            *end++ = *text;
    }
    *end = '\0';
}

void sort(char* text)
{
    std::sort(text, text + std::strlen(text));
}

void itoa(int value, char* out, int base)
{
    *out = '\0';
    if (base < 2 || base > 16)
        return;
    bool const negative = base == 10 && value < 0;
    unsigned rest = negative ? 0u - unsigned(value) : unsigned(value);
    char* end = out;
    do {
        *end++ = "0123456789ABCDEF"[rest % unsigned(base)];
        rest /= unsigned(base);
    } while (rest);
    if (negative)
        *end++ = '-';
    *end = '\0';
    std::reverse(out, end);
}

char calcuate(char const* postfix, char const* letters, char const* values)
{
    int const valueCount = int(std::strlen(values));
    QByteArray text(postfix, int(qstrnlen(postfix, HighestCode)));
    for (int i = 0; isWithin(i, text.constData()[i]); ++i) {
        char const character = text.at(i);
        for (int j = 0; isWithin(j, letters[j]); ++j) {
            if (character == letters[j])
                text[i] = valueOf(character, values, valueCount);
        }
    }
    QByteArray stack;
    if (!runStack(text, stack) || stack.size() != 1)
        return 'x';
    return stack.front();
}

QString logicTruthTable(QString const& expression)
{
    QByteArray infix = changeExpItem(expression).toLatin1();
    infix.replace('\0', ' '); // is skipped too, and ends no text
    QByteArray postfix(infix.size() + 1, '\0');
    translet(infix.constData(), postfix.data());
    char letters['Z' - 'A' + 2];
    getOperand(postfix.constData(), letters);
    sort(letters);
    int const count = int(std::strlen(letters));
    int const rows = count < CoreUnitCount ? 1 << count : MaxTruthTable;
    QString const broken(rows, QLatin1Char('x'));
    if (hasForeignLetter(expression))
        return broken;
    if (!isWalkedThrough(postfix.constData()))
        return plainTable(postfix.constData(), letters, rows);
    return leavesOneValue(postfix.constData()) ? parallelTable(postfix.constData(), count, rows)
                                               : broken;
}

} // namespace VEK
