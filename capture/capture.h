#pragma once

#include "capture/capturesettings.h"
#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPair>
#include <QSet>
#include <QString>
#include <QTimer>

#include <memory>

namespace VEK {
class DataManager;
class ServerLink;
class VekLiteDataManager;
class VekStandardDataManager;

/// Captures with one configuration, Standard or Lite: takes the cable, starts the server, drives
/// the data manager of that kind, and gives the results window by window. Nothing blocks, and every
/// run ends with `ended`.
///
/// Cores are named by their place in `cores()`, 0 for a lite core, since their own indexes need not
/// be those. A receiver of any signal may stop the run, but must not delete the object.
class Capture : public QObject
{
    Q_OBJECT

public:
    explicit Capture(QObject* parent = nullptr);
    /// Ends a run at once.
    ~Capture() override;

    /// Replaces the configuration; ends a run first, without `ended`. False with an error in words;
    /// then all stays as it was.
    bool open(QString const& path, QString& error);

    /// The cores, owned here until the next `open`. What is changed in them before a run holds for
    /// the run. One of the two is empty.
    QList<SxCore*> cores() const;
    SXCore_Lite* liteCore() const;

    /// Takes the cable, then arms the cores. Does nothing while a run is on or without cores. With
    /// `repeat` the capture starts again each time until `stop`.
    void run(CaptureSettings const& settings);
    bool isRunning() const { return m_phase != Phase::Idle; }

    /// Forces the cores that are armed; Standard cores only.
    void force();
    /// Ends the run: the cores are stopped, the chip's answer awaited for a second, the server
    /// ended. `ended` follows.
    void stop();
    /// The same without a word to a server that doesn't answer.
    void abort();
    /// Ends a run and its server at once, without `ended`.
    void shutDown();

    /// ms since a server that owes a reply gave the last one, beyond what its writes take; 0
    /// without such a debt.
    qint64 serverSilence() const;

Q_SIGNALS:
    /// The cores are about to go.
    void closing();
    void runningChanged(bool running);

    // How a run goes on, in this order.

    /// The cable is this process's own until `ended`.
    void held();
    /// The chain is to be opened; requests go to the server.
    void connected();
    /// The words that arm the core were written.
    void coreArmed(int place);
    /// The chip has taken them, and waits for its trigger. May come often.
    void coreWaiting(int place);
    /// The core has captured. `forced` if a force was written to it before.
    void coreFired(int place, bool forced);
    /// The core was stopped without a capture.
    void coreStopped(int place);
    /// So many sections of a window have come.
    void readProgress(int place, int window, int received, int total);
    /// A window was read whole; some before it may have been lost. `repeats` counts the captures of
    /// a repeated run, -1 in others.
    void windowArrived(int place, int window, QList<WaveMonitor::SignalData> const& samples,
                       int repeats);
    /// A window did not come whole, and does not arrive. Told at the end of its core's read at the
    /// latest.
    void windowLost(int place, int window);
    /// The server tells of the device, such as a stimulus that has ended: no end of the run.
    void told(QString const& message);
    /// How the run ended, once a run. The cable is free again.
    void ended(VEK::CaptureOutcome const& outcome);

private:
    enum class Phase { Idle, Starting, Running, Ending };

    void makeLink();
    void connectManager();
    int placeOf(int index) const;
    void onOpened();
    void startCores();
    void onCoreWaiting(int place);
    void onWaitOver();
    void onForceDue();
    void onStandardWindow(int index, int window);
    void onLiteWindow();
    void loseWindow(int place, int window);
    void onReason();
    void onComplete(int result);
    void finishRun();
    void onServerLost();
    void lookAtServer();
    void endRun(CaptureEnd end, QString const& message = QString());
    void onClosed();
    void setPhase(Phase phase);
    CaptureOutcome deviceOutcome(int result) const;
    QString messageFor(CaptureEnd end) const;
    DataManager* manager() const;

    std::unique_ptr<ServerLink> m_link;
    std::unique_ptr<VekStandardDataManager> m_standard;
    std::unique_ptr<VekLiteDataManager> m_lite;
    CaptureSettings m_settings;
    CaptureOutcome m_outcome;
    Phase m_phase = Phase::Idle;
    bool m_isStopping = false;    ///< The owner has stopped the run.
    bool m_isWaitBegun = false;   ///< The time from arming runs.
    bool m_isForced = false;      ///< By the settings.
    QSet<int> m_stopped;          ///< Places without a capture.
    QSet<QPair<int, int>> m_lost; ///< Windows of the read that is on, by place.
    QList<int> m_results;         ///< Of the manager's run that is ending.
    qint64 m_unread = 0;          ///< Of a connection that was lost.
    int m_idleRounds = 0;         ///< In which none of it was taken.
    QTimer m_waitTimer;
    QTimer m_forceTimer;
    QTimer m_stopTimer;
    QTimer m_lookTimer;
    QElapsedTimer m_sinceLook;
    QElapsedTimer m_sinceEnd; ///< Of the manager's run, while the server is to confirm stops.
};

} // namespace VEK

Q_DECLARE_METATYPE(VEK::CaptureOutcome)
