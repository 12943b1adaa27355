// What the main window consists of, and what of it is remembered.

#include "programmer/vekprogrammermodel.h"
#include "programmer/vekprogrammerwidget.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/cablebox.h"
#include "workbench/findbar.h"
#include "workbench/mainwindow.h"
#include "workbench/navigation.h"
#include "workbench/overviewaction.h"
#include "workbench/runstatus.h"
#include "workbench/theme.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QTableView>
#include <QToolBar>
#include <QVBoxLayout>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

namespace {

constexpr int MostRecentFiles = 8;
constexpr int NestedLayouts = 3; ///< Around the table of a core's panel.
QString const RecentKey = QStringLiteral("recentFiles");
QString const GeometryKey = QStringLiteral("geometry");
QString const StateKey = QStringLiteral("state");

QIcon icon(char const* name)
{
    return QIcon(QStringLiteral(":/workbench/images/%1.png").arg(QLatin1String(name)));
}

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

void MainWindow::makeCentre()
{
    setWindowIcon(icon("workbench"));
    auto* const middle = new QWidget(this);
    m_monitors = new QTabWidget;
    m_hint = new QLabel(QStringLiteral("Open a configuration (.vek) or a session (.rsx) to see "
                                       "its cores."));
    m_hint->setAlignment(Qt::AlignCenter);
    m_centre = new QVBoxLayout(middle);
    m_centre->setContentsMargins(0, 0, 0, 0);
    m_centre->addWidget(m_monitors, 1);
    m_centre->addWidget(m_hint, 1);
    m_find = new FindBar([this] { return currentMonitor(); });
    m_centre->addWidget(m_find);
    setCentralWidget(middle);
    statusBar()->addPermanentWidget(new RunStatus(m_capture));
}

void MainWindow::makeDocks()
{
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    m_cores = new QTabWidget;
    m_coresDock = makeDock(this, Qt::LeftDockWidgetArea, QStringLiteral("Cores"),
                           QStringLiteral("cores"), m_cores);
    connect(m_cores, &QTabWidget::currentChanged, m_monitors, &QTabWidget::setCurrentIndex);
    connect(m_monitors, &QTabWidget::currentChanged, m_cores, &QTabWidget::setCurrentIndex);
    m_programmer = new VekProgrammerWidget;
    auto* const scrolled = new QScrollArea; // its row of buttons is wider than a small screen
    scrolled->setWidget(m_programmer);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    auto* const programmer = makeDock(this, Qt::BottomDockWidgetArea, QStringLiteral("Programmer"),
                                      QStringLiteral("programmer"), scrolled);
    m_messages = new QPlainTextEdit;
    m_messages->setReadOnly(true);
    m_messages->setMaximumBlockCount(10000);
    auto* const messages = makeDock(this, Qt::BottomDockWidgetArea, QStringLiteral("Messages"),
                                    QStringLiteral("messages"), m_messages);
    tabifyDockWidget(programmer, messages);
    resizeDocks({m_coresDock}, {420}, Qt::Horizontal);
    resizeDocks({programmer}, {240}, Qt::Vertical);
    connect(m_programmer, &VekProgrammerWidget::programStatusChanged, this,
            [this](bool, QString const& text) { statusBar()->showMessage(text.trimmed()); });
    // queued: at the end of a run the model is still busy when it says so
    connect(m_programmer->model(), &VekProgrammerModel::TargetEnable, this,
            &MainWindow::updateActions, Qt::QueuedConnection);
}

void MainWindow::makeFileMenu(QToolBar* bar)
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* const open = menu->addAction(
        style()->standardIcon(QStyle::SP_DialogOpenButton), QStringLiteral("&Open..."), this,
        [this] { chooseFile(); }, QKeySequence::Open);
    menu->addAction(QStringLiteral("New From S&imulation..."), this, &MainWindow::newFromSimulation,
                    QKeySequence::New);
    m_recent = menu->addMenu(QStringLiteral("Open &Recent"));
    QAction* const save =
        menu->addAction(style()->standardIcon(QStyle::SP_DialogSaveButton), QStringLiteral("&Save"),
                        this, &MainWindow::save, QKeySequence::Save);
    QAction* const saveAs =
        menu->addAction(QStringLiteral("Save Session &As..."), this, &MainWindow::saveSession,
                        QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_S));
    m_fileActions << save << saveAs;
    menu->addAction(QStringLiteral("Open Capture in &Viewer..."), this, &MainWindow::openInViewer);
    QMenu* const exports = menu->addMenu(QStringLiteral("&Export Window"));
    for (char const* const format : {"csv", "prn", "vcd"}) {
        QString const name = QLatin1String(format);
        m_fileActions << exports->addAction(name.toUpper() + QStringLiteral("..."), this,
                                            [this, name] { exportWindow(name); });
    }
    menu->addSeparator();
    menu->addAction(QStringLiteral("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    bar->addActions({open, save});
    bar->addSeparator();
}

void MainWindow::makeCaptureMenu(QToolBar* bar)
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&Capture"));
    m_runAction =
        menu->addAction(icon("run"), QStringLiteral("&Run"), this, &MainWindow::run, Qt::Key_F5);
    m_forceAction = menu->addAction(icon("force"), QStringLiteral("&Force Trigger"), &m_capture,
                                    &Capture::force, Qt::Key_F6);
    m_stopAction = menu->addAction(icon("stop"), QStringLiteral("&Stop"), &m_capture,
                                   &Capture::stop, QKeySequence(Qt::SHIFT + Qt::Key_F5));
    m_repeatAction = menu->addAction(icon("repeat"), QStringLiteral("&Auto-run"));
    m_repeatAction->setCheckable(true);
    m_repeatAction->setShortcut(Qt::CTRL + Qt::Key_F5);
    VekProgrammerModel* const programmer = m_programmer->model();
    m_cablesAction = menu->addAction(icon("cables"), QStringLiteral("Search &Cables"), programmer,
                                     &VekProgrammerModel::scanCables);
    bar->addActions({m_runAction, m_forceAction, m_stopAction, m_repeatAction});
    bar->addSeparator();
    bar->addAction(m_cablesAction);
    m_cable = new CableBox;
    bar->addWidget(m_cable);
    auto const tellProgrammer = [this] {
        m_programmer->updateCable(m_cable->cable());
        m_programmer->updateChannel(m_cable->location().toInt());
    };
    tellProgrammer();
    connect(m_cable, QOverload<int>::of(&QComboBox::currentIndexChanged), this, tellProgrammer);
    connect(programmer, &VekProgrammerModel::StartandAutoEnable, this,
            [this, programmer](bool done) {
                if (!done)
                    return;
                m_cable->showFound(programmer->cables());
                say(QStringLiteral("%1 cable(s) found.").arg(programmer->cables().size()));
            });
}

void MainWindow::makeViewMenu()
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&View"));
    auto const add = [&](QString const& text, QKeySequence const& keys,
                         void (WaveMonitorWidget::*slot)()) {
        menu->addAction(
            text, this,
            [this, slot] {
                if (WaveMonitorWidget* const shown = currentMonitor())
                    (shown->*slot)();
            },
            keys);
    };
    add(QStringLiteral("Zoom &In"), QKeySequence::ZoomIn, &WaveMonitorWidget::zoomIn);
    add(QStringLiteral("Zoom &Out"), QKeySequence::ZoomOut, &WaveMonitorWidget::zoomOut);
    add(QStringLiteral("Zoom &Fit"), Qt::CTRL + Qt::Key_0, &WaveMonitorWidget::zoomFit);
    menu->addSeparator();
    m_overviewAction = new OverviewAction(this);
    menu->addAction(m_overviewAction);
    for (QDockWidget* const dock : findChildren<QDockWidget*>())
        menu->addAction(dock->toggleViewAction());
    menu->addSeparator();
    menu->addAction(makeThemeAction(this));
}

void MainWindow::makeGoMenu()
{
    m_navigation = new Navigation(
        *menuBar(), [this] { return currentMonitor(); }, [this] { return sampleTimes(); }, this);
    connect(m_navigation, &Navigation::refused, this,
            [this](QString const& message) { say(message, true); });
    m_navigation->menu()->addSeparator();
    addFindEntries(m_navigation->menu());
    m_navigation->menu()->addSeparator();
    m_fileActions << m_navigation->menu()->addAction(QStringLiteral("Sample Cloc&k..."), this,
                                                     &MainWindow::askSampleClock);
    m_whereabouts = new QLabel;
    m_whereabouts->setTextFormat(Qt::PlainText);
    statusBar()->addPermanentWidget(m_whereabouts);
    connect(m_monitors, &QTabWidget::currentChanged, &m_titleTimer,
            QOverload<>::of(&QTimer::start));
}

void MainWindow::addFindEntries(QMenu* menu)
{
    menu->addAction(QStringLiteral("Fin&d..."), m_find, &FindBar::begin, QKeySequence::Find);
    menu->addAction(QStringLiteral("Find N&ext"), m_find, &FindBar::next, Qt::Key_F3);
    menu->addAction(QStringLiteral("Find Previo&us"), m_find, &FindBar::previous,
                    QKeySequence(Qt::SHIFT + Qt::Key_F3));
    connect(m_monitors, &QTabWidget::currentChanged, m_find, &FindBar::searchAgain);
    connect(&m_capture, &Capture::ended, m_find, &FindBar::searchAgain);
}

void MainWindow::makeHelpMenu()
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&Help"));
    menu->addAction(
        QStringLiteral("&Keyboard Shortcuts"), this, [this] { showShortcuts(*menuBar(), this); },
        QKeySequence(Qt::Key_F1));
    menu->addAction(QStringLiteral("&About"), this, &MainWindow::about);
}

void MainWindow::about()
{
    QMessageBox::about(this, QStringLiteral("About Workbench"),
                       QStringLiteral("<h3>Workbench %1</h3><p>A host of the logic analyzer's "
                                      "widgets: cores, programmer and wave monitors in one "
                                      "window.</p>")
                           .arg(QApplication::applicationVersion()));
}

/// Once wide enough for the tables of match units, but not much more than half of the window.
/// The user's own width stays.
void MainWindow::widenCores()
{
    int table = 0;
    for (auto const* view : m_cores->findChildren<QTableView*>())
        table = qMax(table, view->horizontalHeader()->length() + 2 * view->frameWidth() +
                                view->verticalScrollBar()->sizeHint().width());
    if (m_hasOwnDocks || table == 0)
        return;
    int const margins = NestedLayouts * (style()->pixelMetric(QStyle::PM_LayoutLeftMargin) +
                                         style()->pixelMetric(QStyle::PM_LayoutRightMargin));
    int const most = width() * 3 / 5;
    resizeDocks({m_coresDock}, {qMin(table + margins, most)}, Qt::Horizontal);
    m_hasOwnDocks = table + margins <= most;
}

void MainWindow::restoreState()
{
    QSettings const settings;
    resize(DefaultSize.boundedTo(screen()->availableSize()));
    restoreGeometry(settings.value(GeometryKey).toByteArray());
    m_hasOwnDocks = QMainWindow::restoreState(settings.value(StateKey).toByteArray());
    showRecentFiles();
}

void MainWindow::keepState() const
{
    QSettings settings;
    settings.setValue(GeometryKey, saveGeometry());
    settings.setValue(StateKey, saveState());
}

void MainWindow::showRecentFiles()
{
    m_recent->clear();
    QStringList const files = QSettings().value(RecentKey).toStringList();
    for (QString const& path : files) {
        QString text = path;
        m_recent->addAction(text.replace(QLatin1Char('&'), QLatin1String("&&")), this,
                            [this, path] { chooseFile(path); });
    }
    m_recent->setEnabled(!files.isEmpty());
}

/// A file that can't be opened is forgotten.
void MainWindow::rememberFile(QString const& path, bool isThere)
{
    QSettings settings;
    QStringList files = settings.value(RecentKey).toStringList();
    files.removeAll(path);
    if (isThere)
        files.prepend(path);
    settings.setValue(RecentKey, QStringList(files.mid(0, MostRecentFiles)));
    showRecentFiles();
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
