#pragma once

#include "jtag/frame.h"
#include "jtag/jtagserver.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QTcpServer>
#include <QTcpSocket>

/// A server in the test's own event loop, local or on a free loopback port. It records every
/// request and sends what the test tells it to.
class ScriptedServer : public QObject
{
public:
    ScriptedServer(bool tcp, QString const& socketName)
    {
        record.name = VEK::Server::Ft2chName;
        record.cable = VEK::CableFT2CH;
        if (tcp) {
            m_tcp.listen(QHostAddress::LocalHost);
            record.address = "127.0.0.1";
            record.port = m_tcp.serverPort();
        } else {
            m_local.listen(socketName);
            record.address = socketName;
        }
        connect(&m_local, &QLocalServer::newConnection, this,
                [this] { take(m_local.nextPendingConnection()); });
        connect(&m_tcp, &QTcpServer::newConnection, this,
                [this] { take(m_tcp.nextPendingConnection()); });
    }

    void send(QByteArray const& bytes)
    {
        m_peer->write(bytes);
        while (m_peer->bytesToWrite() > 0)
            m_peer->waitForBytesWritten(1000);
    }
    void reply(CmdPack const& pack) { send(VEK::frameFromPack(pack)); }
    void closePeer()
    {
        m_peer->close();
        m_peer = nullptr;
    }
    bool hasPeer() const { return m_peer; }

    VEK::JtagServer record;
    QList<CmdPack> received;

private:
    template <typename Socket>
    void take(Socket* socket)
    {
        m_peer = socket;
        auto const read = [this, socket] {
            CmdPack pack;
            while (VEK::takeFrame(*socket, m_blockSize, pack) == VEK::FrameState::Complete)
                received.append(pack);
        };
        connect(socket, &Socket::readyRead, this, read);
        read();
    }

    QLocalServer m_local;
    QTcpServer m_tcp;
    QIODevice* m_peer = nullptr;
    quint32 m_blockSize = 0;
};
