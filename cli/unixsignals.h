#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace VEK::Cli {

/// INT, TERM and HUP as a Qt signal, one object a process. The first of them is told; a second one
/// ends the process at once, as it would without this object. One that is ignored, as under nohup,
/// stays so.
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    UnixSignals();
    ~UnixSignals() override;

Q_SIGNALS:
    void received(int number);

private:
    void onReadable();

    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace VEK::Cli
