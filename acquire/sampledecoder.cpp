#include "acquire/sampledecoder.h"

#include "model/bits.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <vector>

namespace VEK {
namespace {

constexpr int BlockSize = 64;
/// A bit array's bytes begin one behind a whole word of memory. Behind a first block of seven bytes
/// all others are whole words, none of which is split between two cache lines.
constexpr int FirstBlockSize = BlockSize - 8;

/// Fills the columns of up to 64 signals, of which `signal` is the first.
void decodeColumns(QBitArray const& stream, RecordLayout const& layout, int start, int signal,
                   std::vector<char*> const& columns)
{
    qint64 const row0 = layout.firstSignal + signal;
    int const width = int(columns.size());
    qint64 row = start;
    int rows = 0;
    for (int first = 0; first < layout.rows; first += rows) {
        BitBlock block = {};
        rows = std::min(first ? BlockSize : FirstBlockSize, layout.rows - first);
        for (int i = 0; i < rows; ++i) {
            block[i] = packedBits(stream, row0 - row * layout.stride, width);
            row = row + 1 == layout.rows ? 0 : row + 1;
        }
        transpose(block);
        for (int j = 0; j < width; ++j) {
            quint64 const word = qToLittleEndian(block[j]);
            char* const place = columns[std::size_t(j)] + first / 8;
            if (rows == BlockSize)
                std::memcpy(place, &word, sizeof word);
            else
                std::memcpy(place, &word, std::size_t(rows + 7) / 8);
        }
    }
}

} // namespace

QList<QBitArray> signalArrays(QBitArray const& stream, RecordLayout const& layout, int start)
{
    QList<QBitArray> arrays;
    arrays.reserve(layout.signalCount);
    std::vector<char*> columns;
    for (int signal = 0; signal < layout.signalCount; signal += BlockSize) {
        columns.clear();
        for (int j = signal; j < std::min(signal + BlockSize, layout.signalCount); ++j) {
            arrays.append(QBitArray(layout.rows));
            columns.push_back(storageOf(arrays.last()));
        }
        decodeColumns(stream, layout, start, signal, columns);
    }
    return arrays;
}

} // namespace VEK
