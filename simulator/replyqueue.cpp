#include "simulator/replyqueue.h"

#include <QAbstractSocket>
#include <QLocalSocket>

#include <algorithm>

namespace VEK::Simulator {
namespace {

/// Between two bytes that are sent by themselves; long enough that a busy host finds them apart.
constexpr int BytePause = 1; // ms

void flush(QIODevice& device)
{
    if (auto* local = qobject_cast<QLocalSocket*>(&device))
        local->flush();
    else if (auto* tcp = qobject_cast<QAbstractSocket*>(&device))
        tcp->flush();
}

} // namespace

ReplyQueue::ReplyQueue(QIODevice& device, Faults const& faults) : m_device(device), m_faults(faults)
{
    m_clock.start();
    m_holdTimer.setSingleShot(true);
    m_sendTimer.setSingleShot(true);
    m_sendTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_holdTimer, &QTimer::timeout, this, &ReplyQueue::release);
    connect(&m_sendTimer, &QTimer::timeout, this, &ReplyQueue::send);
}

void ReplyQueue::push(QByteArray const& frame)
{
    m_held += frame;
    m_queued += frame.size();
    if (++m_heldCount >= m_faults.together)
        release();
    else if (!m_holdTimer.isActive())
        m_holdTimer.start(HoldTime);
}

qint64 ReplyQueue::unsent() const
{
    return m_queued + m_device.bytesToWrite();
}

void ReplyQueue::release()
{
    m_holdTimer.stop();
    m_chunks.enqueue({m_clock.elapsed() + m_faults.delay, m_held, 0});
    m_held.clear();
    m_heldCount = 0;
    if (!m_sendTimer.isActive())
        send();
}

void ReplyQueue::send()
{
    while (!m_chunks.isEmpty()) {
        Chunk& chunk = m_chunks.head();
        qint64 const wait = chunk.due - m_clock.elapsed();
        if (wait > 0) {
            m_sendTimer.start(int(wait));
            return;
        }
        int const left = chunk.bytes.size() - chunk.sent;
        int const count = m_faults.byteByByte ? std::min(left, 1) : left;
        m_device.write(chunk.bytes.constData() + chunk.sent, count);
        flush(m_device);
        chunk.sent += count;
        m_queued -= count;
        if (chunk.sent == chunk.bytes.size())
            m_chunks.dequeue();
        if (m_faults.byteByByte) {
            m_sendTimer.start(BytePause);
            return;
        }
    }
}

} // namespace VEK::Simulator
