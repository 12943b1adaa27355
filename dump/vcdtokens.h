#pragma once

#include <QtGlobal>

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
    explicit VcdTokens(QIODevice& device) : m_device(device) {}

    /// Goes to the next word; false at the end of the stream or after a read error.
    bool next();

    /// The current word. Valid up to the next call of `next`.
    std::string_view word() const { return m_word; }
    bool tooLong() const { return m_tooLong; }
    /// Whether the stream ends with the current word, without a blank behind it.
    bool touchesEnd() const { return m_touchesEnd; }
    /// Whether the stream ended in a read error.
    bool failed() const { return m_failed; }
    /// Line of the current word, from 1.
    qint64 line() const { return m_line; }

private:
    bool skipBlanks();
    bool fill(std::size_t keepFrom);

    QIODevice& m_device;
    std::vector<char> m_buffer;
    std::size_t m_at = 0;  ///< The first byte that was not looked at.
    std::size_t m_end = 0; ///< One past the last byte that was read.
    std::string_view m_word;
    qint64 m_line = 1;
    bool m_tooLong = false;
    bool m_touchesEnd = false;
    bool m_failed = false;
};

} // namespace VEK::Dump
