#include "dump/vcdcodes.h"

#include <algorithm>

namespace VEK::Dump {
namespace {

constexpr std::size_t FirstSlots = 64;
constexpr int FirstShift = 58;

QByteArray unpacked(quint64 code)
{
    QByteArray text;
    for (; code; code >>= 8)
        text += char(code & 0xFF);
    return text;
}

bool isLonger(QByteArray const& code, QByteArray const& start)
{
    return code.size() > start.size() && code.startsWith(start);
}

} // namespace

quint64 VcdCodes::packed(QByteArray const& code)
{
    quint64 number = 0;
    for (int i = code.size() - 1; i >= 0; --i)
        number = number << 8 | static_cast<unsigned char>(code.at(i));
    return number;
}

void VcdCodes::insert(QByteArray const& code, int number)
{
    if (code.size() > MaxPacked) {
        m_longCodes.insert(code, number);
        return;
    }
    if (2 * (m_packedCount + 1) > m_slots.size()) {
        std::vector<Slot> const before = std::move(m_slots);
        m_slots.assign(before.empty() ? FirstSlots : 2 * before.size(), Slot());
        m_shift = before.empty() ? FirstShift : m_shift - 1;
        for (Slot const& slot : before)
            if (slot.code != 0)
                insertPacked(slot.code, slot.number);
    }
    insertPacked(packed(code), number);
    ++m_packedCount;
}

void VcdCodes::insertPacked(quint64 code, int number)
{
    std::size_t at = slotOf(code);
    while (m_slots[at].code != 0)
        at = (at + 1) & (m_slots.size() - 1);
    m_slots[at] = {code, number};
}

int VcdCodes::find(QByteArray const& code) const
{
    return code.size() <= MaxPacked ? findPacked(packed(code)) : m_longCodes.value(code, -1);
}

bool VcdCodes::hasLonger(QByteArray const& start) const
{
    return std::any_of(m_slots.begin(), m_slots.end(),
                       [&](Slot const& slot) { return isLonger(unpacked(slot.code), start); }) ||
           std::any_of(m_longCodes.keyBegin(), m_longCodes.keyEnd(),
                       [&](QByteArray const& code) { return isLonger(code, start); });
}

} // namespace VEK::Dump
