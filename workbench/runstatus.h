#pragma once

#include "capture/capture.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;

/// A run in the status bar: what it waits for and how long, how much of a window is read, and a
/// button that ends the run of a server which answers no more. Hidden between runs.
class RunStatus : public QWidget
{
    Q_OBJECT

public:
    /// The capture must outlive it.
    explicit RunStatus(VEK::Capture& capture);

private:
    void onRunningChanged(bool running);
    void onWaiting();
    void onProgress(int place, int window, int received, int total);
    void showState(QString const& text);
    void look();

    VEK::Capture& m_capture;
    QLabel* const m_state;
    QProgressBar* const m_bar;
    QToolButton* const m_replace;
    QTimer m_timer;
    QElapsedTimer m_waiting;
};
