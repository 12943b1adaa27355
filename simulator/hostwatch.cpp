#include "simulator/hostwatch.h"

#include <atomic>
#include <cstdlib>
#include <thread>

#include <poll.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
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

/// Has this thread run as soon as it wakes, though others keep the processors busy: the next host
/// connects some milliseconds after the end of this one, at the earliest. Systems before Linux 6.12
/// pass over the short slice, and favour a thread that has slept anyway.
void askForShortSlice()
{
    struct // as the system call takes it; the C library has no declaration of it
    {
        quint32 size = 48;
        quint32 policy = SCHED_OTHER;
        quint64 flags = 0;
        qint32 nice = ::getpriority(PRIO_PROCESS, 0);
        quint32 priority = 0;
        quint64 runtime = 100000; // ns
        quint64 deadline = 0;
        quint64 period = 0;
    } const attributes;
    ::syscall(SYS_sched_setattr, 0, &attributes, 0);
}

void endWithHost()
{
    askForShortSlice();
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
