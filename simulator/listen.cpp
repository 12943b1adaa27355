#include "simulator/listen.h"

#include <QDir>
#include <QFile>
#include <QLocalServer>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace VEK::Simulator {
namespace {

/// Closes a file descriptor at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Q_DISABLE_COPY(Descriptor)

    int number() const { return m_number; }

private:
    int m_number;
};

/// Whether a socket file is there that nobody serves: the server that made it was killed.
bool isStale(QByteArray const& path)
{
    struct stat status;
    if (::lstat(path.constData(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return false;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (std::size_t(path.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.constData(), std::size_t(path.size()));
    Descriptor const probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (probe.number() < 0)
        return false;
    int const result =
        ::connect(probe.number(), reinterpret_cast<sockaddr const*>(&address), sizeof address);
    return result != 0 && errno == ECONNREFUSED;
}

/// Keeps other servers from the folder between the look at a socket file and its replacement, so
/// that two that start at once do not replace each other's.
bool lockFolder(Descriptor const& folder)
{
    constexpr int Attempts = 200;
    constexpr int Pause = 10000; // us
    for (int i = 0; i < Attempts; ++i) {
        if (::flock(folder.number(), LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR)
            return false;
        ::usleep(Pause);
    }
    return false;
}

} // namespace

bool listenLocal(QLocalServer& server, QString const& name, QString& error)
{
    QString const folder = QDir::cleanPath(QDir::tempPath());
    QString const path = folder + QLatin1Char('/') + name;
    Descriptor const lock(
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lockFolder(lock)) {
        error = QStringLiteral("%1 can't be locked").arg(folder);
        return false;
    }
    if (isStale(QFile::encodeName(path)))
        QLocalServer::removeServer(name);
    if (server.listen(name))
        return true;
    error = QStringLiteral("%1: %2").arg(path, server.errorString());
    return false;
}

} // namespace VEK::Simulator
