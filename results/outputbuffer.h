#pragma once

#include <QByteArray>
#include <QIODevice>

#include <memory>

class QFile;

namespace VEK {

/// Opens the file of an export for writing, emptied. False as well for a file without a name.
bool openForExport(QFile& file);

/// Collects bytes and hands them to a device in large blocks. Once the device has refused some, for
/// example on a full disk, all that follows is dropped, so that the file ends where the disk did.
class OutputBuffer
{
public:
    /// The most that `reserve` takes.
    static constexpr int MaxReserve = 4096;

    /// The device is not owned; it must be open and outlive the buffer.
    explicit OutputBuffer(QIODevice& device);
    /// Flushes.
    ~OutputBuffer();

    /// Room for `size` bytes, up to `MaxReserve`. Valid until the next call of anything here.
    char* reserve(int size)
    {
        if (m_end - m_at < size)
            flush();
        return m_at;
    }

    /// Takes over what was written at the reserved place up to `end`.
    void commit(char* end) { m_at = end; }

    void append(QByteArray const& bytes);
    void flush();

    /// Flushes, a file's own buffer as well. False once the device has refused bytes.
    bool finish();

    /// Whether the device has refused bytes.
    bool failed() const { return m_failed; }

private:
    Q_DISABLE_COPY(OutputBuffer)

    QIODevice& m_device;
    std::unique_ptr<char[]> m_bytes;
    char* m_at;
    char* m_end;
    bool m_failed = false;
};

} // namespace VEK
