#include "workbench/viewwindow.h"

#include "cli/exitstatus.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/capturepane.h"
#include "workbench/theme.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

namespace {

QString const Filter = QStringLiteral("Captures (*.csv *.rsx *.vcd *.prn);;All files (*)");
constexpr QSize UsualSize{1200, 700};

} // namespace

ViewWindow::ViewWindow(Cli::CaptureHints const& hints)
    : m_hints(hints), m_panes(new QSplitter(Qt::Vertical)),
      m_hint(
          new QLabel(QStringLiteral("Open captures (.csv, .rsx, .vcd, .prn) by the menu, or drop "
                                    "them here.")))
{
    auto* const middle = new QStackedWidget(this);
    m_hint->setAlignment(Qt::AlignCenter);
    middle->addWidget(m_hint);
    middle->addWidget(m_panes);
    setCentralWidget(middle);
    makeMenus();
    setAcceptDrops(true);
    resize(UsualSize);
    updateTitle();
}

void ViewWindow::makeMenus()
{
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("&Open..."), this, &ViewWindow::choose, QKeySequence::Open);
    file->addAction(QStringLiteral("&Close All"), this, &ViewWindow::closeAll);
    file->addSeparator();
    file->addAction(QStringLiteral("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    auto const add = [&](QString const& text, QKeySequence const& keys,
                         void (WaveMonitorWidget::*slot)()) {
        view->addAction(
            text, this,
            [this, slot] {
                for (CapturePane* const pane : panes())
                    (pane->monitor()->*slot)();
            },
            keys);
    };
    add(QStringLiteral("Zoom &In"), QKeySequence::ZoomIn, &WaveMonitorWidget::zoomIn);
    add(QStringLiteral("Zoom &Out"), QKeySequence::ZoomOut, &WaveMonitorWidget::zoomOut);
    add(QStringLiteral("Zoom &Fit"), Qt::CTRL + Qt::Key_0, &WaveMonitorWidget::zoomFit);
    view->addSeparator();
    view->addAction(makeThemeAction(this));
}

bool ViewWindow::open(QString const& path, QString& error)
{
    CapturePane* pane = nullptr;
    try {
        pane = new CapturePane(path, m_hints);
    } catch (Cli::Failure const& failure) {
        error = failure.message;
        return false;
    }
    m_panes->addWidget(pane);
    updateTitle();
    if (!pane->warnings().isEmpty())
        statusBar()->showMessage(pane->warnings().join(QStringLiteral("; ")));
    return true;
}

QList<CapturePane*> ViewWindow::panes() const
{
    QList<CapturePane*> panes;
    for (int i = 0; i < m_panes->count(); ++i)
        panes << static_cast<CapturePane*>(m_panes->widget(i)); // nothing else is added
    return panes;
}

QWidget* ViewWindow::content() const
{
    return centralWidget();
}

void ViewWindow::choose()
{
    QString const folder =
        panes().isEmpty() ? QString() : QFileInfo(panes().constLast()->path()).absolutePath();
    openAll(QFileDialog::getOpenFileNames(this, QStringLiteral("Open"), folder, Filter));
}

/// Tells at once of all that can't be read.
void ViewWindow::openAll(QStringList const& paths)
{
    QStringList errors;
    for (QString const& path : paths) {
        QString error;
        if (!open(path, error))
            errors << error;
    }
    if (!errors.isEmpty())
        QMessageBox::warning(this, QStringLiteral("Open"), errors.join(QLatin1Char('\n')));
}

void ViewWindow::closeAll()
{
    qDeleteAll(panes());
    updateTitle();
}

void ViewWindow::updateTitle()
{
    QStringList names;
    for (CapturePane const* const pane : panes())
        names << QFileInfo(pane->path()).fileName();
    setWindowTitle(names.isEmpty()
                       ? QStringLiteral("Viewer")
                       : names.join(QStringLiteral(", ")) + QStringLiteral(" - Viewer"));
    static_cast<QStackedWidget*>(centralWidget())
        ->setCurrentWidget(names.isEmpty() ? static_cast<QWidget*>(m_hint) : m_panes);
}

void ViewWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void ViewWindow::dropEvent(QDropEvent* event)
{
    QStringList paths;
    for (QUrl const& url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    event->acceptProposedAction();
    openAll(paths);
}
