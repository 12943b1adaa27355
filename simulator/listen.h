#pragma once

#include <QString>

class QLocalServer;

namespace VEK::Simulator {

/// Listens on a local socket under the temporary folder. A socket file that nobody serves any more
/// is replaced, one that is served never; nor is a file that is no socket. False with an `error`.
bool listenLocal(QLocalServer& server, QString const& name, QString& error);

} // namespace VEK::Simulator
