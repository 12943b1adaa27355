// The main window's files: configurations, sessions and exports.

#include "check/configurationcheck.h"
#include "cli/rehearsalmark.h"
#include "model/litefile.h"
#include "model/standardfile.h"
#include "results/csvexport.h"
#include "results/prnexport.h"
#include "results/sessionfile.h"
#include "results/vcdexport.h"
#include "results/wholefile.h"
#include "results/windowdocument.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "widgets/reloadbanner.h"
#include "workbench/mainwindow.h"
#include "workbench/savedview.h"
#include "workbench/simulationdialog.h"
#include "workbench/whereabouts.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QProcess>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

namespace {

QString const SessionEnding = QStringLiteral(".rsx");
QString const TimeUnit = QStringLiteral("us");
constexpr int TimeStep = 1;

/// Of the sample clock's frequency of a file, as the user has given it.
QString clockKey(QString const& path)
{
    return QStringLiteral("sampleClocks/") + QString::fromLatin1(QUrl::toPercentEncoding(path));
}

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

void MainWindow::newFromSimulation()
{
    if (!mayLeave(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel))
        return;
    SimulationDialog dialog(QFileInfo(m_path).absolutePath(), this);
    if (dialog.exec() == QDialog::Accepted)
        open(dialog.configuration());
}

/// In a process of its own, which outlives this one.
void MainWindow::openInViewer()
{
    QStringList const files = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Open Capture"), QFileInfo(m_path).absolutePath(),
        QStringLiteral("Captures (*.csv *.rsx *.vcd *.prn)"));
    QString const viewer = QCoreApplication::applicationDirPath() + QStringLiteral("/vek-view");
    if (!files.isEmpty() && !QProcess::startDetached(viewer, files))
        say(QStringLiteral("%1 can't be started.").arg(viewer), true);
}

bool MainWindow::open(QString const& path)
{
    QString const file = QFileInfo(path).absoluteFilePath();
    QString error;
    bool const ok = m_capture.open(file, error);
    if (!ok) {
        rememberFile(file, false);
        say(QStringLiteral("%1: %2").arg(file, error), true);
        return false;
    }
    follow(file);
    m_bench = Cli::rehearsalBench(file);
    m_sampleClock = SampleClock();
    m_sampleClock.parse(QSettings().value(clockKey(file)).toString());
    showCores();
    showSession(file);
    noteSaved();
    updateActions();
    tellFindings(file);
    if (!m_bench.isEmpty())
        say(QStringLiteral("A rehearsal: it describes no core that was built, and runs on the "
                           "simulated chip of %1 only.")
                .arg(m_bench));
    statusBar()->showMessage(QStringLiteral("Opened %1.").arg(file));
    return true;
}

/// What the readers have put up with.
void MainWindow::tellFindings(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return; // it was there a moment ago: the banner tells
    QString const name = QFileInfo(path).fileName();
    for (Finding const& finding : checkConfiguration(file.readAll()))
        say(QStringLiteral("%1:%2: %3").arg(name).arg(finding.line).arg(finding.text()),
            finding.severity == Severity::Error);
}

/// Makes a file the open one.
void MainWindow::follow(QString const& file)
{
    m_path = file;
    QStringList const watched = m_watcher.files() + m_watcher.directories();
    if (!watched.isEmpty())
        m_watcher.removePaths(watched);
    m_watcher.addPaths({file, QFileInfo(file).absolutePath()});
    rememberFile(file, true);
    setWindowTitle(QStringLiteral("%1[*] - Workbench").arg(QFileInfo(file).fileName()));
}

/// The open file holds all that there is.
void MainWindow::noteSaved()
{
    dropBanner();
    m_savedConfiguration = configuration();
    m_savedMarkers = markers();
    m_hasEditedRows = false;
    m_hasNewCapture = false;
    updateTitle();
}

/// And what else follows from what a user has just done.
void MainWindow::updateTitle()
{
    setWindowModified(!unsavedWork().isEmpty());
    m_whereabouts->setText(currentMonitor() ? whereabouts(*currentMonitor(), sampleTimes())
                                            : QString());
}

void MainWindow::showSession(QString const& path)
{
    QDomDocument document;
    for (SessionWindow const& saved : readSession(path, document)) {
        WaveMonitorWidget* const target = monitor(saved.core);
        if (!target)
            continue;
        QDomElement const position = saved.window.firstChildElement(DOM_TAG_TRIGGER_POSITION);
        target->setWindowsNum(position.attribute(DOM_ATTR_TRIGGER_SEGMENTS).toInt());
        target->restore(saved.window);
        WaveMonitor::ViewState view;
        if (restoreView(saved.window, view))
            target->setViewState(view);
        else
            target->zoomFit();
        m_fitted[saved.core] = target->model()->timeLength();
    }
}

/// The text of the configuration as it stands.
QByteArray MainWindow::configuration()
{
    saveCores();
    return m_capture.liteCore() ? writeVekConfigToString_Lite({m_capture.liteCore()}).toUtf8()
                                : writeVekConfigToString(m_capture.cores()).toLatin1();
}

/// The same as it stands in a file: a rehearsal stays marked as one.
QByteArray MainWindow::fileText(QString const& path)
{
    return m_bench.isEmpty() ? configuration()
                             : Cli::markedForRehearsal(configuration(), path, m_bench);
}

void MainWindow::askSampleClock()
{
    QString const key = clockKey(m_path);
    bool ok = false;
    QString const text = QInputDialog::getText(
        this, QStringLiteral("Sample Clock"), QStringLiteral("Frequency, such as 50MHz:"),
        QLineEdit::Normal, QSettings().value(key).toString(), &ok);
    if (!ok)
        return;
    SampleClock clock;
    if (!text.isEmpty() && !clock.parse(text))
        return say(QStringLiteral("%1 is no frequency such as 50MHz.").arg(text), true);
    m_sampleClock = clock;
    QSettings().setValue(key, text);
    updateTitle();
}

QList<QList<int>> MainWindow::markers() const
{
    QList<QList<int>> markers;
    for (int core = 0; core < m_monitors->count(); ++core)
        markers << monitor(core)->markerTimes();
    return markers;
}

/// In words, one for each kind.
QStringList MainWindow::unsavedWork()
{
    QStringList unsaved;
    if (!hasCores())
        return unsaved;
    if (configuration() != m_savedConfiguration)
        unsaved << QStringLiteral("The configuration was changed.");
    if (m_hasNewCapture)
        unsaved << QStringLiteral("The capture is in no session file yet.");
    else if (m_hasEditedRows || markers() != m_savedMarkers)
        unsaved << QStringLiteral("Rows or markers were changed.");
    return unsaved;
}

/// Asks what becomes of unsaved work; true when it may go.
bool MainWindow::mayLeave(QMessageBox::StandardButtons choices)
{
    QStringList const unsaved = unsavedWork();
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

/// Asks before a file goes that others have written since it was opened here.
bool MainWindow::mayReplaceNewer()
{
    if (!m_isNewerOnDisk)
        return true;
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Newer File"),
                    QStringLiteral("%1 has changed on disk.").arg(QFileInfo(m_path).fileName()),
                    QMessageBox::Save | QMessageBox::Cancel, this);
    box.setInformativeText(QStringLiteral("Saving replaces the newer file by what is shown here."));
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Cancel);
    return box.exec() == QMessageBox::Save;
}

bool MainWindow::save()
{
    if (!mayReplaceNewer())
        return false;
    if (m_path.endsWith(SessionEnding))
        return saveSessionAs(m_path);
    QString error;
    m_watcher.removePath(m_path); // this change is ours
    bool const ok = writeWholeFile(m_path, fileText(m_path), error);
    m_watcher.addPath(m_path);
    if (ok) {
        dropBanner();
        m_savedConfiguration = configuration();
        updateTitle(); // a capture is still in no file
    }
    say(ok ? QStringLiteral("Saved %1.").arg(m_path)
           : QStringLiteral("%1 can't be written: %2.").arg(m_path, error),
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
    QString const file = QFileInfo(path).absoluteFilePath();
    QDomDocument document;
    QList<SessionWindow> windows;
    for (int core = 0; core < m_monitors->count(); ++core) {
        if (monitor(core)->model()->timeLength() == 0)
            continue;
        windows.append({core, monitor(core)->save(document)});
        saveView(monitor(core)->viewState(), windows.last().window);
    }
    m_watcher.removePath(m_path); // it may be the one
    QString error;
    bool const ok = VEK::writeSession(file, fileText(file), windows, QString(), error);
    if (ok) {
        follow(file);
        noteSaved();
    } else {
        m_watcher.addPath(m_path);
    }
    say(ok ? QStringLiteral("Saved %1.").arg(file)
           : QStringLiteral("%1 can't be written: %2.").arg(file, error),
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
    auto const write = [&](QIODevice& file) {
        if (path.endsWith(QLatin1String(".vcd")))
            return writeVcd(file, core, single);
        if (path.endsWith(QLatin1String(".prn")))
            return exportPRN(file, TimeUnit, TimeStep, single, PrnAllColumns);
        return exportCSV(file, TimeUnit, TimeStep, single);
    };
    QString error;
    bool const ok = writeWholeFile(path, write, error);
    say(ok ? QStringLiteral("Exported %1.").arg(path)
           : QStringLiteral("%1 can't be written: %2.").arg(path, error),
        !ok);
}

/// A microsecond a sample here, too, but in nanoseconds: an odd step hides the sample clock.
bool MainWindow::writeVcd(QIODevice& file, int core, QDomElement const& window) const
{
    SxCore const* const standard = m_capture.cores().value(core, nullptr);
    SXCore_Lite const* const lite = m_capture.liteCore();
    return exportVCD(file, standard ? standard->moduleName : lite->moduleName,
                     standard ? standard->sampleClock : lite->sampleClock, true,
                     QStringLiteral("ns"), 1000, monitor(core)->model()->triggerPosition(), window);
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
    dropBanner();
    m_isNewerOnDisk = !removed;
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

/// The open file is as it was read or written.
void MainWindow::dropBanner()
{
    delete m_banner;
    m_banner = nullptr;
    m_isNewerOnDisk = false;
}
