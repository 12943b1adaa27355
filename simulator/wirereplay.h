#pragma once

#include "jtag/wirefile.h"
#include "simulator/requesthandler.h"

#include <QBitArray>
#include <QHash>

#include <functional>
#include <optional>
#include <vector>

namespace VEK::Simulator {

/// What the words that a client has sent make of those that follow.
class WireState
{
public:
    void note(CmdPack const& request);

    /// What a request is recognised by: its content, and what it is about. Ids don't count.
    QByteArray keyOf(CmdPack request) const;

    /// How often the start register of the selected core was written.
    int starts() const { return m_starts.value(m_core); }

    /// The selected core and the last address or burst, for a person.
    QString text() const;

private:
    QByteArray m_core;    ///< The word that selected it.
    QByteArray m_pointer; ///< The word that said what is read: an address, or a burst.
    QHash<QByteArray, int> m_starts;
};

/// Answers as a recording does. The n-th request of a kind gets the n-th answer, and the last
/// answer stands for further ones. A poll gets the answer that says that the core has fired if one
/// follows before anything else is written to the start register, so that nobody waits as long as
/// the recorded run did. A request that was answered by silence is so again, and where the server
/// closed the connection it is closed.
class WireReplay : public RequestHandler
{
public:
    /// Reads a recording. With `takesCut` what is left of one that was cut will do. False, with an
    /// `error`, when it can't be replayed.
    bool load(QIODevice& device, bool takesCut, QString& error);

    /// A request that was never recorded gets an error, where it has room for one, or closes the
    /// connection, where it awaits bits; words that await nothing are taken.
    bool serve(CmdPack const& request, CmdPack& reply) override;
    bool closes() const override { return m_closes; }

    /// Is told, for a person, of each request that was never recorded.
    std::function<void(QString const&)> onUnrecorded;

    WireHeader const& header() const { return m_header; }
    int requests() const { return m_requests; }     ///< That were served.
    int unrecorded() const { return m_unrecorded; } ///< Of them.

private:
    /// A request as it was recorded.
    struct Occurrence
    {
        int starts = 0;        ///< See WireState.
        bool hasFired = false; ///< A poll whose answer says so.
        int answer = -1;       ///< In `m_answers`; -1 for silence.
    };

    /// All that are alike.
    struct Kind
    {
        std::vector<Occurrence> occurrences; ///< Of those that await an answer.
        std::size_t next = 0;

        Occurrence const& take(int starts, bool isPoll);
    };

    /// Requests that an answer was not yet seen to, by the key of their id and the id.
    using Pending = QHash<QPair<QString, uint>, QPair<QByteArray, std::size_t>>;

    bool loadFrame(WireFrame const& frame, Pending& pending, QString& error);
    void loadRequest(CmdPack const& request, Pending& pending);
    void loadReply(CmdPack reply, Pending& pending);
    bool refuse(CmdPack const& request, CmdPack& reply);

    WireHeader m_header;
    QHash<QByteArray, Kind> m_kinds;
    std::vector<CmdPack> m_answers; ///< Without ids.
    bool m_isLost = false;          ///< The recorded server closed the connection.
    WireState m_state;
    bool m_closes = false;
    int m_requests = 0;
    int m_unrecorded = 0;
};

} // namespace VEK::Simulator
