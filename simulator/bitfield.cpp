#include "simulator/bitfield.h"

#include "model/bits.h"

#include <algorithm>

namespace VEK::Simulator {

quint64 fieldNumber(QBitArray const& bits, int start, int count)
{
    quint64 number = 0;
    for (int i = start; i < start + count; ++i)
        number = number << 1 | quint64(bits.testBit(i));
    return number;
}

quint64 opcodeNumber(char const* text)
{
    quint64 number = 0;
    for (; *text; ++text)
        number = number << 1 | (*text == '1');
    return number;
}

quint32 registerNumber(QBitArray const& field)
{
    int const count = std::min(field.size(), 32);
    return quint32(fieldNumber(field, field.size() - count, count));
}

std::vector<quint64> lastPositions(QBitArray const& field, int count)
{
    std::vector<quint64> words(std::size_t((count + 63) / 64));
    int const offset = field.size() - count;
    for (int i = std::max(0, -offset); i < count; ++i) {
        if (field.testBit(offset + i))
            words[std::size_t(i / 64)] |= quint64(1) << (63 - i % 64);
    }
    return words;
}

void putPositions(QBitArray& bits, qint64 start, quint64 word, int count)
{
    if (start < 0) {
        word = start > -64 ? word << -start : 0;
        count = int(std::max<qint64>(0, count + start));
        start = 0;
    }
    count = int(std::min<qint64>(count, bits.size() - start));
    if (count <= 0)
        return;
    quint64 rest = mirrored(word & ~quint64(0) << (64 - count)); // the first position lowest
    char* byte = storageOf(bits) + start / 8;
    int const shift = int(start % 8);
    *byte |= char(rest << shift);
    for (rest >>= 8 - shift; rest; rest >>= 8)
        *++byte |= char(rest);
}

QBitArray numberField(quint32 number, int size)
{
    QBitArray field(size);
    for (int i = size - 1; i >= 0 && number; --i, number >>= 1)
        field.setBit(i, number & 1);
    return field;
}

} // namespace VEK::Simulator
