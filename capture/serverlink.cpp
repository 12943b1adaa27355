#include "capture/serverlink.h"

#include "jtag/jtagsession.h"
#include "jtag/serverstartup.h"

#include <QDir>

#include <csignal>
#include <utility>

#include <sys/prctl.h>
#include <unistd.h>

namespace VEK {
namespace {

constexpr int LocalRetry = 2; // ms; a server that was just started listens soon
constexpr int RemoteRetry = 100;
constexpr int LeftoverPatience = 2000;
constexpr int TerminatePatience = 1000; ///< For a server to end by itself.

QString programOf(JtagServer const& server)
{
    return server.cable == CableLPT ? Server::LptProgram : Server::UsbProgram;
}

/// A server that ends with its host, however that ends, but not by the interrupt of a terminal: the
/// host has to tell the chip first.
class ServerProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    }
};

/// Later: one of its signals may have led here.
template <typename Client>
void dropClient(std::unique_ptr<Client>& client)
{
    if (!client)
        return;
    client->disconnect();
    client->close();
    client.release()->deleteLater();
}

QString seconds(int ms)
{
    return QString::number(ms / 1000.0) + QStringLiteral(" s");
}

} // namespace

ServerLink::ServerLink(QObject* parent) : QObject(parent)
{
    m_retry.setSingleShot(true);
    m_retry.setTimerType(Qt::PreciseTimer);
    connect(&m_retry, &QTimer::timeout, this, &ServerLink::step);
    m_kill.setSingleShot(true);
    m_kill.setInterval(TerminatePatience);
    connect(&m_kill, &QTimer::timeout, this, [this] { m_process->kill(); });
}

ServerLink::~ServerLink()
{
    if (!isOpen())
        return;
    m_isClosing = true;
    dropConnection();
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(Server::StopTimeout);
    }
    if (startsServer())
        m_hold->removeDeadSocket();
}

void ServerLink::open(CaptureSettings const& settings)
{
    m_settings = settings;
    m_isClosing = false;
    m_isConnected = false;
    m_hasAnswered = false;
    m_server = localServer(settings.cable);
    if (isRemote()) {
        m_server.address = settings.host;
        m_server.port = settings.port;
    }
    // a server elsewhere is one's own as well, among the runs of this machine
    m_hold = std::make_unique<CableHold>(
        isRemote() ? QStringLiteral("%1:%2").arg(settings.host).arg(settings.port)
                   : m_server.address);
    goTo(&ServerLink::queue, settings.queue);
}

/// Goes on with another step, which repeats itself by the retry timer.
void ServerLink::goTo(void (ServerLink::*step)(), int patience)
{
    m_step = step;
    m_patience = patience;
    m_since.start();
    m_retry.start(0);
}

void ServerLink::step()
{
    (this->*m_step)();
}

void ServerLink::queue()
{
    if (m_hold->tryTake()) {
        if (isRemote())
            goTo(&ServerLink::connectRemote, m_settings.patience);
        else if (m_settings.attach)
            goTo(&ServerLink::connectLocal, m_settings.patience);
        else
            goTo(&ServerLink::awaitFreeSocket, LeftoverPatience);
        emit held();
    } else if (m_since.hasExpired(m_patience)) {
        fail(CaptureEnd::Busy, QStringLiteral("Another run holds the cable. Wait for its end."));
    } else {
        m_retry.start(RemoteRetry / 4);
    }
}

/// The server of a run that was killed must not be taken for the one that is started here.
void ServerLink::awaitFreeSocket()
{
    if (!m_hold->isServed())
        startServer();
    else if (m_since.hasExpired(m_patience))
        fail(CaptureEnd::Busy,
             QStringLiteral("Another program's JTAG server is at the cable's socket. End it, or "
                            "set TMPDIR to a folder of its own."));
    else
        m_retry.start(LocalRetry);
}

void ServerLink::startServer()
{
    m_process = std::make_unique<ServerProcess>();
    // Nobody reads what a server prints; unread, it would pile up in the process object.
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setStandardErrorFile(QProcess::nullDevice());
    QString const path = serverProgramPath(programOf(m_server));
    connect(m_process.get(), &QProcess::started, this,
            [this] { goTo(&ServerLink::connectLocal, m_settings.patience); });
    connect(m_process.get(), &QProcess::errorOccurred, this,
            [this, path](QProcess::ProcessError e) {
                if (e == QProcess::FailedToStart)
                    fail(CaptureEnd::NoServer,
                         QStringLiteral("The JTAG server %1 can't be started: %2. Is it installed?")
                             .arg(QDir::cleanPath(path), m_process->errorString()));
            });
    connect(m_process.get(), QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &ServerLink::onServerFinished);
    m_process->start(path, {Server::LocalArgument}, QIODevice::ReadWrite);
}

void ServerLink::connectLocal()
{
    if (!m_local) {
        m_local = std::make_unique<JtagClient>();
        setTap(*m_local);
        connect(m_local.get(), &JtagClient::connected, this, &ServerLink::onConnected);
    }
    if (m_local->state() == QLocalSocket::UnconnectedState)
        m_local->connectToServer(m_server.address, QIODevice::ReadWrite);
    if (m_local->state() == QLocalSocket::ConnectedState)
        return;
    if (m_settings.attach && m_local->state() == QLocalSocket::UnconnectedState)
        fail(CaptureEnd::NoServer, QStringLiteral("There is no JTAG server to attach to at %1.")
                                       .arg(QDir::temp().filePath(m_server.address)));
    else if (m_since.hasExpired(m_patience))
        fail(CaptureEnd::Silent,
             QStringLiteral("The JTAG server does not answer: it took no connection within %1.")
                 .arg(seconds(m_patience)));
    else
        m_retry.start(LocalRetry);
}

void ServerLink::connectRemote()
{
    if (!m_remote) {
        m_remote = std::make_unique<JtagClientNlc>();
        setTap(*m_remote);
        connect(m_remote.get(), &JtagClientNlc::connected, this, &ServerLink::onConnected);
        connect(m_remote.get(), &JtagClientNlc::cmdReceived, this,
                [this] { m_hasAnswered = true; });
    }
    if (m_since.hasExpired(m_patience)) {
        QString const why = m_remote->state() == QAbstractSocket::UnconnectedState
                                ? m_remote->errorString()
                                : QStringLiteral("no answer");
        fail(CaptureEnd::Silent,
             QStringLiteral("The JTAG server %1 port %2 can't be connected to within %3: %4.")
                 .arg(m_settings.host, QString::number(m_settings.port), seconds(m_patience), why));
        return;
    }
    if (m_remote->state() == QAbstractSocket::UnconnectedState)
        m_remote->connectToHost(m_settings.host, quint16(m_settings.port), QIODevice::ReadWrite);
    if (m_remote->state() != QAbstractSocket::ConnectedState)
        m_retry.start(RemoteRetry);
}

template <typename Client>
void ServerLink::setTap(Client& client)
{
    client.tap = m_settings.tap;
    connect(&client, &Client::disconnected, this, [this] {
        if (m_settings.tap && !m_isClosing)
            m_settings.tap(WireEvent::Lost, {});
    });
}

void ServerLink::onConnected()
{
    m_retry.stop();
    m_isConnected = true;
    JtagSession* const session = JtagSession::shared();
    session->setNlcMode(isRemote());
    if (isRemote()) {
        m_remote->setSocketOption(QAbstractSocket::LowDelayOption, 1); // many small requests
        session->setSessionForNlc(m_server, m_remote.get());
    } else {
        session->setSession(m_server, m_local.get());
    }
    session->connectServer(m_server.name);
    emit opened();
}

bool ServerLink::isConnected() const
{
    if (m_remote)
        return m_remote->state() == QAbstractSocket::ConnectedState;
    return m_local && m_local->state() == QLocalSocket::ConnectedState;
}

qint64 ServerLink::unreadBytes() const
{
    if (m_remote)
        return m_remote->bytesAvailable();
    return m_local ? m_local->bytesAvailable() : 0;
}

void ServerLink::onServerFinished()
{
    m_kill.stop();
    if (m_isClosing)
        release();
    else if (!m_isConnected) // else the session tells
        fail(CaptureEnd::Silent, QStringLiteral("The JTAG server has ended at its start."));
}

void ServerLink::fail(CaptureEnd end, QString const& message)
{
    m_retry.stop();
    if (!m_isClosing)
        emit failed(end, message);
}

void ServerLink::close()
{
    if (!isOpen() || std::exchange(m_isClosing, true))
        return;
    m_retry.stop();
    dropConnection();
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_kill.start();
        m_process->terminate();
    } else {
        QTimer::singleShot(0, this, &ServerLink::release);
    }
}

void ServerLink::dropConnection()
{
    JtagSession* const session = JtagSession::shared();
    session->disconnectServer();
    // the session keeps a connection as the current one that it has forgotten
    session->switchSession({});
    session->switchSessionForNlc({});
    session->setNlcMode(false);
    if (m_remote && m_remote->state() == QAbstractSocket::ConnectedState) {
        m_remote->disconnectFromHost(); // once all is written
        if (m_remote->state() != QAbstractSocket::UnconnectedState)
            m_remote->waitForDisconnected(TerminatePatience);
    }
    if (m_local && m_local->state() == QLocalSocket::ConnectedState)
        m_local->waitForBytesWritten(TerminatePatience);
    dropClient(m_local);
    dropClient(m_remote);
}

void ServerLink::release()
{
    m_process.reset();
    if (startsServer())
        m_hold->removeDeadSocket();
    m_hold.reset();
    emit closed();
}

} // namespace VEK
