#include "simulator/bitfield.h"

#include "model/bits.h"

#include <algorithm>
#include <cstring>

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

QBitArray numberField(quint32 number, int size)
{
    QBitArray field(size);
    for (int i = size - 1; i >= 0 && number; --i, number >>= 1)
        field.setBit(i, number & 1);
    return field;
}

BitWriter::BitWriter(QBitArray& bits, qint64 at)
    : m_filled(at > 0 ? int(at % 8) : 0), m_dropped(std::max<qint64>(0, -at))
{
    m_place = storageOf(bits) + std::max<qint64>(0, at) / 8;
}

BitWriter::~BitWriter()
{
    quint64 const word = qToLittleEndian(m_pending);
    std::memcpy(m_place, &word, std::size_t(m_filled + 7) / 8);
}

void BitWriter::put(quint64 word, int count)
{
    if (m_dropped > 0) {
        int const dropped = int(std::min<qint64>(m_dropped, count));
        m_dropped -= dropped;
        count -= dropped;
        word = count > 0 ? word << dropped : 0;
    }
    if (count < 1)
        return;
    quint64 const bits = mirrored(word) & ~quint64(0) >> (64 - count);
    m_pending |= bits << m_filled;
    if (m_filled + count < 64) {
        m_filled += count;
        return;
    }
    qToLittleEndian(m_pending, m_place);
    m_place += sizeof m_pending;
    m_pending = m_filled > 0 ? bits >> (64 - m_filled) : 0;
    m_filled += count - 64;
}

void BitWriter::putRow(quint64 const* words, int count)
{
    for (; count > 0; count -= 64)
        put(*words++, std::min(count, 64));
}

void BitWriter::fill(bool bit, int count)
{
    for (; count > 0; count -= 64)
        put(bit ? ~quint64(0) : 0, std::min(count, 64));
}

} // namespace VEK::Simulator
