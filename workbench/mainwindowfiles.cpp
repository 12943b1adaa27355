// The main window's files: configurations, sessions and exports.

#include "model/litefile.h"
#include "model/standardfile.h"
#include "results/csvexport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"
#include "results/windowdocument.h"
#include "widgets/reloadbanner.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/mainwindow.h"
#include "workbench/sessionfile.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryFile>
#include <QVBoxLayout>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

namespace {

QString const SessionEnding = QStringLiteral(".rsx");

} // namespace

void MainWindow::chooseFile(QString const& recent)
{
    if (!mayLeave(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel))
        return;
    QString const path = recent.isEmpty()
                             ? QFileDialog::getOpenFileName(
                                   this, QStringLiteral("Open"), QFileInfo(m_path).absolutePath(),
                                   QStringLiteral("Configurations and sessions (*.vek *.rsx)"))
                             : recent;
    if (!path.isEmpty())
        open(path);
}

bool MainWindow::open(QString const& path)
{
    QString const file = QFileInfo(path).absoluteFilePath();
    QString error;
    bool const ok = m_capture.open(file, error);
    rememberFile(file, ok);
    if (!ok) {
        say(QStringLiteral("%1: %2").arg(file, error), true);
        return false;
    }
    setWindowTitle(QStringLiteral("%1 - Workbench").arg(QFileInfo(file).fileName()));
    if (!m_path.isEmpty())
        m_watcher.removePaths(m_watcher.files() + m_watcher.directories());
    m_path = file;
    m_watcher.addPaths({file, QFileInfo(file).absolutePath()});
    showCores();
    showSession(file);
    m_savedConfiguration = configuration();
    m_hasNewCapture = false;
    updateActions();
    statusBar()->showMessage(QStringLiteral("Opened %1.").arg(file));
    return true;
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
        m_fitted[saved.core] = target->model()->timeLength();
    }
}

bool MainWindow::saveConfiguration(QString const& path)
{
    saveCores();
    return m_capture.liteCore() ? writeVEKConfigToXml_Lite({m_capture.liteCore()}, path)
                                : writeVEKConfigToXml(m_capture.cores(), path);
}

/// The text of the configuration as it stands; empty if there is no room for it.
QByteArray MainWindow::configuration()
{
    QTemporaryFile file;
    return file.open() && saveConfiguration(file.fileName()) ? file.readAll() : QByteArray();
}

/// Asks what becomes of unsaved work; true when it may go.
bool MainWindow::mayLeave(QMessageBox::StandardButtons choices)
{
    QStringList unsaved;
    if (hasCores() && configuration() != m_savedConfiguration)
        unsaved << QStringLiteral("The configuration was changed.");
    if (m_hasNewCapture)
        unsaved << QStringLiteral("The capture is in no session file yet.");
    if (unsaved.isEmpty())
        return true;
    QMessageBox box(
        QMessageBox::Warning, QStringLiteral("Unsaved Work"),
        QStringLiteral("%1 has work that is not saved.").arg(QFileInfo(m_path).fileName()), choices,
        this);
    box.setInformativeText(unsaved.join(QLatin1Char('\n')));
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Cancel);
    int const answer = box.exec();
    if (answer != QMessageBox::Save)
        return answer == QMessageBox::Discard;
    return m_hasNewCapture && !m_path.endsWith(SessionEnding) ? saveSession() : save();
}

bool MainWindow::save()
{
    if (m_path.endsWith(SessionEnding))
        return saveSessionAs(m_path);
    m_watcher.removePath(m_path); // this change is ours
    bool const ok = saveConfiguration(m_path);
    m_watcher.addPath(m_path);
    if (ok)
        m_savedConfiguration = configuration();
    say((ok ? QStringLiteral("Saved %1.") : QStringLiteral("%1 can't be written.")).arg(m_path),
        !ok);
    return ok;
}

bool MainWindow::saveSession()
{
    QFileInfo const file(m_path);
    QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save Session"),
                                                file.absolutePath() + QLatin1Char('/') +
                                                    file.completeBaseName() + SessionEnding,
                                                QStringLiteral("Sessions (*.rsx)"));
    if (path.isEmpty())
        return false;
    if (!path.endsWith(SessionEnding))
        path += SessionEnding;
    return saveSessionAs(path);
}

bool MainWindow::saveSessionAs(QString const& path)
{
    QByteArray const text = configuration();
    QDomDocument document;
    QList<SavedWindow> windows;
    for (int core = 0; core < m_monitors->count(); ++core)
        if (monitor(core)->model()->timeLength() > 0)
            windows.append({core, monitor(core)->save(document)});
    m_watcher.removePath(m_path); // it may be the one
    QString error;
    bool const ok = writeSession(path, text, windows, error);
    m_watcher.addPath(m_path);
    if (ok) {
        m_savedConfiguration = text;
        m_hasNewCapture = false;
    }
    say(ok ? QStringLiteral("Saved %1.").arg(path)
           : QStringLiteral("%1 can't be written: %2.").arg(path, error),
        !ok);
    return ok;
}

void MainWindow::exportWindow(QString const& format)
{
    WaveMonitorWidget* const shown = currentMonitor();
    if (!shown || shown->model()->timeLength() == 0)
        return say(QStringLiteral("There is no capture to export yet."), true);
    int window = 0;
    bool ok = true;
    if (shown->windowsNum() > 1)
        window = QInputDialog::getInt(this, QStringLiteral("Export"), QStringLiteral("Window:"), 0,
                                      0, shown->windowsNum() - 1, 1, &ok);
    if (!ok)
        return;
    QString path = QFileDialog::getSaveFileName(
        this, QStringLiteral("Export"), QFileInfo(m_path).absolutePath(),
        QStringLiteral("%1 (*.%2)").arg(format.toUpper(), format));
    if (path.isEmpty())
        return;
    if (!path.endsWith(QLatin1Char('.') + format))
        path += QLatin1Char('.') + format;
    exportWindowAs(path, m_monitors->currentIndex(), window);
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
        ok = exportVCD(path, module, clock, true, unit, 1, shown->model()->triggerPosition(),
                       single);
    } else if (path.endsWith(QLatin1String(".prn"))) {
        ok = exportPRN(path, unit, 1, single, PrnAllColumns);
    } else {
        ok = exportCSV(path, unit, 1, single);
    }
    say((ok ? QStringLiteral("Exported %1.") : QStringLiteral("%1 can't be written.")).arg(path),
        !ok);
}

/// A file that was removed is watched no more, and may come back.
void MainWindow::onFolderChanged()
{
    if (!m_watcher.files().contains(m_path) && QFile::exists(m_path))
        onFileChanged();
}

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
    auto const reload = [this] {
        if (mayLeave(QMessageBox::Discard | QMessageBox::Cancel))
            open(m_path);
    };
    // queued: reloading takes the banner away
    connect(banner, &ReloadBanner::reload, this, reload, Qt::QueuedConnection);
    connect(banner, &ReloadBanner::closeIt, banner, &QWidget::hide);
}
