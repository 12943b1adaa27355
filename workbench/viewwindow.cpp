#include "workbench/viewwindow.h"

#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/capturearea.h"
#include "workbench/picture.h"
#include "workbench/theme.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QSettings>
#include <QUrl>
#include <QVBoxLayout>

using VEK::Cli::Failure;
using VEK::Cli::Status;
using WaveMonitor::WaveMonitorWidget;

namespace {

constexpr QSize DefaultSize{1280, 720};
QString const GeometryKey = QStringLiteral("geometry");
QString const Endings = QStringLiteral("*.csv *.rsx *.vcd *.prn *.raw");

QStringList filesOf(QMimeData const* data)
{
    QStringList files;
    for (QUrl const& url : data->urls()) {
        if (url.isLocalFile())
            files << url.toLocalFile();
    }
    return files;
}

} // namespace

/// Outside of any namespace, as the macro demands.
static void initImages()
{
    Q_INIT_RESOURCE(workbench);
}

ViewWindow::ViewWindow(VEK::Cli::CaptureHints hints) : m_hints(std::move(hints))
{
    initImages();
    setWindowIcon(QIcon(QStringLiteral(":/workbench/images/workbench.png")));
    setAcceptDrops(true);
    makeCentre();
    makeMenus();
    resize(DefaultSize.boundedTo(screen()->availableSize()));
    restoreGeometry(QSettings().value(GeometryKey).toByteArray());
    update();
}

void ViewWindow::makeCentre()
{
    auto* const centre = new QWidget;
    auto* const layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_area = new CaptureArea;
    connect(m_area, &CaptureArea::closed, this, &ViewWindow::update);
    m_empty = new QLabel(QStringLiteral("Open captures (.csv, .rsx, .vcd, .prn, .raw) with Ctrl+O, "
                                        "or drop their files here."));
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setWordWrap(true);
    m_messages = new QLabel;
    m_messages->setObjectName(QStringLiteral("messages"));
    m_messages->setTextFormat(Qt::PlainText);
    m_messages->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_messages->setWordWrap(true);
    m_messages->setMargin(6);
    m_messages->hide();
    layout->addWidget(m_area, 1);
    layout->addWidget(m_empty, 1);
    layout->addWidget(m_messages);
    setCentralWidget(centre);
}

void ViewWindow::makeMenus()
{
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("&Open..."), this, &ViewWindow::chooseFiles, QKeySequence::Open);
    m_captureActions << file->addAction(QStringLiteral("&Reload"), this, &ViewWindow::reload,
                                        Qt::Key_F5)
                     << file->addAction(QStringLiteral("Save &Picture..."), this,
                                        &ViewWindow::savePicture, QKeySequence::Save);
    m_captureActions << file->addAction(
        QStringLiteral("&Close Capture"), this,
        [this] {
            if (CapturePane* const pane = m_area->currentPane())
                pane->deleteLater();
        },
        QKeySequence::Close);
    file->addSeparator();
    file->addAction(QStringLiteral("&Quit"), this, &QWidget::close, QKeySequence::Quit);

    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    auto const add = [&](QString const& text, QKeySequence const& keys,
                         void (WaveMonitorWidget::*slot)()) {
        m_captureActions << view->addAction(
            text, this,
            [this, slot] {
                if (CapturePane const* const pane = m_area->currentPane())
                    (pane->monitor()->*slot)();
            },
            keys);
    };
    add(QStringLiteral("Zoom &In"), QKeySequence::ZoomIn, &WaveMonitorWidget::zoomIn);
    add(QStringLiteral("Zoom &Out"), QKeySequence::ZoomOut, &WaveMonitorWidget::zoomOut);
    add(QStringLiteral("Zoom &Fit"), Qt::CTRL + Qt::Key_0, &WaveMonitorWidget::zoomFit);
    view->addSeparator();
    auto* const arrangement = new QActionGroup(this);
    for (auto const& [text, orientation] :
         {std::pair{QStringLiteral("One &Above the Other"), Qt::Vertical},
          std::pair{QStringLiteral("&Side by Side"), Qt::Horizontal}}) {
        QAction* const action =
            view->addAction(text, this, [this, way = orientation] { m_area->setOrientation(way); });
        action->setCheckable(true);
        action->setChecked(orientation == m_area->orientation());
        arrangement->addAction(action);
    }
    view->addSeparator();
    m_captureActions << view->addAction(QStringLiteral("Sample &Clock of Dumps..."), this,
                                        &ViewWindow::chooseClock);
    menuBar()->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("&About"), this, [this] {
        QMessageBox::about(this, QStringLiteral("About the Viewer"),
                           QStringLiteral("<h3>Vek Viewer %1</h3><p>Shows captures side by "
                                          "side.</p>")
                               .arg(QApplication::applicationVersion()));
    });
}

void ViewWindow::open(QStringList const& files)
{
    QStringList told;
    for (QStringList const& capture : filesByCapture(files))
        openOne(capture, told);
    tell(told);
    update();
}

void ViewWindow::openOne(QStringList const& files, QStringList& told)
{
    try {
        ViewedCapture const capture = readViewedCapture(files, m_hints);
        m_area->add(capture);
        told << capture.warnings;
        m_folder = QFileInfo(files.first()).absolutePath();
        m_hasOpened = true;
        m_status = Status::Done;
    } catch (Failure const& failure) {
        told << failure.message;
        if (!m_hasOpened && m_status == Status::Done)
            m_status = failure.status;
    }
}

void ViewWindow::showRange(SampleRange const& range)
{
    for (CapturePane* const pane : m_area->panes())
        pane->showRange(range);
}

void ViewWindow::chooseFiles()
{
    QStringList const files =
        QFileDialog::getOpenFileNames(this, QStringLiteral("Open Captures"), m_folder,
                                      QStringLiteral("Captures (%1)").arg(Endings));
    if (!files.isEmpty())
        open(files);
}

/// A simulator's dump shows each change without a clock.
void ViewWindow::chooseClock()
{
    bool ok = false;
    QString const text =
        QInputDialog::getText(this, QStringLiteral("Sample Clock of Dumps"),
                              QStringLiteral("The net at whose rising edges a simulator's dump is "
                                             "sampled, or the\nfrequency of a plain dump, such as "
                                             "50MHz; empty for each change:"),
                              QLineEdit::Normal, m_hints.clock, &ok)
            .trimmed();
    if (!ok)
        return;
    m_hints.clock.clear();
    m_hints.times = VEK::SampleClock();
    if (!m_hints.times.parse(text))
        m_hints.clock = text;
    reload();
}

void ViewWindow::reload()
{
    QStringList told;
    for (CapturePane const* const pane : m_area->panes()) {
        QStringList const files = pane->files(); // the pane goes
        openOne(files, told);
    }
    tell(told);
    update();
}

void ViewWindow::savePicture()
{
    QString const path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save Picture"), m_folder,
                                     QStringLiteral("Pictures (*.png *.svg *.pdf)"));
    if (path.isEmpty())
        return;
    QString error;
    if (writePicture(*m_area, path, error))
        tell({});
    else
        tell({QStringLiteral("%1 can't be written: %2").arg(path, error)});
}

void ViewWindow::tell(QStringList const& messages)
{
    m_messages->setText(messages.join(QLatin1Char('\n')));
    m_messages->setVisible(!messages.isEmpty());
}

void ViewWindow::update()
{
    QList<CapturePane*> const panes = m_area->panes();
    m_area->setVisible(!panes.isEmpty());
    m_empty->setVisible(panes.isEmpty());
    for (QAction* const action : qAsConst(m_captureActions))
        action->setEnabled(!panes.isEmpty());
    QStringList names;
    for (CapturePane const* const pane : panes)
        names << QFileInfo(pane->files().first()).fileName();
    setWindowTitle(names.isEmpty()
                       ? QStringLiteral("Vek Viewer")
                       : names.join(QStringLiteral(", ")) + QStringLiteral(" - Vek Viewer"));
}

void ViewWindow::closeEvent(QCloseEvent* event)
{
    QSettings().setValue(GeometryKey, saveGeometry());
    QMainWindow::closeEvent(event);
}

void ViewWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!filesOf(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void ViewWindow::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    open(filesOf(event->mimeData()));
}
