#pragma once

#include "jtag/protocol.h"
#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QObject>
#include <QString>

#include <memory>

namespace VEK {
class VekLiteDataManager;
class VekStandardDataManager;
} // namespace VEK

/// Captures with one configuration file, Standard or Lite. Wraps the data manager of that kind and
/// the server behind it; results come window by window.
class Capture : public QObject
{
    Q_OBJECT

public:
    explicit Capture(QObject* parent = nullptr);
    ~Capture() override;

    /// Replaces the configuration; ends a run first. False with an error in words; then there are
    /// no cores.
    bool open(QString const& path, QString& error);

    /// The cores, owned here until the next `open`. One of the two is empty.
    QList<VEK::SxCore*> cores() const;
    VEK::SXCore_Lite* liteCore() const;

    /// Arms all cores. With `repeat` the capture starts again each time until `stop`.
    void run(VEK::CABLE cable, QString const& location, bool repeat);
    void force();
    void stop();
    bool isRunning() const { return m_running; }

    /// Model of the device on the desk, which some cores' memory layout depends on.
    void setDeviceName(QString const& name);

Q_SIGNALS:
    /// A window was read. `repeats` counts the captures of a repeated run.
    void windowArrived(int core, int window, QList<WaveMonitor::SignalData> const& samples,
                       int repeats);
    void runningChanged(bool running);
    /// What went wrong, or how the run ended, in words.
    void ended(bool ok, QString const& message);

private:
    void onStandardWindow(int core, int window);
    void onLiteWindow();
    void onComplete(int result);
    void finishRun();
    void onServerEnded();
    bool connectServer(VEK::CABLE cable);
    void setRunning(bool running);
    void fail(QString const& message);

    std::unique_ptr<VEK::VekStandardDataManager> m_standard;
    std::unique_ptr<VEK::VekLiteDataManager> m_lite;
    QString m_deviceName;
    bool m_running = false;
    bool m_stopped = false; ///< By the user, or because the server has gone.
    QList<int> m_results;   ///< Of the run that is ending.
};
