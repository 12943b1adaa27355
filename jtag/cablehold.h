#pragma once

#include <QByteArray>
#include <QString>

namespace VEK {

/// The right of one run to the server of a cable.
///
/// All servers of a cable have the same socket, so a second run on the machine would end up with
/// the server of the first: it would open the chain under a capture, and lose its server when the
/// first run ends. Runs with different temporary folders have different sockets, and don't meet.
///
/// Held by an abstract socket, which is no file and is gone with the process, however that ends.
class CableHold
{
public:
    /// `server` is the local socket name of the server.
    explicit CableHold(QString const& server);
    ~CableHold();
    Q_DISABLE_COPY(CableHold)

    /// Takes the right; waits for a run that is at its end, as long as one waits for a server to
    /// answer. False when another run holds it still.
    bool take();

    /// The same without waiting.
    bool tryTake();

    /// Whether somebody listens at the server's socket, though no run holds it: a server whose host
    /// was killed takes some milliseconds to end.
    bool isServed() const;

    /// Removes the socket file that a killed server leaves, if nobody listens there. For the one
    /// that holds the right only: the next server may listen at any time.
    void removeDeadSocket() const;

private:
    bool connects(int& error) const;

    QByteArray m_path; ///< Of the server's socket.
    QByteArray m_name; ///< Of the abstract socket.
    int m_socket = -1;
};

} // namespace VEK
