#pragma once

#include "capture/capture.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/sampletimes.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QMessageBox>
#include <QTimer>

#include <memory>

class CableBox;
class FindBar;
class Navigation;
class OverviewAction;
class QDockWidget;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QTabWidget;
class QVBoxLayout;

namespace VEK {
class VekProgrammerWidget;
}

namespace VEK::Cli {
class RehearsalDesk;
}

/// The window of the workbench: a wave monitor for each core in the middle, and around it the
/// cores' panels, the programmer and the messages.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    /// Opens a configuration or session file. When it can't, it says so and all stays as it was.
    bool open(QString const& path);

    /// Makes a device of the catalogue the only row of the programmer.
    void setDevice(QString const& name);

    /// A session with the configuration and what the monitors show, which is the open file from
    /// then on.
    bool saveSessionAs(QString const& path);

    /// One window of a core, in the format that the file's ending names: .csv, .prn or .vcd.
    void exportWindowAs(QString const& path, int core, int window);

    /// Runs one capture, then writes a picture of every pane into a folder and ends the
    /// application, with status 0 if all went well.
    void grab(QString const& folder);

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static constexpr QSize DefaultSize{1640, 900};

    /// How a monitor was looked at before a new capture, and after its first window.
    struct KeptView
    {
        WaveMonitor::ViewState before;
        WaveMonitor::ViewState after;
    };

    // what the window consists of (mainwindowparts.cpp)
    void makeCentre();
    void makeDocks();
    void makeFileMenu(QToolBar* bar);
    void makeCaptureMenu(QToolBar* bar);
    void makeViewMenu();
    void makeGoMenu();
    void addFindEntries(QMenu* menu);
    void makeHelpMenu();
    void askSampleClock();
    void restoreState();
    void keepState() const;
    void showRecentFiles();
    void rememberFile(QString const& path, bool isThere);
    void about();
    void grabPanes(QString const& folder, bool ok);

    // its files (mainwindowfiles.cpp)
    void chooseFile(QString const& recent = QString());
    void newFromSimulation();
    void openInViewer();
    void follow(QString const& file);
    void tellFindings(QString const& path);
    QStringList unsavedWork();
    void noteSaved();
    void updateTitle();
    bool mayLeave(QMessageBox::StandardButtons choices);
    bool mayReplaceNewer();
    void showSession(QString const& path);
    bool save();
    bool saveSession();
    QByteArray configuration();
    QByteArray fileText(QString const& path);
    QList<QList<int>> markers() const;
    void exportWindow(QString const& format);
    bool writeVcd(QIODevice& file, int core, QDomElement const& window) const;
    void onFileChanged();
    void onFolderChanged();
    void dropBanner();

    void clearCores();
    void showCores();
    void addTabs(QString const& name, int core, QWidget* panel);
    void widenCores();
    void saveCores();
    void run();
    bool goRehearsing(VEK::CaptureSettings& settings);
    void onWindowArrived(int core, int window, QList<WaveMonitor::SignalData> const& samples,
                         int repeats);
    void replaceSamples(int core, QList<WaveMonitor::SignalData> const& samples);
    void putViewBack(int core);
    void onFired(int core, bool forced);
    void onWindowLost(int core, int window);
    void onEnded(VEK::CaptureOutcome const& outcome);
    void updateActions();
    void say(QString const& message, bool isError = false);

    bool hasCores() const;
    SampleTimes sampleTimes() const;
    int triggerPosition(int core) const;
    int windowCount(int core) const;
    QList<VEK::SignalItem> capturedSignals(int core) const;
    WaveMonitor::WaveMonitorWidget* monitor(int core) const;
    WaveMonitor::WaveMonitorWidget* currentMonitor() const;
    QString deviceName() const;

    VEK::Capture m_capture;
    QString m_path;
    QString m_bench; ///< Of a rehearsal, which runs on nothing else; empty for a real core.
    std::unique_ptr<VEK::Cli::RehearsalDesk> m_desk; ///< Of a rehearsal's run that is on.
    QByteArray m_savedConfiguration;
    QList<QList<int>> m_savedMarkers; ///< By core.
    bool m_hasEditedRows = false;     ///< Since they were in a file.
    bool m_hasNewCapture = false;     ///< One that is in no session file.
    bool m_isNewerOnDisk = false;     ///< The open file has changed since it was read or written.
    QTimer m_titleTimer;              ///< From what a user does to a look at what it changed.
    QHash<int, int> m_next;           ///< The window of a core that is to come.
    QHash<int, int> m_fitted;         ///< Samples that the waves of a core were last fitted to.
    QHash<int, KeptView> m_kept;      ///< Of cores whose earlier windows have come, the later not.
    QFileSystemWatcher m_watcher;
    QString m_grabFolder;

    QTabWidget* m_monitors = nullptr;
    FindBar* m_find = nullptr;
    Navigation* m_navigation = nullptr;
    QLabel* m_whereabouts = nullptr;
    VEK::SampleClock m_sampleClock; ///< For the times of samples; no file tells it.
    OverviewAction* m_overviewAction = nullptr;
    QLabel* m_hint = nullptr;
    QVBoxLayout* m_centre = nullptr;
    QWidget* m_banner = nullptr;
    QTabWidget* m_cores = nullptr;
    QDockWidget* m_coresDock = nullptr;
    bool m_hasOwnDocks = false; ///< The user's, as they were left.
    VEK::VekProgrammerWidget* m_programmer = nullptr;
    QPlainTextEdit* m_messages = nullptr;
    CableBox* m_cable = nullptr;
    QMenu* m_recent = nullptr;
    QList<QAction*> m_fileActions; ///< Those that need an open file.
    QAction* m_runAction = nullptr;
    QAction* m_forceAction = nullptr;
    QAction* m_stopAction = nullptr;
    QAction* m_repeatAction = nullptr;
    QAction* m_cablesAction = nullptr;
};
