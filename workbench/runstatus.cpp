#include "workbench/runstatus.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QToolButton>

using namespace VEK;

namespace {

constexpr int LookInterval = 250; ///< ms
constexpr int Silence = 5000;     ///< ms without an answer, after which a server counts as hung.

} // namespace

RunStatus::RunStatus(Capture& capture)
    : m_capture(capture), m_state(new QLabel), m_bar(new QProgressBar), m_replace(new QToolButton)
{
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_bar->setMaximumWidth(120);
    m_replace->setText(QStringLiteral("Replace Server"));
    m_replace->setToolTip(
        QStringLiteral("Ends this run and its server. The next run starts another one."));
    layout->addWidget(m_state);
    layout->addWidget(m_replace);
    layout->addWidget(m_bar);
    m_timer.setInterval(LookInterval);
    connect(&m_timer, &QTimer::timeout, this, &RunStatus::look);
    connect(m_replace, &QToolButton::clicked, &capture, &Capture::abort);
    connect(&capture, &Capture::runningChanged, this, &RunStatus::onRunningChanged);
    connect(&capture, &Capture::connected, this, [this] { showState(QStringLiteral("Arming")); });
    connect(&capture, &Capture::coreArmed, this, [this] { m_waiting.invalidate(); });
    connect(&capture, &Capture::coreWaiting, this, &RunStatus::onWaiting);
    connect(&capture, &Capture::readProgress, this, &RunStatus::onProgress);
    onRunningChanged(false);
}

void RunStatus::onRunningChanged(bool running)
{
    setVisible(running);
    m_replace->hide();
    m_waiting.invalidate();
    m_bar->setRange(0, 0);
    showState(QStringLiteral("Waiting for the cable"));
    if (running)
        m_timer.start();
    else
        m_timer.stop();
}

/// Comes with each poll.
void RunStatus::onWaiting()
{
    if (m_waiting.isValid())
        return;
    m_waiting.start();
    m_bar->setRange(0, 0);
    look();
}

void RunStatus::onProgress(int place, int window, int received, int total)
{
    m_waiting.invalidate();
    m_bar->setRange(0, total);
    m_bar->setValue(received);
    bool const isOnly = m_capture.cores().size() < 2;
    showState(
        (isOnly ? QString() : QStringLiteral("Core %1: ").arg(m_capture.cores().at(place)->index)) +
        QStringLiteral("reading window %1").arg(window));
}

void RunStatus::showState(QString const& text)
{
    m_state->setText(text);
}

void RunStatus::look()
{
    qint64 const silence = m_capture.serverSilence();
    m_replace->setVisible(silence > Silence);
    if (silence > Silence)
        showState(QStringLiteral("The server has not answered for %1 s").arg(silence / 1000));
    else if (m_waiting.isValid())
        showState(QStringLiteral("Waiting for the trigger, %1 s").arg(m_waiting.elapsed() / 1000));
}
