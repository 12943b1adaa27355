#include "jtag/jtagclient.h"

#include "jtag/frame.h"
#include "jtag/jtagsession.h"

#include <QLoggingCategory>
#include <QTimer>

namespace VEK {
namespace {

Q_LOGGING_CATEGORY(jtagLog, "vek.jtag", QtCriticalMsg)

/// Bytes that wait for a slow server before the sender waits too, several times what the image of
/// an ordinary design takes.
constexpr qint64 MaxUnsent = 64 << 20;

/// By this name the sockets' signals are queued and watched; Qt knows the type as QVariantMap
/// alone.
[[maybe_unused]] int const packType = qRegisterMetaType<CmdPack>("CmdPack");

template <typename Client>
void prepare(Client* client)
{
    // Queued, since a slot that is connected directly to readyRead() is not entered again while a
    // receiver of its message runs an event loop, and replies would wait until that ends.
    QObject::connect(client, &Client::readyRead, client, &Client::onDataReady,
                     Qt::QueuedConnection);
    // A peer may have died in the middle of a frame; the next one starts with a length again. Not
    // at the disconnection: the rest of a last frame may still be unread then.
    QObject::connect(client, &Client::connected, client, [client] { client->blockSize = 0; });
    // A peer that floods us with small frames is held back by the system.
    client->setReadBufferSize(qint64(MaxFrameBody) + 4);
}

template <typename Client>
void send(Client* client, CmdPack const& pack)
{
    if (client->state() != Client::ConnectedState)
        return;
    QByteArray const frame = frameFromPack(pack);
    if (client->tap)
        client->tap(WireEvent::Request, frame);
    client->write(frame);
    client->flush();
    // Only a design with dozens of full trigger tables comes here, if the server takes them slowly.
    // What the server answers meanwhile is delivered later, by the event loop.
    while (client->bytesToWrite() > MaxUnsent && client->waitForBytesWritten(-1))
        ;
}

template <typename Client>
void receive(Client* client)
{
    CmdPack pack;
    QByteArray frame;
    FrameState const found =
        takeFrame(*client, client->blockSize, pack, client->tap ? &frame : nullptr);
    if (client->blockSize > MaxFrameBody)
        qCDebug(jtagLog) << "dropping data behind a frame length of" << client->blockSize;
    if (found == FrameState::Incomplete)
        return;
    if (client->tap)
        client->tap(WireEvent::Reply, frame);
    // Bytes that are buffered already raise no readyRead(). Armed before the message goes out, so
    // that a receiver which runs an event loop gets the frames behind it too.
    QTimer::singleShot(0, client, &Client::onDataReady);
    if (found == FrameState::Complete)
        emit client->cmdReceived(pack);
    else
        qCDebug(jtagLog) << "dropped a frame that holds no message";
}

} // namespace

JtagClient::JtagClient(QObject* parent) : QLocalSocket(parent)
{
    prepare(this);
}

void JtagClient::sendCmdPack(CmdPack const& pack)
{
    send(this, pack);
}

void JtagClient::onDataReady()
{
    receive(this);
}

JtagClientNlc::JtagClientNlc(QObject* parent) : QTcpSocket(parent)
{
    prepare(this);
}

void JtagClientNlc::sendCmdPack(CmdPack const& pack)
{
    send(this, pack);
}

void JtagClientNlc::onDataReady()
{
    receive(this);
}

void JtagClientNlc::onStateChanged(QAbstractSocket::SocketState state)
{
    if (state == QAbstractSocket::UnconnectedState)
        JtagSession::shared()->showDisconnected();
}

} // namespace VEK
