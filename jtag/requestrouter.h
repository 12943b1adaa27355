#pragma once

#include "jtag/jtagtask.h"
#include "jtag/protocol.h"

#include <QElapsedTimer>
#include <QMap>
#include <QMutex>

#include <functional>
#include <queue>
#include <vector>

namespace VEK {

/// Ids of requests that may be given again, the lowest on top.
using FreeIds = std::priority_queue<unsigned int, std::vector<unsigned int>, std::greater<>>;

/// Numbers the requests of a session and brings each reply to the callback of its request. Knows
/// nothing of connections.
class RequestRouter
{
public:
    /// What the server owes. Servers answer in order, so one that is alive answers after at most
    /// some time and the time that the writes take it.
    struct Debt
    {
        int replies = 0;   ///< Requests that a reply is awaited to.
        int writes = 0;    ///< Requests without one that went out since the last reply.
        qint64 waited = 0; ///< ms since the last reply or, if later, since a reply is owed; else 0.
    };

    /// The request as it is to be sent: with a callback it gets a `request_id`, the lowest that is
    /// free. The callback is called with the reply, at most once.
    CmdPack numbered(CmdPack pack, TaskCallback const& callback);
    /// The same with a `data_request_id`: the callback stays until it says that it is finished.
    CmdPack numbered(CmdPack pack, DataTaskCallback const& callback);

    /// Calls the callback of a reply; without an id, or with one that nobody holds, the pack is
    /// dropped.
    void route(CmdPack const& pack);

    /// Forgets all callbacks. Ids start at 0 again, or go on, so that no later request gets one
    /// whose reply may be on its way. May be called from inside a callback.
    void forgetAll(bool idsGoOn);
    /// What was written went to another server.
    void forgetWrites() { m_writesSinceReply = 0; }

    Debt debt() const;

private:
    int owedReplies() const;
    void noteRequest(bool hasReply);
    void returnToTask(unsigned int id, CmdPack const& pack);
    void returnToDataTask(unsigned int id, CmdPack const& pack);

    // Neither lock is held over a call out, nor while the other one is taken.
    mutable QMutex m_lock;
    mutable QMutex m_dataLock;
    QMap<unsigned int, TaskCallback> m_tasks; // a finished task leaves an empty function
    QMap<unsigned int, DataTaskCallback> m_dataTasks;
    FreeIds m_freeIds; // ids of the empty functions
    FreeIds m_freeDataIds;
    unsigned int m_firstId = 0; // of the ids in the map
    unsigned int m_firstDataId = 0;
    unsigned int m_cancelCount = 0; // guarded by m_dataLock
    int m_writesSinceReply = 0;
    QElapsedTimer m_silence; // runs once a reply was owed
};

} // namespace VEK
