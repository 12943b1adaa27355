#pragma once

#include "capture/capturesettings.h"
#include "jtag/cablehold.h"
#include "jtag/jtagclient.h"
#include "jtag/jtagserver.h"

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QTimer>

#include <memory>

namespace VEK {

/// The server of one run: takes the right to its cable, starts it, connects the shared session to
/// it, and ends it again. One of another machine, or to attach to, is only connected to. Nothing
/// blocks.
class ServerLink : public QObject
{
    Q_OBJECT

public:
    explicit ServerLink(QObject* parent = nullptr);
    /// Kills the server.
    ~ServerLink() override;

    /// Begins; `held`, then `opened` or else `failed` follow, not from inside the call.
    void open(CaptureSettings const& settings);

    /// Ends the server at any point, what was written to it having been sent. `closed` follows, not
    /// from inside the call. Does nothing when none is open.
    void close();

    bool isOpen() const { return bool(m_hold); }
    bool isConnected() const;

    /// Whether the server has said anything at all.
    bool hasAnswered() const { return m_hasAnswered; }

    /// What has come from the server and was not taken yet, also after the end of the connection.
    qint64 unreadBytes() const;

Q_SIGNALS:
    /// The cable is this process's own until `closed`. A receiver may close.
    void held();
    /// Requests of the session go to the server.
    void opened();
    void failed(VEK::CaptureEnd end, QString const& message);
    void closed();

private:
    void step();
    void queue();
    void awaitFreeSocket();
    void startServer();
    void connectLocal();
    void connectRemote();
    void onConnected();
    void onServerFinished();
    void fail(CaptureEnd end, QString const& message);
    void goTo(void (ServerLink::*step)(), int patience);
    void dropConnection();
    void release();
    template <typename Client>
    void setTap(Client& client);
    bool isRemote() const { return !m_settings.host.isEmpty(); }
    bool startsServer() const { return !isRemote() && !m_settings.attach; }

    CaptureSettings m_settings;
    JtagServer m_server;
    std::unique_ptr<CableHold> m_hold;
    std::unique_ptr<QProcess> m_process;
    std::unique_ptr<JtagClient> m_local;
    std::unique_ptr<JtagClientNlc> m_remote;
    void (ServerLink::*m_step)() = nullptr;
    QElapsedTimer m_since; ///< The step began.
    int m_patience = 0;    ///< ms, for the step.
    QTimer m_retry;
    QTimer m_kill;
    bool m_isConnected = false; ///< Or was.
    bool m_hasAnswered = false;
    bool m_isClosing = false;
};

} // namespace VEK
