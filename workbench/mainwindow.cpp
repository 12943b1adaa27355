#include "workbench/mainwindow.h"

#include "cli/exitstatus.h"
#include "cli/rehearsaldesk.h"
#include "programmer/vekprogrammermodel.h"
#include "programmer/vekprogrammerwidget.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"
#include "triggerui/dynamicconfigwidget.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/cablebox.h"
#include "workbench/navigation.h"
#include "workbench/overviewaction.h"
#include "workbench/triggerline.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTabWidget>
#include <QTime>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

static constexpr int TitleDelay = 100; ///< ms

/// Outside of any namespace, as the macro demands.
static void initImages()
{
    Q_INIT_RESOURCE(workbench);
}

MainWindow::MainWindow()
{
    initImages();
    setWindowTitle(QStringLiteral("Workbench"));
    makeCentre();
    makeDocks();
    QToolBar* const bar = addToolBar(QStringLiteral("Tool Bar"));
    bar->setObjectName(QStringLiteral("main"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    makeFileMenu(bar);
    makeCaptureMenu(bar);
    makeViewMenu();
    makeGoMenu();
    makeHelpMenu();

    connect(&m_capture, &Capture::closing, this, &MainWindow::clearCores);
    connect(&m_capture, &Capture::windowArrived, this, &MainWindow::onWindowArrived);
    connect(&m_capture, &Capture::told, this, [this](QString const& message) { say(message); });
    connect(&m_capture, &Capture::coreFired, this, &MainWindow::onFired);
    connect(&m_capture, &Capture::windowLost, this, &MainWindow::onWindowLost);
    connect(&m_capture, &Capture::ended, this, &MainWindow::onEnded);
    connect(&m_capture, &Capture::runningChanged, this, &MainWindow::updateActions);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &MainWindow::onFileChanged);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &MainWindow::onFolderChanged);
    m_titleTimer.setSingleShot(true);
    m_titleTimer.setInterval(TitleDelay);
    connect(&m_titleTimer, &QTimer::timeout, this, &MainWindow::updateTitle);
    qApp->installEventFilter(this);
    restoreState();
    updateActions();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->setAccepted(mayLeave(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel));
    if (!event->isAccepted())
        return;
    keepState();
    m_capture.shutDown();
}

/// Panels and monitors don't tell of all that is changed in them, but it changes by what a user
/// does, also in a dialog.
bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    QEvent::Type const type = event->type();
    if (type == QEvent::MouseButtonRelease || type == QEvent::KeyRelease || type == QEvent::Wheel ||
        type == QEvent::Drop)
        m_titleTimer.start();
    return QMainWindow::eventFilter(watched, event);
}

MainWindow::~MainWindow()
{
    clearCores(); // before the cores go with the capture
}

/// Panels and monitors show what is about to go.
void MainWindow::clearCores()
{
    for (QTabWidget* const tabs : {m_cores, m_monitors})
        while (tabs->count() > 0)
            delete tabs->widget(0);
    dropBanner();
    m_desk.reset();
    m_fitted.clear();
    m_kept.clear();
}

/// A panel for each Standard core, and a monitor for every core.
void MainWindow::showCores()
{
    for (SxCore* const core : m_capture.cores()) {
        auto* const page = new QWidget;
        auto* const panel = new DynamicConfigWidget(page);
        panel->setSxCore(core);
        panel->setEnabled(true);
        auto* const layout = new QVBoxLayout(page);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(panel);
        layout->addWidget(new TriggerLine(*core, *panel, page));
        addTabs(QStringLiteral("Core %1").arg(core->index), core->index, page);
    }
    if (SXCore_Lite const* const core = m_capture.liteCore()) {
        auto* const facts =
            new QLabel(QStringLiteral("A Lite core of %1 samples\non clock %2.\n\nAll of it is "
                                      "built into the design:\nthere is nothing to set.")
                           .arg(core->captureAmount)
                           .arg(core->sampleClock));
        facts->setTextFormat(Qt::PlainText);
        facts->setAlignment(Qt::AlignTop | Qt::AlignLeft);
        facts->setMargin(12);
        addTabs(QStringLiteral("Lite Core"), 0, facts);
    }
    widenCores();
}

/// A core's panel and its monitor, under one name.
void MainWindow::addTabs(QString const& name, int core, QWidget* panel)
{
    m_cores->addTab(panel, name);
    auto* const monitor = new WaveMonitorWidget(m_monitors);
    monitor->setTitle(0, core);
    m_overviewAction->take(monitor);
    m_monitors->addTab(monitor, name);
    m_navigation->adopt(*monitor);
    connect(monitor, &WaveMonitorWidget::layoutEdited, this, [this] {
        m_hasEditedRows = true;
        updateTitle();
    });
}

WaveMonitorWidget* MainWindow::monitor(int core) const
{
    return qobject_cast<WaveMonitorWidget*>(m_monitors->widget(core));
}

WaveMonitorWidget* MainWindow::currentMonitor() const
{
    return monitor(m_monitors->currentIndex());
}

bool MainWindow::hasCores() const
{
    return m_capture.liteCore() || !m_capture.cores().isEmpty();
}

/// Of the monitor in front.
SampleTimes MainWindow::sampleTimes() const
{
    WaveMonitorWidget const* const shown = currentMonitor();
    if (!shown)
        return SampleTimes();
    return {shown->model()->timeLength(), shown->windowsNum(), shown->model()->triggerPosition(),
            m_sampleClock};
}

int MainWindow::triggerPosition(int core) const
{
    SxCore const* const standard = m_capture.cores().value(core, nullptr);
    return standard ? standard->triggerPos : 0;
}

int MainWindow::windowCount(int core) const
{
    SxCore const* const standard = m_capture.cores().value(core, nullptr);
    return standard ? standard->windowNum : 1;
}

QList<SignalItem> MainWindow::capturedSignals(int core) const
{
    if (m_capture.liteCore())
        return m_capture.liteCore()->dataSignalList;
    SxCore const* const standard = m_capture.cores().value(core, nullptr);
    return standard ? standard->dataSignalList : QList<SignalItem>();
}

void MainWindow::setDevice(QString const& name)
{
    if (DeviceConfigurations::instance()->deviceModes(name))
        m_programmer->initData(QString(), name, QString());
    else
        say(QStringLiteral("The catalogue of devices has no %1.").arg(name), true);
}

/// That of the programmer's target, or of a chain's only device; empty when nothing is known.
QString MainWindow::deviceName() const
{
    VekProgrammerModel const* const chain = m_programmer->model();
    if (DeviceItem const* const target = chain->activeDevice())
        return target->device;
    return chain->rowCount() == 1 ? chain->devices().constFirst()->device : QString();
}

void MainWindow::saveCores()
{
    for (auto* const panel : m_cores->findChildren<DynamicConfigWidget*>())
        panel->save();
}

void MainWindow::run()
{
    saveCores();
    CaptureSettings settings;
    settings.cable = m_cable->name();
    settings.location = m_cable->location();
    settings.device = deviceName();
    settings.repeat = m_repeatAction->isChecked();
    settings.endsOnSilence = false; // the user sees it, and decides
    if (!m_bench.isEmpty() && !goRehearsing(settings))
        return;
    say(QStringLiteral("Capture started."));
    m_next.clear();
    m_capture.run(settings);
}

/// Reads the dump anew: another simulation may have written it since.
bool MainWindow::goRehearsing(CaptureSettings& settings)
{
    m_desk.reset();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    try {
        m_desk = std::make_unique<Cli::RehearsalDesk>(m_bench, settings);
    } catch (Cli::Failure const& failure) {
        error = failure.message;
    }
    QApplication::restoreOverrideCursor();
    if (!error.isEmpty())
        say(QStringLiteral("A rehearsal runs on its bench only: %1").arg(error), true);
    else if (!m_desk->warning().isEmpty())
        say(m_desk->warning());
    return error.isEmpty();
}

void MainWindow::onWindowArrived(int core, int window,
                                 QList<WaveMonitor::SignalData> const& samples, int repeats)
{
    WaveMonitorWidget* const target = monitor(core);
    bool const isNext =
        window == m_next.value(core); // others would stand in the place of a lost one
    if (!target || samples.isEmpty() || !isNext)
        return;
    m_next[core] = window + 1 == windowCount(core) ? 0 : window + 1;
    target->setWindowsNum(window + 1);
    if (window == 0 && target->model()->signalElements().size() == samples.size()) {
        replaceSamples(core, samples);
    } else {
        QDomDocument document;
        QDomElement element =
            windowElement(document, triggerPosition(core), capturedSignals(core), samples);
        element.setAttribute(DOM_ATTR_WINDOW_INDEX, window);
        target->restore(element);
    }
    int const length = target->model()->timeLength();
    if (length > m_fitted.value(core)) {
        target->zoomFit();
        m_fitted[core] = length;
    }
    if (window + 1 == windowCount(core))
        putViewBack(core);
    if (repeats >= 0)
        target->updateAutoCounter(repeats);
    m_hasNewCapture = true;
    setWindowModified(true);
    say(QStringLiteral("Core %1, window %2: %3 samples.")
            .arg(core)
            .arg(window)
            .arg(samples.first().data.size()));
}

/// Samples around a trigger that nothing but the user made are marked as such.
void MainWindow::onFired(int core, bool forced)
{
    QString const mark = QStringLiteral(" (forced)");
    QString name = m_monitors->tabText(core);
    if (name.endsWith(mark))
        name.chop(mark.size());
    m_monitors->setTabText(core, forced ? name + mark : name);
    if (forced)
        say(QStringLiteral("%1 was forced.").arg(name));
}

void MainWindow::onWindowLost(int core, int window)
{
    int const count = windowCount(core);
    say(QStringLiteral("Core %1, window %2 of %3 did not come whole.")
                .arg(core)
                .arg(window)
                .arg(count) +
            (window + 1 < count ? QStringLiteral(" It and the windows behind it are not shown.")
                                : QStringLiteral(" It is not shown.")),
        true);
}

/// A new capture of the same signals takes the place of the old one under the user's rows, cursor,
/// markers and zoom. Its first window alone is shorter than all that it replaces: what that moves
/// is put back after the last one.
void MainWindow::replaceSamples(int core, QList<WaveMonitor::SignalData> const& samples)
{
    WaveMonitorWidget* const target = monitor(core);
    KeptView kept;
    kept.before = target->viewState();
    QList<QBitArray> data;
    for (WaveMonitor::SignalData const& signal : samples)
        data << signal.data;
    target->updataWaveDatas(data);
    kept.after = target->viewState();
    int const trigger = triggerPosition(core);
    if (target->model()->triggerPosition() != trigger) {
        target->setTriggerPosition(trigger);
        kept.before.cursorTime = trigger;
    }
    m_kept.insert(core, kept);
}

/// All that the user has not touched since.
void MainWindow::putViewBack(int core)
{
    if (!m_kept.contains(core))
        return;
    KeptView const kept = m_kept.take(core);
    WaveMonitor::ViewState view = monitor(core)->viewState();
    if (view.cursorTime == kept.after.cursorTime)
        view.cursorTime = kept.before.cursorTime;
    if (view.markerTimes == kept.after.markerTimes)
        view.markerTimes = kept.before.markerTimes;
    if (view.leftTime == kept.after.leftTime)
        view.leftTime = kept.before.leftTime;
    int const length = monitor(core)->model()->timeLength(); // less, if windows did not come
    QList<int>& times = view.markerTimes;
    times.erase(
        std::remove_if(times.begin(), times.end(), [&](int time) { return time >= length; }),
        times.end());
    monitor(core)->setViewState(view);
}

void MainWindow::onEnded(CaptureOutcome const& outcome)
{
    m_desk.reset();
    for (int const core : m_kept.keys()) // of windows that never came
        putViewBack(core);
    say(outcome.message, !outcome.isOk());
    if (!m_grabFolder.isEmpty())
        grabPanes(m_grabFolder, outcome.isOk());
}

void MainWindow::updateActions()
{
    bool const running = m_capture.isRunning();
    bool const busy = running || m_programmer->model()->isBusy();
    m_runAction->setEnabled(!busy && hasCores());
    m_repeatAction->setEnabled(!busy);
    m_cablesAction->setEnabled(!busy);
    m_stopAction->setEnabled(running);
    m_forceAction->setEnabled(running && !m_capture.liteCore());
    for (QAction* const action : qAsConst(m_fileActions))
        action->setEnabled(hasCores());
    m_cores->setEnabled(!running);
    m_cable->setEnabled(!busy);
    m_programmer->updateIsBusy(running);
    m_monitors->setVisible(hasCores());
    m_hint->setVisible(!hasCores());
}

/// Errors come to the front, in the pane where all messages stay.
void MainWindow::say(QString const& message, bool isError)
{
    QString const time = QLocale::c().toString(QTime::currentTime(), QStringLiteral("HH:mm:ss"));
    QString line = QStringLiteral("[%1] %2").arg(time, message.toHtmlEscaped());
    if (isError) {
        line = QStringLiteral("[%1] <span style='color:#e04038'>Error: %2</span>")
                   .arg(time, message.toHtmlEscaped());
        auto* const dock = findChild<QDockWidget*>(QStringLiteral("messages"));
        dock->show();
        dock->raise();
    }
    m_messages->appendHtml(line);
    statusBar()->showMessage(message);
}

void MainWindow::grab(QString const& folder)
{
    m_grabFolder = folder;
    resize(DefaultSize); // whatever the screen
    widenCores();
    QTimer::singleShot(0, this, &MainWindow::run); // once there is an event loop to end
}
