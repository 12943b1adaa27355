#include "dump/vcdvalue.h"

#include "dump/vcdreader.h"

#include <QtEndian>

#include <algorithm>

namespace VEK::Dump {
namespace {

constexpr std::size_t Stride = 8; ///< Characters at a time.

quint64 packOneByOne(char const* from, std::size_t count)
{
    quint64 bits = 0;
    for (std::size_t i = 0; i < count; ++i)
        bits = bits << 1 | quint64(VcdReader::isOne(from[i]));
    return bits;
}

quint64 packEight(char const* from)
{
    if (!areZerosAndOnes(from))
        return packOneByOne(from, Stride);
    quint64 text;
    std::memcpy(&text, from, Stride);
    // moves the lowest bit of each byte into the highest byte, the first one uppermost
    return (qFromLittleEndian(text) & 0x0101010101010101) * 0x8040201008040201 >> 56;
}

} // namespace

void packValue(std::string_view value, std::vector<quint64>& words)
{
    std::fill(words.begin(), words.end(), 0);
    value.remove_prefix(value.size() - std::min(value.size(), 64 * words.size()));
    std::size_t bit = 0;
    for (; value.size() >= Stride; value.remove_suffix(Stride), bit += Stride)
        words[bit / 64] |= packEight(value.data() + value.size() - Stride) << bit % 64;
    if (!value.empty())
        words[bit / 64] |= packOneByOne(value.data(), value.size()) << bit % 64;
}

} // namespace VEK::Dump
