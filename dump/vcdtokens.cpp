#include "dump/vcdtokens.h"

#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace VEK::Dump {
namespace {

constexpr std::size_t ChunkSize = 256 * 1024;

bool isBlank(char c)
{
    return static_cast<unsigned char>(c) <= ' ';
}

} // namespace

bool VcdTokens::next()
{
    m_tooLong = false;
    m_word = {};
    if (!skipBlanks())
        return false;
    std::size_t start = m_at;
    for (;;) {
        while (m_at < m_end && !isBlank(m_buffer[m_at]))
            ++m_at;
        if (m_at < m_end)
            break;
        if (m_at - start > MaxWord) {
            m_tooLong = true;
            start = m_at - MaxWord;
        }
        bool const more = fill(start);
        start = 0;
        if (!more) {
            m_touchesEnd = true;
            break;
        }
    }
    m_tooLong = m_tooLong || m_at - start > MaxWord;
    m_word = std::string_view(m_buffer.data() + start, m_at - start);
    return true;
}

bool VcdTokens::skipBlanks()
{
    for (;;) {
        for (; m_at < m_end; ++m_at) {
            char const c = m_buffer[m_at];
            if (!isBlank(c))
                return true;
            if (c == '\n')
                ++m_line;
        }
        if (!fill(m_at))
            return false;
    }
}

/// Reads one more chunk behind the bytes from `keepFrom` on, which move to the buffer's start.
bool VcdTokens::fill(std::size_t keepFrom)
{
    std::size_t const kept = m_end - keepFrom;
    if (kept > 0 && keepFrom > 0)
        std::memmove(m_buffer.data(), m_buffer.data() + keepFrom, kept);
    m_at = kept;
    m_end = kept;
    if (m_buffer.size() < kept + ChunkSize)
        m_buffer.resize(kept + ChunkSize);
    qint64 const count = m_device.read(m_buffer.data() + kept, ChunkSize);
    m_failed = m_failed || count < 0;
    m_end += std::size_t(std::max<qint64>(count, 0));
    return count > 0;
}

} // namespace VEK::Dump
