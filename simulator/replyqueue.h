#pragma once

#include "simulator/bench.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QQueue>
#include <QTimer>

class QIODevice;

namespace VEK::Simulator {

/// Sends the frames of one connection in order, with the delays and cuts that the bench asks for.
class ReplyQueue : public QObject
{
    Q_OBJECT

public:
    /// Frames that are held for company go out after this time even when too few have come.
    static constexpr int HoldTime = 1000; // ms

    /// `device` is a local or a TCP socket and must outlive this object.
    ReplyQueue(QIODevice& device, Faults const& faults);

    void push(QByteArray const& frame);
    /// Bytes that the other side has not taken yet.
    qint64 unsent() const;

private:
    struct Chunk
    {
        qint64 due; ///< ms on `m_clock`.
        QByteArray bytes;
        int sent;
    };

    void release();
    void send();

    QIODevice& m_device;
    Faults const m_faults;
    QByteArray m_held;
    int m_heldCount = 0;
    QQueue<Chunk> m_chunks;
    qint64 m_queued = 0; ///< Bytes in `m_held` and `m_chunks`.
    QElapsedTimer m_clock;
    QTimer m_holdTimer;
    QTimer m_sendTimer;
};

} // namespace VEK::Simulator
