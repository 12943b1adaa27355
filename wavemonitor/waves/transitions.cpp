#include "wavemonitor/waves/transitions.h"

#include "model/bits.h"

#include <QtAlgorithms>

namespace WaveMonitor {

namespace {

constexpr int WordBits = 64;

/// Where `count` bits from `start` on differ from `value`, the first one in bit 0.
quint64 differences(QBitArray const& bits, int start, int count, bool value)
{
    quint64 const word = VEK::packedBits(bits, start, count);
    quint64 const wanted = count < WordBits ? (quint64(1) << count) - 1 : ~quint64(0);
    return value ? ~word & wanted : word & wanted;
}

bool bitAt(QBitArray const& bits, int time)
{
    return VEK::packedBits(bits, time, 1) != 0;
}

} // namespace

int nextChange(QBitArray const& bits, int time, int length)
{
    if (time < 0 || time >= length)
        return -1;
    bool const value = bitAt(bits, time);
    for (int start = time + 1, count; start < length; start += count) {
        count = qMin(WordBits, length - start);
        if (quint64 const found = differences(bits, start, count, value))
            return start + int(qCountTrailingZeroBits(found));
    }
    return -1;
}

int previousChange(QBitArray const& bits, int time, int length)
{
    if (time <= 0 || time >= length)
        return -1;
    bool const value = bitAt(bits, time - 1);
    for (int end = time - 1, count; end > 0; end -= count) { // below `end` is still to be searched
        count = qMin(WordBits, end);
        if (quint64 const found = differences(bits, end - count, count, value))
            return end - count + WordBits - int(qCountLeadingZeroBits(found));
    }
    return -1;
}

int nextChange(RowSamples const& row, int time)
{
    int nearest = -1;
    for (QBitArray const& bits : row.arrays) { // a change found bounds the search in the others
        int const found = nextChange(bits, time, nearest < 0 ? row.length : nearest);
        nearest = found < 0 ? nearest : found;
    }
    return nearest;
}

int previousChange(RowSamples const& row, int time)
{
    int nearest = -1;
    for (QBitArray const& bits : row.arrays)
        nearest = qMax(nearest, previousChange(bits, time, row.length));
    return nearest;
}

} // namespace WaveMonitor
