#include "jtag/requestrouter.h"

#include <QMutexLocker>

#include <utility>

namespace VEK {
namespace {

using Protocol::Key::DataRequestId;
using Protocol::Key::RequestId;

/// Stores a callback under the lowest id that is free. The ids in the map are always `firstId` and
/// those behind it, as many as tasks were ever in flight together, so the lowest free one is either
/// that of an empty entry or the next one.
template <typename Callback>
unsigned int store(QMap<unsigned int, Callback>& callbacks, FreeIds& freeIds, unsigned int firstId,
                   Callback callback)
{
    unsigned int id = firstId + unsigned(callbacks.size());
    if (!freeIds.empty()) {
        id = freeIds.top();
        freeIds.pop();
    }
    callbacks[id] = std::move(callback);
    return id;
}

/// Moves a callback out, leaving an empty one. An id that is not there leaves the map as it is: a
/// new entry would change the ids to come.
template <typename Callback>
Callback release(QMap<unsigned int, Callback>& callbacks, FreeIds& freeIds, unsigned int id)
{
    auto const entry = callbacks.find(id);
    if (entry == callbacks.end() || !entry.value())
        return Callback();
    freeIds.push(id);
    return std::exchange(entry.value(), Callback());
}

CmdPack without(QString const& key, CmdPack const& pack)
{
    CmdPack rest;
    for (auto entry = pack.begin(); entry != pack.end(); ++entry) {
        if (entry.key() != key)
            rest.insert(rest.cend(), entry.key(), entry.value());
    }
    return rest;
}

} // namespace

CmdPack RequestRouter::numbered(CmdPack pack, TaskCallback const& callback)
{
    noteRequest(bool(callback));
    if (TaskCallback stored = callback) {
        QMutexLocker const locker(&m_lock);
        pack.insert(RequestId, store(m_tasks, m_freeIds, m_firstId, std::move(stored)));
    }
    return pack;
}

CmdPack RequestRouter::numbered(CmdPack pack, DataTaskCallback const& callback)
{
    noteRequest(bool(callback));
    if (DataTaskCallback stored = callback) {
        QMutexLocker const locker(&m_dataLock);
        pack.insert(DataRequestId,
                    store(m_dataTasks, m_freeDataIds, m_firstDataId, std::move(stored)));
    }
    return pack;
}

void RequestRouter::forgetAll(bool idsGoOn)
{
    // The old maps die outside the locks, since a callback may own objects with any destructor.
    QMap<unsigned int, TaskCallback> tasks;
    QMap<unsigned int, DataTaskCallback> dataTasks;
    {
        QMutexLocker const locker(&m_lock);
        tasks.swap(m_tasks);
        m_firstId = idsGoOn ? m_firstId + unsigned(tasks.size()) : 0;
        m_freeIds = {};
    }
    QMutexLocker const locker(&m_dataLock);
    dataTasks.swap(m_dataTasks);
    m_firstDataId = idsGoOn ? m_firstDataId + unsigned(dataTasks.size()) : 0;
    m_freeDataIds = {};
    ++m_cancelCount;
}

int RequestRouter::owedReplies() const
{
    int owed = 0;
    {
        QMutexLocker const locker(&m_lock);
        owed = m_tasks.size() - int(m_freeIds.size());
    }
    QMutexLocker const locker(&m_dataLock);
    return owed + m_dataTasks.size() - int(m_freeDataIds.size());
}

void RequestRouter::noteRequest(bool hasReply)
{
    if (!hasReply)
        ++m_writesSinceReply;
    else if (owedReplies() == 0)
        m_silence.start();
}

RequestRouter::Debt RequestRouter::debt() const
{
    int const owed = owedReplies();
    return {owed, m_writesSinceReply, owed > 0 ? m_silence.elapsed() : 0};
}

void RequestRouter::route(CmdPack const& pack)
{
    m_writesSinceReply = 0;
    m_silence.start();
    auto const task = pack.constFind(RequestId);
    if (task != pack.constEnd())
        return returnToTask(task->toUInt(), pack);
    auto const dataTask = pack.constFind(DataRequestId);
    if (dataTask != pack.constEnd())
        returnToDataTask(dataTask->toUInt(), pack);
}

void RequestRouter::returnToTask(unsigned int id, CmdPack const& pack)
{
    TaskCallback callback;
    {
        QMutexLocker const locker(&m_lock);
        callback = release(m_tasks, m_freeIds, id);
    }
    if (callback)
        callback(without(RequestId, pack));
}

void RequestRouter::returnToDataTask(unsigned int id, CmdPack const& pack)
{
    DataTaskCallback callback; // a copy: the entry stays for further replies
    unsigned int cancelsBefore = 0;
    {
        QMutexLocker const locker(&m_dataLock);
        callback = m_dataTasks.value(id);
        cancelsBefore = m_cancelCount;
    }
    if (!callback)
        return;
    bool finished = false;
    callback(without(DataRequestId, pack), &finished);
    if (!finished)
        return;
    DataTaskCallback done; // dies outside the lock
    QMutexLocker const locker(&m_dataLock);
    // After a cancelAll from inside the callback the id is gone, or is another request's by now.
    if (m_cancelCount == cancelsBefore)
        done = release(m_dataTasks, m_freeDataIds, id);
}

} // namespace VEK
