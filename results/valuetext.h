#pragma once

#include "model/bits.h"

#include <algorithm>
#include <array>

/// Digits of numbers of up to 64 bits, written into a buffer of the caller's. `Char` is `ushort`
/// for a QString and `char` for bytes; every function returns the place behind what it wrote.
namespace VEK {

/// The number that `count` bits (1 to 64) from `start` on stand for, the first of them highest.
/// Positions outside the vector read as 0.
inline quint64 numberAt(QBitArray const& bits, qint64 start, int count)
{
    return mirrored(packedBits(bits, start, count)) >> (64 - count);
}

/// For every number of `Digits` digits in a radix of 2 to the power of `DigitBits`, its digits.
template <typename Char, int DigitBits, int Digits>
constexpr auto makeDigitTable()
{
    constexpr int Size = 1 << (DigitBits * Digits);
    std::array<std::array<Char, Digits>, Size> table{};
    for (int i = 0; i < Size; ++i) {
        for (int k = 0; k < Digits; ++k) {
            int const digit = (i >> (DigitBits * (Digits - 1 - k))) & ((1 << DigitBits) - 1);
            table[std::size_t(i)][std::size_t(k)] =
                Char(digit < 10 ? '0' + digit : 'A' + digit - 10);
        }
    }
    return table;
}

/// The last `digits` digits of `value`, `Step` of them at a time.
template <typename Char, int DigitBits, int Step>
Char* writeDigits(Char* out, quint64 value, int digits)
{
    static constexpr auto Table = makeDigitTable<Char, DigitBits, Step>();
    constexpr quint64 Mask = Table.size() - 1;
    int shift = digits * DigitBits;
    if (int const odd = digits % Step) {
        shift -= odd * DigitBits;
        auto const& entry = Table[(value >> shift) & Mask];
        out = std::copy(entry.end() - odd, entry.end(), out);
    }
    while (shift > 0) {
        shift -= Step * DigitBits;
        auto const& entry = Table[(value >> shift) & Mask];
        out = std::copy(entry.begin(), entry.end(), out);
    }
    return out;
}

template <typename Char>
Char* writeBinary(Char* out, quint64 value, int digits)
{
    return writeDigits<Char, 1, 4>(out, value, digits);
}

template <typename Char>
Char* writeOctal(Char* out, quint64 value, int digits)
{
    return writeDigits<Char, 3, 2>(out, value, digits);
}

template <typename Char>
Char* writeHex(Char* out, quint64 value, int digits)
{
    return writeDigits<Char, 4, 2>(out, value, digits);
}

/// Number of decimal digits of `value`, at least 1.
inline int decimalDigits(quint64 value)
{
    int digits = 1;
    for (; value >= 10; value /= 10)
        ++digits;
    return digits;
}

/// At most 20 characters.
template <typename Char>
Char* writeDecimal(Char* out, quint64 value)
{
    int const digits = decimalDigits(value);
    for (int i = digits - 1; i >= 0; --i) {
        out[i] = Char('0' + value % 10);
        value /= 10;
    }
    return out + digits;
}

} // namespace VEK
