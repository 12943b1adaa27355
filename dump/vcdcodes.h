#pragma once

#include <QByteArray>
#include <QHash>

#include <vector>

namespace VEK::Dump {

/// The identifier codes of a dump, each with a number. Nearly all have a few characters: those are
/// found with a multiplication and a look or two.
class VcdCodes
{
public:
    /// The longest code that packs into a number, in bytes.
    static constexpr int MaxPacked = 8;

    /// A code that is not there yet; neither empty nor with a zero byte in it.
    void insert(QByteArray const& code, int number);

    /// -1 for a code that is not there.
    int find(QByteArray const& code) const;
    /// Of a code of `MaxPacked` bytes at most, its first byte lowest and zeros behind the last.
    int findPacked(quint64 code) const
    {
        if (m_slots.empty())
            return -1;
        for (std::size_t at = slotOf(code);; at = (at + 1) & (m_slots.size() - 1))
            if (m_slots[at].code == code || m_slots[at].code == 0)
                return m_slots[at].number;
    }

    /// Whether a code begins with these bytes and goes on.
    bool hasLonger(QByteArray const& start) const;

private:
    struct Slot
    {
        quint64 code = 0; ///< 0: none.
        int number = -1;
    };

    static quint64 packed(QByteArray const& code);
    void insertPacked(quint64 code, int number);
    std::size_t slotOf(quint64 code) const
    {
        constexpr quint64 spread = 0x9E3779B97F4A7C15;
        return std::size_t(code * spread >> m_shift);
    }

    std::vector<Slot> m_slots; ///< A power of two, half of them free.
    int m_shift = 0;           ///< Leaves as many bits as the slots' numbers have.
    std::size_t m_packedCount = 0;
    QHash<QByteArray, int> m_longCodes;
};

} // namespace VEK::Dump
