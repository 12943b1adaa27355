#pragma once

#include "workbench/viewedcapture.h"

#include <QWidget>

#include <optional>

class QTabWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
}

/// Samples of a capture, counted from its first one; what is not set is its begin or its end.
struct SampleRange
{
    std::optional<int> from;
    std::optional<int> to; ///< The last one that is meant.

    bool isSet() const { return from || to; }
};

/// A capture in the viewer: its name, and a monitor for each core.
class CapturePane : public QWidget
{
    Q_OBJECT

public:
    explicit CapturePane(ViewedCapture const& capture, QWidget* parent = nullptr);

    QStringList const& files() const { return m_files; }

    /// Of the core in front.
    WaveMonitor::WaveMonitorWidget* monitor() const;

    void setTitleVisible(bool visible);

    /// Only the waves and their rows: for pictures.
    void hideScrollBars();

    /// Fits the range into the waves of each core, also at a scale that zooming does not reach; the
    /// whole capture where nothing is set and no session tells how it was looked at. Needs a pane
    /// that is laid out. What a core does not have of the range is left out.
    void showRange(SampleRange const& range);

Q_SIGNALS:
    void closing();

private:
    void addMonitor(ViewedCore const& core);
    QWidget* makeTitle(ViewedCapture const& capture);

    QStringList m_files;
    QWidget* m_title;
    QTabWidget* m_cores;
    QList<WaveMonitor::WaveMonitorWidget*> m_savedViews; ///< Monitors that a session has set.
};
