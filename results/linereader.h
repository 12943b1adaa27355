#pragma once

#include <QIODevice>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace VEK {

/// The lines of a device, one at a time, without their ends. The device must be open for reading
/// and outlive the reader.
class LineReader
{
public:
    explicit LineReader(QIODevice& device) : m_device(device), m_buffer(BlockSize) {}

    /// False at the end, and for a line that is too long to be real.
    bool next(std::string_view& line)
    {
        std::size_t scanned = m_begin;
        for (;;) {
            char const* const bytes = m_buffer.data();
            void const* const end = std::memchr(bytes + scanned, '\n', m_end - scanned);
            std::size_t const at = end ? std::size_t(static_cast<char const*>(end) - bytes) : m_end;
            if (at < m_end || (m_finished && at > m_begin)) {
                m_isCut = at == m_end;
                line = std::string_view(bytes + m_begin, at - m_begin);
                m_begin = std::min(at + 1, m_end);
                return true;
            }
            if (m_finished)
                return false;
            scanned = m_end - m_begin;
            if (!fill())
                return false;
        }
    }

    /// Whether the line had no line feed behind it: the file ends there.
    bool isCut() const { return m_isCut; }
    bool tooLong() const { return m_tooLong; }
    qint64 bytesRead() const { return m_bytesRead; }

private:
    static constexpr std::size_t BlockSize = 256 * 1024;
    static constexpr std::size_t LongestLine = 16 * 1024 * 1024;

    bool fill()
    {
        m_end -= m_begin;
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_begin ? m_end : 0);
        m_begin = 0;
        m_tooLong = m_end >= LongestLine;
        if (m_tooLong)
            return false;
        if (m_buffer.size() - m_end < BlockSize)
            m_buffer.resize(m_buffer.size() * 2);
        qint64 const count = m_device.read(m_buffer.data() + m_end, BlockSize);
        m_finished = count <= 0;
        m_end += std::size_t(std::max<qint64>(0, count));
        m_bytesRead += std::max<qint64>(0, count);
        return true;
    }

    QIODevice& m_device;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    qint64 m_bytesRead = 0;
    bool m_finished = false;
    bool m_tooLong = false;
    bool m_isCut = false;
};

} // namespace VEK
