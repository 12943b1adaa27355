#include "jtag/wirefile.h"

#include "jtag/frame.h"

#include <QIODevice>
#include <QtEndian>

namespace VEK {
namespace {

QByteArray const Magic = QByteArrayLiteral("vekwire ");
QByteArray const Version = QByteArrayLiteral("1");
QByteArray const ProgramKey = QByteArrayLiteral("program");
QByteArray const StartedKey = QByteArrayLiteral("started");
QByteArray const CableKey = QByteArrayLiteral("cable");
QByteArray const SocketKey = QByteArrayLiteral("socket");
constexpr int MaxLine = 1024;
constexpr int MaxLines = 64;
constexpr int EventBytes = 1 + sizeof(qint64);
constexpr int LengthBytes = sizeof(quint32);

QByteArray line(QByteArray const& key, QString const& value)
{
    return key + ": " + value.simplified().toUtf8() + '\n';
}

void take(QByteArray const& line, WireHeader& header)
{
    int const colon = line.indexOf(": ");
    QByteArray const key = line.left(colon);
    QString const value = QString::fromUtf8(line.mid(colon + 2).trimmed());
    if (key == ProgramKey)
        header.program = value;
    else if (key == StartedKey)
        header.started = QDateTime::fromString(value, Qt::ISODateWithMs);
    else if (key == CableKey)
        header.cable = value;
    else if (key == SocketKey)
        header.socket = value;
}

} // namespace

bool WireWriter::begin(WireHeader const& header)
{
    return m_blocks.begin(Magic + Version + '\n' + line(ProgramKey, header.program) +
                          line(StartedKey, header.started.toUTC().toString(Qt::ISODateWithMs)) +
                          line(CableKey, header.cable) + line(SocketKey, header.socket) + '\n');
}

bool WireWriter::add(WireFrame const& frame)
{
    QByteArray bytes(EventBytes, char(frame.event));
    qToBigEndian(frame.time, bytes.data() + 1);
    return m_blocks.append(bytes + frame.bytes);
}

WireReader::WireReader(QIODevice& device) : m_device(device), m_blocks(device)
{}

WireReader::State WireReader::refuse(QString const& error)
{
    m_error = error;
    return State::Refused;
}

/// The lines up to the empty one. False when that is missing, and the device is at its end.
bool WireReader::readHead(QByteArray& head) const
{
    for (int lines = 0; lines < MaxLines && !head.endsWith("\n\n"); ++lines) {
        QByteArray const line = m_device.readLine(MaxLine);
        head += line;
        if (!line.endsWith('\n'))
            return line.size() >= MaxLine - 1;
    }
    return true;
}

WireReader::State WireReader::begin(WireHeader& header)
{
    QByteArray head;
    bool const isWhole = readHead(head);
    if (head.isEmpty())
        return refuse(QStringLiteral("it is empty"));
    if (!head.startsWith(Magic) && Magic.startsWith(head))
        return fail(WireBlockReader::State::Cut);
    if (!head.startsWith(Magic))
        return refuse(QStringLiteral("it is no recording of the wire"));
    QList<QByteArray> const lines = head.split('\n');
    QByteArray const version = lines.first().mid(Magic.size());
    if (lines.size() > 1 && version != Version)
        return refuse(QStringLiteral("it has version %1, this program reads version %2")
                          .arg(QString::fromLatin1(version), QString::fromLatin1(Version)));
    if (!isWhole)
        return fail(WireBlockReader::State::Cut);
    if (!head.endsWith("\n\n"))
        return fail(WireBlockReader::State::Altered);
    for (QByteArray const& line : lines)
        take(line, header);
    m_blocks.begin(head);
    return State::Ok;
}

WireReader::State WireReader::next(WireFrame& frame)
{
    using Blocks = WireBlockReader::State;
    QByteArray bytes;
    Blocks state = m_blocks.read(EventBytes, bytes);
    if (state == Blocks::End && m_blocks.left() == 0)
        return State::End;
    if (state != Blocks::Ok)
        return fail(state);
    frame.event = WireEvent(bytes.at(0));
    frame.time = qFromBigEndian<qint64>(bytes.constData() + 1);
    frame.bytes.clear();
    if (frame.event != WireEvent::Lost) {
        if (frame.event != WireEvent::Request && frame.event != WireEvent::Reply)
            return fail(Blocks::Altered);
        state = m_blocks.read(LengthBytes, frame.bytes);
        quint32 const length =
            state == Blocks::Ok ? qFromBigEndian<quint32>(frame.bytes.constData()) : 0;
        if (state == Blocks::Ok)
            state = length > MaxFrameBody ? Blocks::Altered : m_blocks.read(int(length), bytes);
        if (state != Blocks::Ok)
            return fail(state);
        frame.bytes += bytes;
    }
    ++m_frames;
    return State::Ok;
}

WireReader::State WireReader::fail(WireBlockReader::State state)
{
    if (state == WireBlockReader::State::Cut) {
        m_error =
            QStringLiteral("it is cut: it ends behind %1 frames, without its end").arg(m_frames);
        return State::Cut;
    }
    return refuse(QStringLiteral("it was altered, behind frame %1").arg(m_frames));
}

} // namespace VEK
