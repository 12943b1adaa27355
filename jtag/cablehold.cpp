#include "jtag/cablehold.h"

#include "jtag/protocol.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace VEK {

CableHold::CableHold(QString const& server)
{
    QString const folder = QFileInfo(QDir::tempPath()).canonicalFilePath();
    m_path = QFile::encodeName(folder + QLatin1Char('/') + server);
    // hashed, since a name has but 107 bytes
    m_name = "vek-run-" + QCryptographicHash::hash(m_path, QCryptographicHash::Sha1).toHex();
}

CableHold::~CableHold()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

bool CableHold::take()
{
    for (int round = 0; round < Server::ConnectRounds; ++round) {
        if (tryTake())
            return true;
        usleep(Server::ConnectPause);
    }
    return false;
}

/// Only a name that is taken keeps a run out: a system without such sockets has no lock, and runs
/// all the same.
bool CableHold::tryTake()
{
    if (m_socket >= 0)
        return true;
    m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0)
        return true;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, m_name.constData(), std::size_t(m_name.size()));
    auto const size = socklen_t(offsetof(sockaddr_un, sun_path) + 1 + std::size_t(m_name.size()));
    if (::bind(m_socket, reinterpret_cast<sockaddr const*>(&address), size) == 0 ||
        errno != EADDRINUSE)
        return true;
    ::close(m_socket);
    m_socket = -1;
    return false;
}

bool CableHold::connects(int& error) const
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (std::size_t(m_path.size()) >= sizeof address.sun_path) {
        error = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, m_path.constData(), std::size_t(m_path.size()));
    int const socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    bool const ok = socket >= 0 && ::connect(socket, reinterpret_cast<sockaddr const*>(&address),
                                             sizeof address) == 0;
    error = ok ? 0 : errno;
    if (socket >= 0)
        ::close(socket);
    return ok;
}

bool CableHold::isServed() const
{
    int error = 0;
    return connects(error) || error == EAGAIN; // others wait to be served there
}

void CableHold::removeDeadSocket() const
{
    int error = 0;
    if (!connects(error) && error == ECONNREFUSED)
        ::unlink(m_path.constData());
}

} // namespace VEK
