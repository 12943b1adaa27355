#include "simulator/hostwatch.h"

#include <atomic>
#include <cstdlib>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VEK::Simulator::HostWatch {
namespace {

constexpr int NoSocket = -1;
std::atomic<int> listeningSocket{NoSocket};

bool hasPipe()
{
    struct stat status;
    return ::fstat(STDIN_FILENO, &status) == 0 && S_ISFIFO(status.st_mode);
}

/// Whether the pipe hangs up within so many ms, -1 for ever. What may be in it stays there.
bool hangsUp(int timeout)
{
    pollfd look = {STDIN_FILENO, 0, 0};
    return ::poll(&look, 1, timeout) == 1 && (look.revents & POLLHUP);
}

void endWithHost()
{
    while (!hangsUp(-1)) { // a signal ends a look too
    }
    int const socket = listeningSocket;
    if (socket != NoSocket)
        ::shutdown(socket, SHUT_RDWR);
    std::_Exit(EXIT_SUCCESS);
}

} // namespace

bool isHostGone()
{
    return hasPipe() && hangsUp(0);
}

void start()
{
    if (hasPipe())
        std::thread(endWithHost).detach();
}

void closeAtEnd(qintptr socket)
{
    listeningSocket = int(socket);
}

} // namespace VEK::Simulator::HostWatch
