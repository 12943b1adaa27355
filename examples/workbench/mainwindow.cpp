#include "workbench/mainwindow.h"

#include "analyzer/windowbuilder.h"
#include "model/litefile.h"
#include "model/standardfile.h"
#include "programmer/vekprogrammermodel.h"
#include "programmer/vekprogrammerwidget.h"
#include "results/csvexport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"
#include "results/windowdocument.h"
#include "triggerui/dynamicconfigwidget.h"
#include "triggerui/reloadbanner.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/sessionfile.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryFile>
#include <QTime>
#include <QToolBar>
#include <QVBoxLayout>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

namespace {

constexpr int MostRecentFiles = 8;
QString const FileFilter = QStringLiteral("Configurations and sessions (*.vek *.rsx)");
QString const RecentKey = QStringLiteral("recentFiles");

QDockWidget* makeDock(QMainWindow* window, Qt::DockWidgetArea area, QString const& title,
                      QString const& name, QWidget* content)
{
    auto* const dock = new QDockWidget(title, window);
    dock->setObjectName(name);
    dock->setWidget(content);
    window->addDockWidget(area, dock);
    return dock;
}

} // namespace

MainWindow::MainWindow() : m_monitors(new QTabWidget), m_centre(nullptr)
{
    setWindowTitle(QStringLiteral("Workbench"));
    auto* const middle = new QWidget(this);
    m_centre = new QVBoxLayout(middle);
    m_centre->setContentsMargins(0, 0, 0, 0);
    m_centre->addWidget(m_monitors, 1);
    setCentralWidget(middle);
    makeDocks();
    makeActions();
    m_busy = new QProgressBar(this);
    m_busy->setRange(0, 0);
    m_busy->setMaximumWidth(120);
    m_busy->hide();
    statusBar()->addPermanentWidget(m_busy);

    connect(&m_capture, &Capture::windowArrived, this, &MainWindow::onWindowArrived);
    connect(&m_capture, &Capture::ended, this, &MainWindow::onEnded);
    connect(&m_capture, &Capture::runningChanged, this, &MainWindow::onRunningChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &MainWindow::onFileChanged);
    restoreState();
    onRunningChanged(false);
}

void MainWindow::makeDocks()
{
    m_cores = new QTabWidget;
    makeDock(this, Qt::LeftDockWidgetArea, QStringLiteral("Cores"), QStringLiteral("cores"),
             m_cores);
    m_programmer = new VekProgrammerWidget;
    m_programmer->updateCable(CableFT2CH);
    auto* const programmer = makeDock(this, Qt::BottomDockWidgetArea, QStringLiteral("Programmer"),
                                      QStringLiteral("programmer"), m_programmer);
    m_messages = new QPlainTextEdit;
    m_messages->setReadOnly(true);
    m_messages->setMaximumBlockCount(10000);
    auto* const messages = makeDock(this, Qt::BottomDockWidgetArea, QStringLiteral("Messages"),
                                    QStringLiteral("messages"), m_messages);
    tabifyDockWidget(programmer, messages);
    connect(m_programmer, &VekProgrammerWidget::programStatusChanged, this,
            [this](bool, QString const& text) { statusBar()->showMessage(text.trimmed()); });
}

void MainWindow::makeActions()
{
    QToolBar* const bar = addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("main"));
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* const open = file->addAction(QStringLiteral("&Open..."), this, &MainWindow::chooseFile,
                                          QKeySequence::Open);
    m_recent = file->addMenu(QStringLiteral("Open &Recent"));
    file->addAction(QStringLiteral("&Save Configuration"), this, &MainWindow::save,
                    QKeySequence::Save);
    file->addAction(QStringLiteral("Save Session &As..."), this, &MainWindow::saveSession,
                    QKeySequence::SaveAs);
    makeExportActions(file->addMenu(QStringLiteral("&Export Window")));
    file->addSeparator();
    file->addAction(QStringLiteral("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    bar->addAction(open);
    bar->addSeparator();
    makeRunActions(menuBar()->addMenu(QStringLiteral("&Capture")), bar);

    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    for (QDockWidget* const dock : findChildren<QDockWidget*>())
        view->addAction(dock->toggleViewAction());
    menuBar()->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("&About"), this, [this] {
        QMessageBox::about(this, QStringLiteral("Workbench"),
                           QStringLiteral("An example host of the logic analyzer's widgets.\n"
                                          "Version %1")
                               .arg(QApplication::applicationVersion()));
    });
}

void MainWindow::makeRunActions(QMenu* menu, QToolBar* bar)
{
    m_runAction = menu->addAction(QStringLiteral("&Run"), this, &MainWindow::run, Qt::Key_F5);
    m_forceAction =
        menu->addAction(QStringLiteral("&Force Trigger"), &m_capture, &Capture::force, Qt::Key_F6);
    m_stopAction = menu->addAction(QStringLiteral("&Stop"), &m_capture, &Capture::stop,
                                   QKeySequence(Qt::SHIFT + Qt::Key_F5));
    m_repeatAction = menu->addAction(QStringLiteral("&Auto-run"));
    m_repeatAction->setCheckable(true);
    menu->addAction(QStringLiteral("Search &Cables"), m_programmer->model(),
                    &VekProgrammerModel::scanCables);
    bar->addActions({m_runAction, m_forceAction, m_stopAction, m_repeatAction});
    bar->addSeparator();
    m_cable = new QComboBox;
    m_cable->addItem(QStringLiteral("USB (FT2CH)"), int(CableFT2CH));
    m_cable->addItem(QStringLiteral("Parallel port (LPT)"), int(CableLPT));
    connect(m_cable, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { m_programmer->updateCable(m_cable->currentData().toInt()); });
    bar->addWidget(new QLabel(QStringLiteral(" Cable: ")));
    bar->addWidget(m_cable);
}

void MainWindow::makeExportActions(QMenu* menu)
{
    for (QString const& format :
         {QStringLiteral("csv"), QStringLiteral("prn"), QStringLiteral("vcd")})
        menu->addAction(format.toUpper() + QStringLiteral("..."), this,
                        [this, format] { exportWindow(format); });
}

void MainWindow::restoreState()
{
    QSettings const settings;
    resize(1280, 800);
    restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    QMainWindow::restoreState(settings.value(QStringLiteral("state")).toByteArray());
    showRecentFiles();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    m_capture.stop();
    QSettings settings;
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("state"), saveState());
    event->accept();
}

void MainWindow::showRecentFiles()
{
    m_recent->clear();
    QStringList const files = QSettings().value(RecentKey).toStringList();
    for (QString const& path : files)
        m_recent->addAction(path, this, [this, path] { open(path); });
    m_recent->setEnabled(!files.isEmpty());
}

void MainWindow::rememberFile(QString const& path)
{
    QSettings settings;
    QStringList files = settings.value(RecentKey).toStringList();
    files.removeAll(path);
    files.prepend(path);
    settings.setValue(RecentKey, QStringList(files.mid(0, MostRecentFiles)));
    showRecentFiles();
}

bool MainWindow::open(QString const& path)
{
    // panels and monitors show what is about to go
    m_cores->clear();
    qDeleteAll(m_cores->findChildren<DynamicConfigWidget*>());
    delete m_banner;
    m_banner = nullptr;
    QString error;
    bool const ok = m_capture.open(path, error);
    m_path = ok ? QFileInfo(path).absoluteFilePath() : QString();
    setWindowTitle(ok ? QStringLiteral("%1 - Workbench").arg(QFileInfo(path).fileName())
                      : QStringLiteral("Workbench"));
    showCores();
    onRunningChanged(false);
    if (!m_watcher.files().isEmpty())
        m_watcher.removePaths(m_watcher.files());
    if (!ok) {
        say(QStringLiteral("%1: %2").arg(path, error), true);
        return false;
    }
    m_watcher.addPath(m_path);
    showSession(m_path);
    rememberFile(m_path);
    return true;
}

/// A panel for each Standard core, and a monitor for every core.
void MainWindow::showCores()
{
    QList<QWidget*> old;
    for (int i = 0; i < m_monitors->count(); ++i)
        old << m_monitors->widget(i);
    m_monitors->clear();
    qDeleteAll(old);
    static quint64 domain = 0;
    auto const addMonitor = [this](int core) {
        auto* const monitor = new WaveMonitorWidget(++domain);
        monitor->setTitle(0, core);
        m_monitors->addTab(monitor, monitor->windowTitle());
    };
    for (SxCore* const core : m_capture.cores()) {
        auto* const panel = new DynamicConfigWidget;
        panel->setSxCore(core);
        panel->setEnabled(true);
        m_cores->addTab(panel, QStringLiteral("Core %1").arg(core->index));
        addMonitor(core->index);
    }
    if (m_capture.liteCore())
        addMonitor(0);
}

void MainWindow::showSession(QString const& path)
{
    QDomDocument document;
    for (SavedWindow const& saved : readSession(path, document)) {
        WaveMonitorWidget* const target = monitor(saved.core);
        if (!target)
            continue;
        QDomElement const position = saved.window.firstChildElement(DOM_TAG_TRIGGER_POSITION);
        target->setWindowsNum(position.attribute(DOM_ATTR_TRIGGER_SEGMENTS).toInt());
        target->restore(saved.window);
        target->zoomFit();
    }
}

WaveMonitorWidget* MainWindow::monitor(int core) const
{
    return qobject_cast<WaveMonitorWidget*>(m_monitors->widget(core));
}

int MainWindow::windowCount(int core) const
{
    SxCore const* const standard = m_capture.cores().value(core, nullptr);
    return standard ? qMax(1, standard->windowNum) : 1;
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

void MainWindow::chooseFile()
{
    QString const path =
        QFileDialog::getOpenFileName(this, QStringLiteral("Open"), m_path, FileFilter);
    if (!path.isEmpty())
        open(path);
}

void MainWindow::saveCores()
{
    for (auto* const panel : m_cores->findChildren<DynamicConfigWidget*>())
        panel->save();
}

bool MainWindow::writeConfiguration(QString const& path)
{
    saveCores();
    return m_capture.liteCore() ? writeVEKConfigToXml_Lite({m_capture.liteCore()}, path)
                                : writeVEKConfigToXml(m_capture.cores(), path);
}

void MainWindow::save()
{
    if (m_path.isEmpty())
        return;
    m_watcher.removePath(m_path); // this change is ours
    if (m_path.endsWith(QLatin1String(".rsx")))
        say(QStringLiteral("A session is saved with Save Session As."), true);
    else if (writeConfiguration(m_path))
        say(QStringLiteral("Saved %1.").arg(m_path));
    else
        say(QStringLiteral("%1 can't be written.").arg(m_path), true);
    m_watcher.addPath(m_path);
}

void MainWindow::saveSession()
{
    QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save Session"),
                                                QFileInfo(m_path).absolutePath(),
                                                QStringLiteral("Sessions (*.rsx)"));
    if (path.isEmpty() || m_path.isEmpty())
        return;
    if (!path.endsWith(QLatin1String(".rsx")))
        path += QStringLiteral(".rsx");
    saveSessionAs(path);
}

void MainWindow::saveSessionAs(QString const& path)
{
    QTemporaryFile configuration;
    QString error = QStringLiteral("no room for temporary files");
    bool ok = configuration.open() && writeConfiguration(configuration.fileName());
    QDomDocument document;
    QList<SavedWindow> windows;
    for (int core = 0; core < m_monitors->count(); ++core)
        if (monitor(core)->model()->timeLength() > 0)
            windows.append({core, monitor(core)->save(document)});
    ok = ok && writeSession(path, configuration.readAll(), windows, error);
    say(ok ? QStringLiteral("Saved %1.").arg(path)
           : QStringLiteral("%1 can't be written: %2.").arg(path, error),
        !ok);
}

void MainWindow::exportWindow(QString const& format)
{
    int const core = m_monitors->currentIndex();
    WaveMonitorWidget* const shown = monitor(core);
    if (!shown || shown->model()->timeLength() == 0) {
        say(QStringLiteral("There is no capture to export yet."), true);
        return;
    }
    int window = 0;
    bool ok = true;
    if (shown->windowsNum() > 1)
        window = QInputDialog::getInt(this, QStringLiteral("Export"), QStringLiteral("Window:"), 0,
                                      0, shown->windowsNum() - 1, 1, &ok);
    QString const path =
        ok ? QFileDialog::getSaveFileName(this, QStringLiteral("Export"), QString(),
                                          QStringLiteral("%1 (*.%2)").arg(format.toUpper(), format))
           : QString();
    if (!path.isEmpty())
        exportWindowAs(path, core, window);
}

void MainWindow::exportWindowAs(QString const& path, int core, int window)
{
    WaveMonitorWidget* const shown = monitor(core);
    QDomDocument document;
    QDomElement const single = singleWindow(shown->save(document), window, shown->windowsNum());
    QString const unit = QStringLiteral("us");
    bool ok = false;
    if (path.endsWith(QLatin1String(".vcd"))) {
        SxCore const* const standard = m_capture.cores().value(core, nullptr);
        QString const module = standard ? standard->moduleName : m_capture.liteCore()->moduleName;
        QString const clock = standard ? standard->sampleClock : m_capture.liteCore()->sampleClock;
        ok = exportVCD(path, module, clock, true, unit, 1, triggerPosition(core), single);
    } else if (path.endsWith(QLatin1String(".prn"))) {
        ok = exportPRN(path, unit, 1, single, PrnAllColumns);
    } else {
        ok = exportCSV(path, unit, 1, single);
    }
    say(ok ? QStringLiteral("Exported %1.").arg(path)
           : QStringLiteral("%1 can't be written.").arg(path),
        !ok);
}

void MainWindow::run()
{
    saveCores();
    say(QStringLiteral("Capture started."));
    m_capture.run(CABLE(m_cable->currentData().toInt()), QString(), m_repeatAction->isChecked());
}

void MainWindow::onWindowArrived(int core, int window,
                                 QList<WaveMonitor::SignalData> const& samples, int repeats)
{
    WaveMonitorWidget* const target = monitor(core);
    if (!target || samples.isEmpty())
        return;
    QDomDocument document;
    QDomElement const arranged = target->saveLayout(document);
    bool const isArranged = target->model()->rowCount() > 0;
    QDomElement element =
        windowElement(document, triggerPosition(core), capturedSignals(core), samples);
    element.setAttribute(DOM_ATTR_WINDOW_INDEX, window);
    target->setWindowsNum(windowCount(core));
    target->restore(element);
    if (isArranged)
        target->restoreLayout(arranged); // a new capture keeps the user's rows
    if (window == 0)
        target->setTriggerPosition(triggerPosition(core));
    if (!isArranged || window + 1 == windowCount(core))
        target->zoomFit();
    if (repeats >= 0)
        target->updateAutoCounter(repeats);
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

void MainWindow::onRunningChanged(bool running)
{
    bool const hasCores = m_capture.liteCore() || !m_capture.cores().isEmpty();
    m_runAction->setEnabled(!running && hasCores);
    m_repeatAction->setEnabled(!running);
    m_stopAction->setEnabled(running);
    m_forceAction->setEnabled(running && !m_capture.liteCore());
    m_busy->setVisible(running);
    m_cores->setEnabled(!running);
    m_programmer->updateIsBusy(running);
}

/// Not while the capture works with what was read: the banner waits for the user anyway.
void MainWindow::onFileChanged()
{
    bool const removed = !QFile::exists(m_path);
    if (!removed)
        m_watcher.addPath(m_path); // a file that was replaced is watched no more
    delete m_banner;
    auto* const banner =
        new ReloadBanner(removed ? ReloadBanner::Removed : ReloadBanner::Changed, m_path, this);
    m_banner = banner;
    m_centre->insertWidget(0, banner);
    connect(
        banner, &ReloadBanner::reload, this, [this] { open(m_path); }, Qt::QueuedConnection);
    connect(banner, &ReloadBanner::closeIt, banner, &QWidget::hide);
}

void MainWindow::say(QString const& message, bool isError)
{
    QString const time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    m_messages->appendPlainText(
        QStringLiteral("[%1] %2%3")
            .arg(time, isError ? QStringLiteral("Error: ") : QString(), message));
    statusBar()->showMessage(message);
}

void MainWindow::grab(QString const& folder)
{
    m_grabFolder = folder;
    run();
}

void MainWindow::grabPanes(QString const& folder, bool ok)
{
    QDir().mkpath(folder);
    QList<QPair<QString, QWidget*>> panes{{QStringLiteral("workbench"), this},
                                          {QStringLiteral("cores"), m_cores},
                                          {QStringLiteral("programmer"), m_programmer}};
    for (int core = 0; core < m_monitors->count(); ++core)
        panes.append({QStringLiteral("core%1").arg(core), m_monitors->widget(core)});
    for (auto const& pane : panes)
        ok = pane.second->grab().save(QStringLiteral("%1/%2.png").arg(folder, pane.first)) && ok;
    QApplication::exit(ok ? 0 : 1);
}
