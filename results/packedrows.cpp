#include "results/packedrows.h"

#include "model/bits.h"

#include <QtEndian>

#include <algorithm>
#include <limits>

namespace VEK {
namespace {

/// All samples together take no more than this many bytes.
constexpr qint64 MaxBytes = qint64(1) << 30;

} // namespace

PackedRows::PackedRows(int columns)
    : m_columns(columns), m_words((columns + Block - 1) / Block),
      m_block(std::size_t(m_words) * Block), m_row(m_block.data()), m_packed(std::size_t(columns))
{}

bool PackedRows::next()
{
    if (m_count == std::numeric_limits<int>::max() ||
        (qint64(m_count) + 1) * m_words * qint64(sizeof(quint64)) > MaxBytes)
        return false;
    m_row += m_words;
    if (++m_count % Block == 0)
        closeBlock();
    return true;
}

void PackedRows::closeBlock()
{
    BitBlock square;
    for (int word = 0; word < m_words; ++word) {
        for (int row = 0; row < Block; ++row)
            square[row] = m_block[std::size_t(row * m_words + word)];
        transpose(square);
        int const end = std::min(m_columns, (word + 1) * Block);
        for (int column = word * Block; column < end; ++column)
            m_packed[std::size_t(column)].push_back(square[column % Block]);
    }
    std::fill(m_block.begin(), m_block.end(), 0);
    m_row = m_block.data();
}

QList<QBitArray> PackedRows::take()
{
    if (m_count % Block)
        closeBlock();
    QList<QBitArray> columns;
    for (std::vector<quint64>& words : m_packed) {
        qToLittleEndian<quint64>(words.data(), qsizetype(words.size()), words.data());
        columns << QBitArray::fromBits(reinterpret_cast<char const*>(words.data()), m_count);
        std::vector<quint64>().swap(words);
    }
    m_count = 0;
    return columns;
}

} // namespace VEK
