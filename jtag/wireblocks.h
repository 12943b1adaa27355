#pragma once

#include <QByteArray>

class QIODevice;

/// A stream of bytes as blocks on a device, compressed, each with a check that covers all that
/// stands before it. What holds the frames of a recording; it knows nothing of them.
namespace VEK {

/// Writes blocks. Each is whole on the device when the call returns, so that a process which is
/// killed leaves all blocks but those that were not written yet.
class WireBlockWriter
{
public:
    /// `device` must outlive this object.
    explicit WireBlockWriter(QIODevice& device) : m_device(device) {}

    /// The plain bytes in front of the first block. False when they can't be written.
    bool begin(QByteArray const& head);
    /// Takes bytes, and writes the blocks that they fill.
    bool append(QByteArray const& bytes);
    /// Writes what was taken and fills no block yet.
    bool flush();
    /// The same, and the mark of the end.
    bool finish();

private:
    bool writeBlock(char kind, QByteArray const& content);

    QIODevice& m_device;
    QByteArray m_check; ///< Of the block before.
    QByteArray m_pending;
};

/// Reads what WireBlockWriter wrote, a block at a time.
class WireBlockReader
{
public:
    enum class State {
        Ok,
        End,    ///< The mark of the end was read, and nothing is left.
        Cut,    ///< The device ends in front of the mark.
        Altered ///< A check is wrong, or something stands behind the end.
    };

    /// `device` must outlive this object.
    explicit WireBlockReader(QIODevice& device) : m_device(device) {}

    /// Tells the plain bytes that were read off the device in front of the first block.
    void begin(QByteArray const& head);
    /// The next `size` bytes of the stream. Unless Ok they are not all there, `bytes` is empty, and
    /// `left` tells how many remain.
    State read(int size, QByteArray& bytes);
    qint64 left() const { return m_stream.size() - m_at; }

private:
    State readBlock();
    State readContent(char kind, QByteArray const& packed);

    QIODevice& m_device;
    QByteArray m_check;
    QByteArray m_stream;
    int m_at = 0; ///< What of `m_stream` was read.
    bool m_isEnded = false;
};

} // namespace VEK
