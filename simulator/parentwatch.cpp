#include "simulator/parentwatch.h"

#include <QCoreApplication>

#include <poll.h>
#include <sys/stat.h>
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
}

} // namespace VEK::Simulator
