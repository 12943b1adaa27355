#include "jtag/wireblocks.h"

#include <QCryptographicHash>
#include <QIODevice>
#include <QtEndian>

#include <utility>

namespace VEK {
namespace {

/// Bytes of the stream in a block. Small, since unpacking may give a thousand times the bytes that
/// a hostile block has before it is seen to be wrong.
constexpr int BlockBytes = 64 * 1024;
constexpr quint32 MaxPacked = BlockBytes + 1024;
constexpr int PackLevel = 1; // requests differ in a few bytes: the faster level suffices
constexpr int HeadBytes = 5; // kind and length
constexpr int CheckBytes = 16;
constexpr char FramesKind = 'F';
constexpr char EndKind = 'E';

QByteArray checkOf(QByteArray const& before, QByteArray const& bytes)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(before);
    hash.addData(bytes);
    return hash.result().left(CheckBytes);
}

} // namespace

bool WireBlockWriter::begin(QByteArray const& head)
{
    m_check = checkOf({}, head);
    return m_device.write(head) == head.size();
}

bool WireBlockWriter::append(QByteArray const& bytes)
{
    m_pending += bytes;
    int at = 0;
    bool isWritten = true;
    for (; isWritten && m_pending.size() - at >= BlockBytes; at += BlockBytes)
        isWritten = writeBlock(FramesKind, m_pending.mid(at, BlockBytes));
    if (at > 0)
        m_pending.remove(0, at);
    return isWritten;
}

bool WireBlockWriter::flush()
{
    QByteArray const content = std::exchange(m_pending, {});
    return content.isEmpty() || writeBlock(FramesKind, content);
}

bool WireBlockWriter::finish()
{
    return flush() && writeBlock(EndKind, {});
}

bool WireBlockWriter::writeBlock(char kind, QByteArray const& content)
{
    QByteArray const packed = content.isEmpty() ? QByteArray() : qCompress(content, PackLevel);
    QByteArray block(HeadBytes, kind);
    qToBigEndian(quint32(packed.size()), block.data() + 1);
    block += packed;
    m_check = checkOf(m_check, block);
    block += m_check;
    return m_device.write(block) == block.size();
}

void WireBlockReader::begin(QByteArray const& head)
{
    m_check = checkOf({}, head);
}

WireBlockReader::State WireBlockReader::read(int size, QByteArray& bytes)
{
    bytes.clear();
    while (left() < size) {
        State const state = m_isEnded ? State::End : readBlock();
        if (state != State::Ok)
            return state;
    }
    bytes = m_stream.mid(m_at, size);
    m_at += size;
    return State::Ok;
}

WireBlockReader::State WireBlockReader::readBlock()
{
    QByteArray block = m_device.read(HeadBytes);
    if (block.size() < HeadBytes)
        return State::Cut;
    quint32 const length = qFromBigEndian<quint32>(block.constData() + 1);
    char const kind = block.at(0);
    if (length > MaxPacked || (kind != FramesKind && kind != EndKind))
        return State::Altered;
    QByteArray const packed = m_device.read(length);
    QByteArray const check = m_device.read(CheckBytes);
    if (packed.size() < int(length) || check.size() < CheckBytes)
        return State::Cut;
    block += packed;
    m_check = checkOf(m_check, block);
    return m_check == check ? readContent(kind, packed) : State::Altered;
}

WireBlockReader::State WireBlockReader::readContent(char kind, QByteArray const& packed)
{
    if (kind == EndKind) {
        m_isEnded = true;
        return packed.isEmpty() && m_device.read(1).isEmpty() ? State::Ok : State::Altered;
    }
    quint32 const claimed =
        packed.size() < 4 ? 0 : qFromBigEndian<quint32>(packed.constData()); // as qCompress puts it
    if (claimed < 1 || claimed > BlockBytes)
        return State::Altered;
    QByteArray const content = qUncompress(packed);
    if (content.size() != int(claimed))
        return State::Altered;
    m_stream.remove(0, std::exchange(m_at, 0));
    m_stream += content;
    return State::Ok;
}

} // namespace VEK
