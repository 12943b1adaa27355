#pragma once

#include "cli/capturefile.h"

#include <QWidget>

namespace WaveMonitor {
class WaveMonitorWidget;
}

/// One file's capture as waves: a monitor, or one for each of several cores behind tabs. Its
/// windows lie one after the other. A session is shown as it was arranged and looked at.
class CapturePane : public QWidget
{
    Q_OBJECT

public:
    /// Throws a `Cli::Failure` for a file that can't be read.
    CapturePane(QString const& path, VEK::Cli::CaptureHints const& hints,
                QWidget* parent = nullptr);

    QString const& path() const { return m_path; }
    /// What was left out of the file.
    QStringList const& warnings() const { return m_warnings; }
    /// That of the core in front.
    WaveMonitor::WaveMonitorWidget* monitor() const;

    /// Zooms so that these samples of the core in front, both inclusive, fill the waves, as far as
    /// the zoom goes. The pane must have its size.
    void showSpan(int from, int to);

private:
    void showCores(VEK::Cli::CaptureFile const& file);
    void showSession();

    QString m_path;
    QStringList m_warnings;
    class QTabWidget* m_cores;
};
