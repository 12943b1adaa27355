#include "jtag/frame.h"

#include <QBitArray>
#include <QDataStream>
#include <QIODevice>
#include <QStringList>
#include <QtEndian>

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
    explicit BodyReader(QByteArray const& body) : m_at(body.constData()), m_left(body.size()) {}

    bool pack(CmdPack& pack)
    {
        quint32 const count = number<quint32>();
        for (quint32 i = 0; m_ok && i < count; ++i) {
            QString const key = string();
            pack.insert(key, variant(0));
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

} // namespace

QByteArray frameFromPack(CmdPack const& pack)
{
    QByteArray frame;
    QDataStream stream(&frame, QIODevice::WriteOnly);
    stream.setVersion(Protocol::StreamVersion);
    stream << quint32(0) << pack;
    stream.device()->seek(0);
    stream << quint32(frame.size() - LengthBytes);
    return frame;
}

bool packFromBody(QByteArray const& body, CmdPack& pack)
{
    pack.clear();
    if (BodyReader(body).pack(pack))
        return true;
    pack.clear();
    return false;
}

FrameState takeFrame(QIODevice& device, quint32& blockSize, CmdPack& pack)
{
    if (blockSize == 0) {
        if (device.bytesAvailable() < LengthBytes)
            return FrameState::Incomplete;
        blockSize = qFromBigEndian<quint32>(device.read(LengthBytes).constData());
    }
    if (blockSize > MaxFrameBody) {
        device.readAll();
        return FrameState::Incomplete;
    }
    if (device.bytesAvailable() < qint64(blockSize))
        return FrameState::Incomplete;
    QByteArray const body = device.read(blockSize);
    blockSize = 0;
    return packFromBody(body, pack) ? FrameState::Complete : FrameState::Malformed;
}

} // namespace VEK
