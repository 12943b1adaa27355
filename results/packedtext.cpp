#include "results/packedtext.h"

#include <algorithm>

namespace VEK {
namespace {

struct PackedBlock
{
    quint64 word = 0;
    bool binary = true;
};

/// Up to 64 characters, four at a time: each group of four lies in one word, its low bits are
/// brought together by a multiplication that puts them side by side in bits 48 to 51.
PackedBlock packFull(ushort const* text)
{
    constexpr quint64 LowBits = 0x0001000100010001u;
    constexpr quint64 Zeros = 0x0030003000300030u;
    constexpr quint64 Gather = (quint64(1) << 48) | (quint64(1) << 33) | (quint64(1) << 18) | 8;
    PackedBlock block;
    quint64 others = 0;
    for (int i = 0; i < PackedText::Block; i += 4) {
        quint64 const four = quint64(text[i]) | quint64(text[i + 1]) << 16 |
                             quint64(text[i + 2]) << 32 | quint64(text[i + 3]) << 48;
        others |= (four & ~LowBits) ^ Zeros;
        block.word |= (((four & LowBits) * Gather >> 48) & 15) << i;
    }
    block.binary = others == 0;
    return block;
}

PackedBlock packAny(ushort const* text, int count)
{
    PackedBlock block;
    for (int i = 0; i < count; ++i) {
        block.binary = block.binary && (text[i] == '0' || text[i] == '1');
        block.word |= quint64(text[i] == '1') << i;
    }
    return block;
}

} // namespace

PackedText::PackedText(QString const& text) : m_size(text.size())
{
    m_words.resize(m_size / Block + (m_size % Block != 0));
    bool binary = true;
    for (int i = 0; i < m_words.size(); ++i) {
        ushort const* place = text.utf16() + qsizetype(i) * Block;
        int const count = std::min(Block, m_size - i * Block);
        PackedBlock block = count == Block ? packFull(place) : PackedBlock{0, false};
        if (!block.binary)
            block = packAny(place, count);
        m_words[i] = block.word;
        binary = binary && block.binary;
    }
    if (!binary)
        m_text = text;
}

QChar PackedText::at(int index) const
{
    return isBinary() ? QLatin1Char(bit(index) ? '1' : '0') : m_text.at(index);
}

} // namespace VEK
