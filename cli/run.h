#pragma once

#include "capture/capture.h"
#include "cli/manifest.h"
#include "cli/outputfiles.h"
#include "cli/overrides.h"
#include "cli/progress.h"
#include "jtag/wirerecorder.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

namespace VEK::Cli {

/// What `vek run` was asked for.
struct RunSettings
{
    QString configuration;
    QString output;
    QStringList formats{QStringLiteral("csv")};
    bool plain = false;
    SampleClock clock;
    QString manifest;
    QString recording; ///< Of the wire; empty for none.
    QMap<QString, QString> labels;
    int attempt = 1;
    QList<int> cores; ///< By their own indexes; empty for all.
    Overrides overrides;
    QString cableWord; ///< As in the manifest.
    CaptureSettings capture;
    bool progress = false;
};

/// One run of `vek run`: writes what `Capture` gives, and decides on the exit status.
class Run : public QObject
{
    Q_OBJECT

public:
    explicit Run(RunSettings const& settings);

    /// Runs the event loop. The exit status; throws a Failure before the run has begun.
    int exec();

private:
    void prepare();
    void connectCapture();
    void begin();
    void onHeld();
    void describe();
    void startRecording();
    void endRecording();
    Failure unrecorded(QString const& error) const;
    void onWindow(int place, int window, QList<WaveMonitor::SignalData> const& samples);
    void onSignal(int number);
    void onEnded(CaptureOutcome const& outcome);
    void fail(Failure const& failure);
    void finish(Status status, QString message, QString const& reason);
    void tellFiles(QList<WrittenFile> const& files);
    static void tellPath(QString const& path);
    void warn(QString const& message);
    QString coreName(int place) const;
    int indexOf(int place) const;
    int windowsOf(int place) const;
    int triggerOf(int place) const;
    QString triggerTextOf(int place) const;

    RunSettings m_settings;
    WireRecorder m_recorder; ///< Outlives the capture, which hands it frames.
    Capture m_capture;
    QList<int> m_places;
    OutputFiles m_files;
    Manifest m_manifest;
    Progress m_progress;
    QStringList m_warnings;
    QString m_failure;      ///< Of an output, which decides the status.
    bool m_isBegun = false; ///< The manifest of this run is there.
    int m_signal = 0;
};

} // namespace VEK::Cli
