#pragma once

#include <QtGlobal>

/// Ends a server with the host that started it. A host holds the other end of the server's standard
/// input, a pipe, for as long as it lives: when that end is closed the host has gone, however it
/// went. A standard input that is no pipe, such as a terminal or the null device, ends nothing: so
/// a server that was started by hand goes on.
namespace VEK::Simulator::HostWatch {

/// Whether the host has gone; true before anything else was done for one that was killed while it
/// was starting the server.
bool isHostGone();

/// Watches from now on, on a thread of its own: the end comes at once even while the main thread
/// loads a stimulus or waits for a dump that never comes. The process ends without tidying up, and
/// leaves its socket file as a server that is killed does.
void start();

/// A listening socket that refuses connections from the end of the host on. The end of a process
/// with a large stimulus takes a while, in which the next host must not come upon it.
void closeAtEnd(qintptr socket);

} // namespace VEK::Simulator::HostWatch
