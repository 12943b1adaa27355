#pragma once

#include "dump/netlist.h"

#include <QObject>

#include <atomic>
#include <memory>

class QThread;

/// Reads a whole dump for what its nets do, in a thread of its own: a large one takes seconds.
class NetScan : public QObject
{
    Q_OBJECT

public:
    /// Begins at once.
    explicit NetScan(QString const& dump, QObject* parent = nullptr);
    /// Stops the reading, where it is still on.
    ~NetScan() override;

    // to be asked once it is done

    std::vector<VEK::Dump::Net> const& nets() const { return m_nets; }
    /// A warning about a dump that was cut, or why it can't be read; empty when all is well.
    QString const& message() const { return m_message; }

Q_SIGNALS:
    void done();

private:
    std::vector<VEK::Dump::Net> m_nets;
    QString m_message;
    std::atomic<bool> m_isStopped{false};
    std::unique_ptr<QThread> m_thread;
};
