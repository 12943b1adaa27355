#include "simulator/parentwatch.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace VEK::Simulator {
namespace {

constexpr int LookInterval = 200; // ms

/// Whether a standard stream is a pipe whose other end is closed.
bool isDeadPipe(int descriptor, short flag)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0 || !S_ISFIFO(status.st_mode))
        return false;
    pollfd look = {descriptor, 0, 0};
    return ::poll(&look, 1, 0) == 1 && (look.revents & flag);
}

} // namespace

ParentWatch::ParentWatch() : m_parent(::getppid())
{}

bool ParentWatch::isOrphan()
{
    return isDeadPipe(STDIN_FILENO, POLLHUP) && isDeadPipe(STDOUT_FILENO, POLLERR);
}

void ParentWatch::start()
{
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (::getppid() != m_parent)
            QCoreApplication::quit();
    });
    m_timer.start(LookInterval);
    // At once where the system can tell: the next run must not come upon a server that is to end.
    int const parent = int(::syscall(SYS_pidfd_open, m_parent, 0));
    if (parent < 0)
        return;
    auto* const end = new QSocketNotifier(parent, QSocketNotifier::Read, this);
    connect(end, &QSocketNotifier::activated, this, &QCoreApplication::quit);
}

} // namespace VEK::Simulator
