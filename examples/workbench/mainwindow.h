#pragma once

#include "workbench/capture.h"

#include <QFileSystemWatcher>
#include <QList>
#include <QMainWindow>

class QComboBox;
class QMenu;
class QPlainTextEdit;
class QProgressBar;
class QTabWidget;
class QVBoxLayout;

namespace VEK {
class DynamicConfigWidget;
class VekProgrammerWidget;
} // namespace VEK
namespace WaveMonitor {
class WaveMonitorWidget;
}

/// The window of the workbench: a wave monitor for each core in the middle, and around it the
/// cores' panels, the programmer and the messages.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();

    /// Opens a configuration or session file; says so when it can't.
    bool open(QString const& path);

    /// A session with the configuration and what the monitors show.
    void saveSessionAs(QString const& path);

    /// One window of a core, in the format that the file's ending names: .csv, .prn or .vcd.
    void exportWindowAs(QString const& path, int core, int window);

    /// Runs one capture, then writes a picture of every pane into a folder and ends the
    /// application, with status 0 if all went well.
    void grab(QString const& folder);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void makeDocks();
    void makeActions();
    void makeRunActions(QMenu* menu, QToolBar* bar);
    void makeExportActions(QMenu* menu);
    void restoreState();
    void showRecentFiles();
    void rememberFile(QString const& path);
    void showCores();
    void showSession(QString const& path);
    void saveCores();

    void chooseFile();
    void save();
    void saveSession();
    void exportWindow(QString const& format);
    void run();
    void onWindowArrived(int core, int window, QList<WaveMonitor::SignalData> const& samples,
                         int repeats);
    void onEnded(bool ok, QString const& message);
    void onRunningChanged(bool running);
    void onFileChanged();
    void say(QString const& message, bool isError = false);
    void grabPanes(QString const& folder, bool ok);

    int windowCount(int core) const;
    int triggerPosition(int core) const;
    QList<VEK::SignalItem> capturedSignals(int core) const;
    WaveMonitor::WaveMonitorWidget* monitor(int core) const;
    bool writeConfiguration(QString const& path);

    Capture m_capture;
    QString m_path;
    QFileSystemWatcher m_watcher;
    QTabWidget* m_monitors;
    QVBoxLayout* m_centre;
    QWidget* m_banner = nullptr;
    QTabWidget* m_cores = nullptr;
    VEK::VekProgrammerWidget* m_programmer = nullptr;
    QPlainTextEdit* m_messages = nullptr;
    QProgressBar* m_busy = nullptr;
    QComboBox* m_cable = nullptr;
    QMenu* m_recent = nullptr;
    QAction* m_runAction = nullptr;
    QAction* m_forceAction = nullptr;
    QAction* m_stopAction = nullptr;
    QAction* m_repeatAction = nullptr;
    QString m_grabFolder;
};
