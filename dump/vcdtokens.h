#pragma once

#include <QtEndian>
#include <QtGlobal>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

class QIODevice;

namespace VEK::Dump {

/// Cuts a byte stream into blank-separated words. Reads in chunks: the memory that it takes
/// depends neither on the stream's length nor on the length of a word.
class VcdTokens
{
public:
    /// A word that is longer is cut and marked `tooLong`.
    static constexpr int MaxWord = 1 << 20;

    /// `device` must be open for reading and outlive this object.
    explicit VcdTokens(QIODevice& device);

    /// Goes to the next word; false at the end of the stream or after a read error.
    bool next()
    {
        m_at = afterBlanks();
        std::size_t const end = endOfWord(m_at);
        if (end >= m_end)
            return nextAcrossChunks();
        m_tooLong = false;
        m_word = {m_data + m_at, end - m_at};
        m_at = end;
        return true;
    }

    /// The same with the word before, or a part of it, kept in `before`, which may be moved.
    bool nextKeeping(std::string_view& before);

    /// The current word. Valid up to the next call of `next`.
    std::string_view word() const { return m_word; }
    /// Bytes of the current word from `from` on, 8 at most, the first one lowest and zeros behind
    /// them. `from` is at most the word's length.
    quint64 packed(std::size_t from) const
    {
        std::size_t const size = m_word.size() - from;
        quint64 const bytes = eightBytes(m_word.data() + from); // the buffer goes on behind a word
        if (size >= 8)
            return bytes;
        return bytes & ((quint64(1) << 8 * size) - 1);
    }
    bool tooLong() const { return m_tooLong; }
    /// Whether the stream ends with the current word, without a blank behind it.
    bool touchesEnd() const { return m_touchesEnd; }
    /// Whether the stream ended in a read error.
    bool failed() const { return m_failed; }
    /// Line of the current word, from 1.
    qint64 line() const { return m_line; }

private:
    static bool isBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

    static quint64 eightBytes(char const* from)
    {
        quint64 bytes;
        std::memcpy(&bytes, from, sizeof bytes);
        return qFromLittleEndian(bytes);
    }

    /// `m_end` when nothing but blanks is there.
    std::size_t afterBlanks()
    {
        std::size_t at = m_at;
        for (; at < m_end && isBlank(m_data[at]); ++at)
            m_line += m_data[at] == '\n';
        return at;
    }

    /// Eight bytes at a time: the blanks behind `m_end` end the last word of the buffer.
    std::size_t endOfWord(std::size_t at) const
    {
        constexpr quint64 ones = 0x0101010101010101;
        for (;; at += 8) {
            quint64 const bytes = eightBytes(m_data + at);
            // the high bit of the lowest byte that is below '!', and perhaps of higher ones
            quint64 const blanks = (bytes - ones * '!') & ~bytes & ones * 0x80;
            if (blanks)
                return at + qCountTrailingZeroBits(blanks) / 8;
        }
    }

    bool nextAcrossChunks();
    bool skipBlanks();
    bool fill(std::size_t keepFrom);

    QIODevice& m_device;
    std::vector<char> m_buffer;
    char const* m_data;    ///< Of the buffer.
    std::size_t m_at = 0;  ///< The first byte that was not looked at.
    std::size_t m_end = 0; ///< One past the last byte that was read; blanks follow.
    std::string_view m_word;
    std::string m_kept;
    qint64 m_line = 1;
    bool m_tooLong = false;
    bool m_touchesEnd = false;
    bool m_failed = false;
};

} // namespace VEK::Dump
