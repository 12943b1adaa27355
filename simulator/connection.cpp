#include "simulator/connection.h"

#include "jtag/frame.h"
#include "simulator/log.h"
#include "simulator/server.h"

#include <QAbstractSocket>
#include <QLocalSocket>
#include <QThread>

#include <cstdlib>

namespace VEK::Simulator {
namespace {

/// No request comes near it.
constexpr quint32 MaxRequest = 16 << 20;

/// A client that does not take its replies gets no further requests served.
constexpr qint64 MaxUnsent = 64 << 20;

/// A frame as long as this one whose body is no message.
QByteArray garbled(QByteArray frame)
{
    for (int i = int(sizeof(quint32)); i < frame.size(); ++i)
        frame[i] = char(~frame.at(i));
    return frame;
}

} // namespace

Connection::Connection(QLocalSocket* socket, BridgeServer& server)
    : Connection(static_cast<QIODevice*>(socket), server)
{
    socket->setReadBufferSize(2 * MaxRequest);
    connect(socket, &QLocalSocket::disconnected, this, &Connection::leave);
}

Connection::Connection(QAbstractSocket* socket, BridgeServer& server)
    : Connection(static_cast<QIODevice*>(socket), server)
{
    socket->setReadBufferSize(2 * MaxRequest);
    connect(socket, &QAbstractSocket::disconnected, this, &Connection::leave);
}

Connection::Connection(QIODevice* device, BridgeServer& server)
    : QObject(&server), m_device(device), m_server(server), m_replies(*device, server.faults())
{
    device->setParent(this);
    connect(device, &QIODevice::readyRead, this, &Connection::takeRequests);
    // Queued: a write may tell of sent bytes before it returns, in the middle of sending a reply.
    connect(device, &QIODevice::bytesWritten, this, &Connection::takeRequests,
            Qt::QueuedConnection);
    // What came before the connections above raises no signal any more.
    QMetaObject::invokeMethod(this, &Connection::takeRequests, Qt::QueuedConnection);
}

void Connection::takeRequests()
{
    while (!m_isClosed && m_replies.unsent() < MaxUnsent) {
        CmdPack request;
        FrameState const state = takeFrame(*m_device, m_blockSize, request);
        if (state == FrameState::Complete) {
            serve(request);
        } else if (state == FrameState::Malformed) {
            qCDebug(lcSimulator) << "a frame holds no message";
        } else if (m_blockSize > MaxRequest) {
            qCDebug(lcSimulator) << "a frame claims" << m_blockSize << "bytes";
            close();
        } else {
            return;
        }
    }
}

void Connection::serve(CmdPack const& request)
{
    CmdPack reply;
    bool closes = false;
    m_hasAsked = true;
    if (m_server.serve(request, reply, closes)) {
        if (int const work = m_server.faults().work)
            QThread::msleep(static_cast<unsigned long>(work));
        QByteArray const frame = frameFromPack(reply);
        m_replies.push(m_server.garbles() ? garbled(frame) : frame);
    }
    if (m_server.dies())
        std::_Exit(EXIT_FAILURE);
    if (closes)
        close();
}

/// Lets go of the client at once, in the middle of a frame if need be.
void Connection::close()
{
    m_isClosed = true;
    m_device->disconnect(this);
    m_device->close();
    leave();
}

void Connection::leave()
{
    deleteLater();
    if (m_hasAsked)
        emit m_server.clientLeft();
}

} // namespace VEK::Simulator
