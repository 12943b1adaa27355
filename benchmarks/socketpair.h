#pragma once

#include <QByteArray>
#include <QLocalSocket>

#include <cerrno>
#include <functional>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace bench {

/// A connected local socket for the side that is measured; at the other end a thread of its own
/// does nothing but what it is given. The end of the measured side comes first: destroy it, then
/// this.
class SocketPair
{
public:
    /// `peer` gets the descriptor of the other end.
    SocketPair(QLocalSocket& socket, std::function<void(int)> const& peer)
    {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
            throw std::runtime_error("no socket pair");
        socket.setSocketDescriptor(ends[0], QLocalSocket::ConnectedState, QIODevice::ReadWrite);
        m_thread = std::thread([peer, end = ends[1]] {
            peer(end);
            ::close(end);
        });
    }

    ~SocketPair() { m_thread.join(); }

private:
    Q_DISABLE_COPY(SocketPair)

    std::thread m_thread;
};

/// Takes whatever comes until the other side closes. It looks now and then and never waits, or the
/// sender would pay for waking it at every frame, and a slow sender more often than a fast one.
inline void drain(int descriptor)
{
    constexpr unsigned Pause = 50; // us
    std::vector<char> buffer(1 << 20);
    for (;;) {
        ssize_t const count = ::recv(descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
            return;
        ::usleep(Pause);
    }
}

inline void sendAll(int descriptor, QByteArray const& bytes)
{
    for (qint64 done = 0; done < bytes.size();) {
        ssize_t const count =
            ::write(descriptor, bytes.constData() + done, std::size_t(bytes.size() - done));
        if (count < 0 && errno != EINTR)
            return;
        done += std::max<ssize_t>(0, count);
    }
}

} // namespace bench
