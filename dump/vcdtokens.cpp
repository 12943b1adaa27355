#include "dump/vcdtokens.h"

#include <QIODevice>

#include <algorithm>

namespace VEK::Dump {
namespace {

constexpr std::size_t ChunkSize = 256 * 1024;
constexpr std::size_t Padding = 16; ///< Blanks behind the bytes, so that eight can be looked at.

} // namespace

VcdTokens::VcdTokens(QIODevice& device)
    : m_device(device), m_buffer(Padding, '\n'), m_data(m_buffer.data())
{}

/// For a word that may go on in the next chunk.
bool VcdTokens::nextAcrossChunks()
{
    m_tooLong = false;
    m_word = {};
    if (!skipBlanks())
        return false;
    std::size_t start = m_at;
    for (;;) {
        m_at = std::min(endOfWord(m_at), m_end);
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
    m_word = std::string_view(m_data + start, m_at - start);
    return true;
}

bool VcdTokens::nextKeeping(std::string_view& before)
{
    std::size_t const at = afterBlanks();
    m_at = at;
    if (endOfWord(at) >= m_end) { // the buffer moves
        m_kept.assign(before);
        before = m_kept;
    }
    return next();
}

bool VcdTokens::skipBlanks()
{
    for (;;) {
        m_at = afterBlanks();
        if (m_at < m_end)
            return true;
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
    if (m_buffer.size() < kept + ChunkSize + Padding) {
        m_buffer.resize(kept + ChunkSize + Padding);
        m_data = m_buffer.data();
    }
    m_at = kept;
    qint64 const count = m_device.read(m_buffer.data() + kept, ChunkSize);
    m_failed = m_failed || count < 0;
    m_end = kept + std::size_t(std::max<qint64>(count, 0));
    std::fill_n(m_buffer.begin() + std::ptrdiff_t(m_end), Padding, '\n');
    return count > 0;
}

} // namespace VEK::Dump
