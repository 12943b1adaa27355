#pragma once

#include "jtag/protocol.h"
#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <memory>

namespace VEK {
class DataManager;
class VekLiteDataManager;
class VekStandardDataManager;

/// Captures with one configuration file, Standard or Lite. Wraps the data manager of that kind and
/// the server behind it; results come window by window.
class Capture : public QObject
{
    Q_OBJECT

public:
    explicit Capture(QObject* parent = nullptr);
    ~Capture() override;

    /// Replaces the configuration; ends a run first. False with an error in words; then all stays
    /// as it was.
    bool open(QString const& path, QString& error);

    /// The cores, owned here until the next `open`. One of the two is empty.
    QList<SxCore*> cores() const;
    SXCore_Lite* liteCore() const;

    /// Arms all cores. `cable` is a name of `VEK::Server`, `location` one of its locations or empty
    /// for any. With `repeat` the capture starts again each time until `stop`.
    void run(QString const& cable, QString const& location, bool repeat);
    void force();
    void stop();
    bool isRunning() const { return m_running; }
    /// Ends a run, and the server.
    void shutDown();

    /// Model of the device on the desk, which some cores' memory layout depends on.
    void setDeviceName(QString const& name);

Q_SIGNALS:
    /// The cores are about to go.
    void closing();
    /// A window was read whole, and so were those before it. `repeats` counts the captures of a
    /// repeated run.
    void windowArrived(int core, int window, QList<WaveMonitor::SignalData> const& samples,
                       int repeats);
    void runningChanged(bool running);
    /// The server tells of the device, such as a stimulus that has ended: no end of the run.
    void told(QString const& message);
    /// Some windows of a capture did not come whole, and don't arrive, nor do those behind them.
    void windowsLost(QString const& message);
    /// How the run ended, in words, once a run.
    void ended(bool ok, QString const& message);

private:
    void onStandardWindow(int core, int window);
    void onLiteWindow();
    void tellLoss(int core, int window, int count);
    void onReason();
    void onComplete(int result);
    void finishRun();
    void onServerLost();
    bool connectServer(QString const& cable);
    void dropServer();
    void setRunning(bool running);
    DataManager* manager() const;

    std::unique_ptr<VekStandardDataManager> m_standard;
    std::unique_ptr<VekLiteDataManager> m_lite;
    QString m_deviceName;
    bool m_running = false;
    bool m_stopped = false; ///< By the user.
    bool m_lost = false;    ///< The server has gone in the middle of the run.
    bool m_isWhole = true;  ///< No window of the run was lost.
    QHash<int, int> m_next; ///< The window that is to come, by core.
    QList<int> m_results;   ///< Of the run that is ending.
};

} // namespace VEK
