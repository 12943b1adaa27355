#pragma once

#include "simulator/replyqueue.h"

class QAbstractSocket;
class QLocalSocket;

namespace VEK::Simulator {

class BridgeServer;

/// One client: takes its frames, has them served and deletes itself when the client is gone.
class Connection : public QObject
{
    Q_OBJECT

public:
    /// Takes over the socket; the server is the parent.
    Connection(QLocalSocket* socket, BridgeServer& server);
    Connection(QAbstractSocket* socket, BridgeServer& server);

private:
    Connection(QIODevice* device, BridgeServer& server);

    void takeRequests();
    void serve(QVariantMap const& request);
    void close();
    void leave();

    QIODevice* m_device;
    BridgeServer& m_server;
    ReplyQueue m_replies;
    quint32 m_blockSize = 0;
    bool m_isClosed = false;
    bool m_hasAsked = false;
};

} // namespace VEK::Simulator
