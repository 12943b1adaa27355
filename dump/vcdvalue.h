#pragma once

#include <QtGlobal>

#include <cstring>
#include <string_view>
#include <vector>

namespace VEK::Dump {

/// Whether all of eight characters are "0" or "1".
inline bool areZerosAndOnes(char const* from)
{
    quint64 text;
    std::memcpy(&text, from, sizeof text);
    return (text & 0xFEFEFEFEFEFEFEFE) == 0x3030303030303030;
}

/// Packs a value of a dump, highest bit first and one character a bit, see `VcdReader::isOne`. Bit
/// i of the value becomes bit i % 64 of word i / 64; `words` keeps its size, what does not fit is
/// left out, and zeros stand in front of a short value.
void packValue(std::string_view value, std::vector<quint64>& words);

} // namespace VEK::Dump
