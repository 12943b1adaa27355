#include "jtag/frame.h"

#include <QBitArray>
#include <QDataStream>
#include <QIODevice>
#include <QStringList>
#include <QVarLengthArray>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace VEK {
namespace {

constexpr int LengthBytes = 4;
constexpr int MaxDepth = 2;

/// A bounds-checked walk over a frame body. QDataStream itself reserves room for any count that a
/// peer claims and recurses as deep as it is told, so the body is taken apart here.
class BodyReader
{
public:
    BodyReader(char const* body, int size) : m_at(body), m_left(size) {}

    bool pack(CmdPack& pack)
    {
        quint32 const count = number<quint32>();
        for (quint32 i = 0; m_ok && i < count; ++i) {
            QString const key = string();
            pack.insert(pack.cbegin(), key,
                        variant(0)); // where it belongs: the greatest come first
        }
        return m_ok;
    }

private:
    template <typename T>
    T number()
    {
        char const* from = take(sizeof(T));
        return from ? qFromBigEndian<T>(from) : T(0);
    }

    double real()
    {
        quint64 const raw = number<quint64>();
        double value;
        std::memcpy(&value, &raw, sizeof value);
        return value;
    }

    /// The next `size` bytes, or null when they are not there.
    char const* take(quint32 size)
    {
        if (!m_ok || quint32(m_left) < size) {
            m_ok = false;
            return nullptr;
        }
        char const* from = m_at;
        m_at += size;
        m_left -= int(size);
        return from;
    }

    QString string()
    {
        quint32 const size = number<quint32>();
        if (size == 0xFFFFFFFFu)
            return QString();
        char const* from = take(size);
        if (!from || size % 2)
            return fail<QString>();
        if (size == 0)
            return QLatin1String(""); // shared: hostile lists hold millions of these
        QString text(int(size / 2), Qt::Uninitialized);
        qFromBigEndian<quint16>(from, size / 2, text.data());
        return text;
    }

    QByteArray bytes()
    {
        quint32 const size = number<quint32>();
        if (size == 0xFFFFFFFFu)
            return QByteArray();
        char const* from = take(size);
        return from ? QByteArray(from, int(size)) : QByteArray();
    }

    QBitArray bits()
    {
        quint32 const count = number<quint32>();
        char const* from = count <= 0x7FFFFFFFu ? take((count + 7) / 8) : nullptr;
        if (!from)
            return fail<QBitArray>();
        return count ? QBitArray::fromBits(from, int(count)) : QBitArray();
    }

    QVariantList list(int depth)
    {
        QVariantList items;
        quint32 const count = number<quint32>();
        for (quint32 i = 0; m_ok && i < count; ++i)
            items.append(variant(depth + 1));
        return items;
    }

    QStringList strings()
    {
        QStringList items;
        quint32 const count = number<quint32>();
        for (quint32 i = 0; m_ok && i < count; ++i)
            items.append(string());
        return items;
    }

    QVariant variant(int depth)
    {
        quint32 const type = number<quint32>();
        bool const null = number<quint8>() != 0;
        if (!m_ok || depth > MaxDepth)
            return fail<QVariant>();
        switch (type) {
        case QMetaType::UnknownType:
            string(); // an invalid variant is followed by an empty string
            return QVariant();
        case QMetaType::Bool:
            return QVariant(number<quint8>() != 0);
        case QMetaType::Int:
            return QVariant(number<qint32>());
        case QMetaType::UInt:
            return QVariant(number<quint32>());
        case QMetaType::LongLong:
            return QVariant(number<qint64>());
        case QMetaType::ULongLong:
            return QVariant(number<quint64>());
        case QMetaType::Double:
            return QVariant(real());
        case QMetaType::QVariantList:
            return QVariant(list(depth));
        case QMetaType::QString:
            return null ? (string(), QVariant(QString())) : QVariant(string());
        case QMetaType::QStringList:
            return QVariant(strings());
        case QMetaType::QByteArray:
            return QVariant(bytes());
        case QMetaType::QBitArray:
            return QVariant(bits());
        default:
            return fail<QVariant>();
        }
    }

    template <typename T>
    T fail()
    {
        m_ok = false;
        return T();
    }

    char const* m_at;
    int m_left;
    bool m_ok = true;
};

bool readPack(char const* body, int size, CmdPack& pack)
{
    pack.clear();
    if (BodyReader(body, size).pack(pack))
        return true;
    pack.clear();
    return false;
}

constexpr int EntryOverhead = 4 + 4 + 1; // key length, type, null flag

/// The value inside, which is of that type.
template <typename T>
T const& stored(QVariant const& value)
{
    return *static_cast<T const*>(value.constData());
}

/// Bytes of a plain value in a frame, behind its type and null flag. -1 for any other, also for
/// whatever is null in some sense.
qint64 plainSize(QVariant const& value)
{
    if (value.isNull())
        return -1;
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
        return 4;
    case QMetaType::QString:
        return 4 + 2 * qint64(stored<QString>(value).size());
    case QMetaType::QBitArray:
        return 4 + (qint64(stored<QBitArray>(value).size()) + 7) / 8;
    default:
        return -1;
    }
}

/// The same for a whole frame, and -1 as well for one that no byte array holds.
qint64 plainSize(CmdPack const& pack)
{
    qint64 size = LengthBytes + 4;
    for (auto entry = pack.begin(); entry != pack.end(); ++entry) {
        qint64 const payload = plainSize(entry.value());
        if (payload < 0 || entry.key().isNull())
            return -1;
        size += EntryOverhead + 2 * qint64(entry.key().size()) + payload;
    }
    return size <= MaxFrameBody ? size : -1;
}

/// Writes a frame of plain values. A run sends tens of thousands of them.
class PlainWriter
{
public:
    explicit PlainWriter(char* at) : m_at(at) {}

    void pack(CmdPack const& pack)
    {
        number(quint32(pack.size()));
        for (auto entry = pack.end(); entry != pack.begin();) {
            --entry;
            string(entry.key());
            number(quint32(entry.value().userType()));
            *m_at++ = 0; // not null
            value(entry.value());
        }
    }

    void number(quint32 number)
    {
        qToBigEndian(number, m_at);
        m_at += sizeof number;
    }

private:
    void value(QVariant const& value)
    {
        switch (value.userType()) {
        case QMetaType::QString:
            return string(stored<QString>(value));
        case QMetaType::QBitArray:
            return bits(stored<QBitArray>(value));
        default:
            return number(value.toUInt());
        }
    }

    void string(QString const& text)
    {
        number(2 * quint32(text.size()));
        for (QChar const character : text) { // of a word: a call would take longer
            *m_at++ = char(character.row());
            *m_at++ = char(character.cell());
        }
    }

    void bits(QBitArray const& bits)
    {
        number(quint32(bits.size()));
        m_at = std::copy_n(bits.bits(), (bits.size() + 7) / 8, m_at);
    }

    char* m_at;
};

QByteArray streamedFrame(CmdPack const& pack)
{
    QByteArray frame;
    QDataStream stream(&frame, QIODevice::WriteOnly);
    stream.setVersion(Protocol::StreamVersion);
    stream << quint32(0) << pack;
    stream.device()->seek(0);
    stream << quint32(frame.size() - LengthBytes);
    return frame;
}

} // namespace

QByteArray frameFromPack(CmdPack const& pack)
{
    qint64 const size = plainSize(pack);
    if (size < 0)
        return streamedFrame(pack);
    QByteArray frame(int(size), Qt::Uninitialized);
    PlainWriter writer(frame.data());
    writer.number(quint32(size - LengthBytes));
    writer.pack(pack);
    return frame;
}

bool packFromBody(QByteArray const& body, CmdPack& pack)
{
    return readPack(body.constData(), body.size(), pack);
}

FrameState takeFrame(QIODevice& device, quint32& blockSize, CmdPack& pack, QByteArray* bytes)
{
    if (blockSize == 0) {
        if (device.bytesAvailable() < LengthBytes)
            return FrameState::Incomplete;
        char length[LengthBytes] = {};
        device.read(length, LengthBytes);
        blockSize = qFromBigEndian<quint32>(length);
    }
    if (blockSize > MaxFrameBody) {
        device.readAll();
        return FrameState::Incomplete;
    }
    if (device.bytesAvailable() < qint64(blockSize))
        return FrameState::Incomplete;
    auto const awaited = int(blockSize);
    QVarLengthArray<char, 1024> body(awaited);
    int const size = int(std::max<qint64>(0, device.read(body.data(), body.size())));
    blockSize = 0;
    if (bytes) {
        bytes->resize(LengthBytes);
        qToBigEndian(quint32(size), bytes->data());
        bytes->append(body.constData(), size);
    }
    return readPack(body.constData(), size, pack) ? FrameState::Complete : FrameState::Malformed;
}

} // namespace VEK
