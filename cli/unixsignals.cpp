#include "cli/unixsignals.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace VEK::Cli {
namespace {

constexpr int Handled[] = {SIGINT, SIGTERM, SIGHUP};
int ends[2] = {-1, -1};

/// Hands the number over. What comes next has its default action again: it ends the process.
void onSignal(int number)
{
    for (int const handled : Handled)
        std::signal(handled, SIG_DFL);
    char const byte = char(number);
    ssize_t const written = ::write(ends[1], &byte, 1);
    static_cast<void>(written); // an empty pipe takes a byte
}

} // namespace

UnixSignals::UnixSignals()
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone shows as a failed write
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return; // signals keep their default action
    m_notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &UnixSignals::onReadable);
    for (int const handled : Handled) {
        struct sigaction before = {};
        ::sigaction(handled, nullptr, &before);
        if (before.sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        ::sigaction(handled, &action, nullptr);
    }
}

UnixSignals::~UnixSignals()
{
    for (int const handled : Handled) {
        struct sigaction now = {};
        ::sigaction(handled, nullptr, &now);
        if (now.sa_handler == onSignal)
            std::signal(handled, SIG_DFL);
    }
    m_notifier.reset();
    for (int& end : ends) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}

void UnixSignals::onReadable()
{
    char byte = 0;
    if (::read(ends[0], &byte, 1) == 1)
        Q_EMIT received(byte);
}

} // namespace VEK::Cli
