#include "analyzer/sampledecoder.h"

#include "model/bits.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <vector>

namespace VEK {
namespace {

constexpr int BlockSize = 64;

using Block = quint64[BlockSize];

/// Mirrors a block at its diagonal: bit c of word r becomes bit r of word c.
void transpose(Block& block)
{
    quint64 mask = 0x00000000FFFFFFFFu;
    for (int half = BlockSize / 2; half; half >>= 1, mask ^= mask << half) {
        for (int k = 0; k < BlockSize; k = ((k | half) + 1) & ~half) {
            quint64 const swap = ((block[k] >> half) ^ block[k | half]) & mask;
            block[k | half] ^= swap;
            block[k] ^= swap << half;
        }
    }
}

} // namespace

QList<QBitArray> signalArrays(QBitArray const& stream, RecordLayout const& layout, int start)
{
    std::size_t const words = std::size_t(layout.rows + BlockSize - 1) / BlockSize;
    std::vector<std::vector<quint64>> columns(std::size_t(layout.signalCount));
    for (std::vector<quint64>& column : columns)
        column.resize(words);

    for (std::size_t word = 0; word < words; ++word) {
        int const first = int(word) * BlockSize;
        int const count = std::min(BlockSize, layout.rows - first);
        for (int signal = 0; signal < layout.signalCount; signal += BlockSize) {
            int const width = std::min(BlockSize, layout.signalCount - signal);
            Block block = {};
            for (int i = 0; i < count; ++i) {
                qint64 const row = (qint64(start) + first + i) % layout.rows;
                block[i] =
                    packedBits(stream, layout.firstSignal + signal - row * layout.stride, width);
            }
            transpose(block);
            for (int j = 0; j < width; ++j)
                columns[std::size_t(signal + j)][word] = qToLittleEndian(block[j]);
        }
    }

    QList<QBitArray> arrays;
    arrays.reserve(layout.signalCount);
    for (std::vector<quint64> const& column : columns)
        arrays.append(
            QBitArray::fromBits(reinterpret_cast<char const*>(column.data()), layout.rows));
    return arrays;
}

} // namespace VEK
