#pragma once

#include "workbench/sampletimes.h"

#include <QObject>

#include <functional>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
}

/// The menu "Go": ways through the waves in front, each with a key. Keys without Ctrl belong to
/// waves and rulers, so that trees and lines of text keep theirs.
class Navigation : public QObject
{
    Q_OBJECT

public:
    using Monitor = WaveMonitor::WaveMonitorWidget;

    /// `current` gives the monitor in front, or null; `times` what is known of its samples.
    Navigation(QMenuBar& menus, std::function<Monitor*()> current,
               std::function<SampleTimes()> times, QWidget* parent);

    /// Gives the keys to a monitor's waves and ruler.
    void adopt(Monitor& monitor);

    QMenu* menu() const { return m_menu; }

Q_SIGNALS:
    /// What a user has asked for can't be done.
    void refused(QString const& message);

private:
    using Slot = void (Monitor::*)();

    QAction* add(QString const& text, int keys, std::function<void(Monitor&)> const& go);
    QAction* add(QString const& text, int keys, Slot slot);
    void makeEntries();
    void goToTime();
    void goToTrigger(Monitor& monitor) const;
    static void pan(Monitor& monitor, double pages);

    std::function<Monitor*()> m_current;
    std::function<SampleTimes()> m_times;
    QMenu* m_menu;
    QList<QAction*> m_keys; ///< Of waves and rulers.
};

/// Lists the shortcuts of a menu bar's entries in a window of its own.
void showShortcuts(QMenuBar const& menus, QWidget* parent);
