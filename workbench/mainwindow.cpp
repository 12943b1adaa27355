#include "workbench/mainwindow.h"

#include "results/windowbuilder.h"
#include "programmer/vekprogrammermodel.h"
#include "programmer/vekprogrammerwidget.h"
#include "results/windowdocument.h"
#include "triggerui/dynamicconfigwidget.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/cablebox.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QStatusBar>
#include <QTabWidget>
#include <QTime>
#include <QTimer>
#include <QToolBar>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

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

    connect(&m_capture, &Capture::closing, this, &MainWindow::clearCores);
    connect(&m_capture, &Capture::windowArrived, this, &MainWindow::onWindowArrived);
    connect(&m_capture, &Capture::ended, this, &MainWindow::onEnded);
    connect(&m_capture, &Capture::runningChanged, this, &MainWindow::updateActions);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &MainWindow::onFileChanged);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &MainWindow::onFolderChanged);
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

/// Panels and monitors show what is about to go.
void MainWindow::clearCores()
{
    for (QTabWidget* const tabs : {m_cores, m_monitors})
        while (tabs->count() > 0)
            delete tabs->widget(0);
    delete m_banner;
    m_banner = nullptr;
    m_fitted.clear();
}

/// A panel for each Standard core, and a monitor for every core.
void MainWindow::showCores()
{
    for (SxCore* const core : m_capture.cores()) {
        auto* const panel = new DynamicConfigWidget;
        panel->setSxCore(core);
        panel->setEnabled(true);
        m_cores->addTab(panel, QStringLiteral("Core %1").arg(core->index));
        addMonitor(core->index);
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
        m_cores->addTab(facts, QStringLiteral("Lite Core"));
        addMonitor(0);
    }
}

void MainWindow::addMonitor(int core)
{
    auto* const monitor = new WaveMonitorWidget(m_monitors);
    monitor->setTitle(0, core);
    m_monitors->addTab(monitor, monitor->windowTitle());
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

int MainWindow::triggerPosition(int core) const
{
    SxCore const* const standard = m_capture.cores().value(core, nullptr);
    return standard ? standard->triggerPos : 0;
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
    m_capture.setDeviceName(deviceName());
    say(QStringLiteral("Capture started."));
    m_capture.run(m_cable->name(), m_cable->location(), m_repeatAction->isChecked());
}

/// A new capture of the same signals takes the place of the old one under the user's rows, cursor
/// and zoom.
void MainWindow::onWindowArrived(int core, int window,
                                 QList<WaveMonitor::SignalData> const& samples, int repeats)
{
    WaveMonitorWidget* const target = monitor(core);
    if (!target || samples.isEmpty())
        return;
    int const trigger = triggerPosition(core);
    target->setWindowsNum(window + 1);
    if (window == 0 && target->model()->signalElements().size() == samples.size()) {
        QList<QBitArray> data;
        for (WaveMonitor::SignalData const& signal : samples)
            data << signal.data;
        target->updataWaveDatas(data);
        if (target->model()->triggerPosition() != trigger)
            target->setTriggerPosition(trigger);
    } else {
        QDomDocument document;
        QDomElement element = windowElement(document, trigger, capturedSignals(core), samples);
        element.setAttribute(DOM_ATTR_WINDOW_INDEX, window);
        target->restore(element);
    }
    int const length = target->model()->timeLength();
    if (length > m_fitted.value(core)) {
        target->zoomFit();
        m_fitted[core] = length;
    }
    if (repeats >= 0)
        target->updateAutoCounter(repeats);
    m_hasNewCapture = true;
    say(QStringLiteral("Core %1, window %2: %3 samples.")
            .arg(core)
            .arg(window)
            .arg(samples.first().data.size()));
}

void MainWindow::onEnded(bool ok, QString const& message)
{
    say(message, !ok);
    if (!m_grabFolder.isEmpty())
        grabPanes(m_grabFolder, ok);
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
    m_busy->setVisible(running);
    m_cores->setEnabled(!running);
    m_cable->setEnabled(!busy);
    m_programmer->updateIsBusy(running);
    m_monitors->setVisible(hasCores());
    m_hint->setVisible(!hasCores());
}

/// Errors come to the front, in the pane where all messages stay.
void MainWindow::say(QString const& message, bool isError)
{
    QString const time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
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
    resize(DefaultSize);                           // whatever the screen
    QTimer::singleShot(0, this, &MainWindow::run); // once there is an event loop to end
}
