// The Fs files of the rows, and the watch on them.

#include "programmer/fsfile.h"
#include "programmer/vekprogrammermodel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QPointer>

namespace VEK {

namespace {

constexpr int SettleTime = 10; // ms

QPair<QDateTime, qint64> stateOf(QString const& file)
{
    QFileInfo const info(file);
    return {info.lastModified(), info.size()};
}

} // namespace

bool VekProgrammerModel::readFsFile(QString const& file, DeviceItem* row)
{
    m_seen[file] = stateOf(file); // before reading: what changes meanwhile is read again
    QString warning;
    bool const fits = readFsHeader(file, m_crc, *row, warning);
    if (!warning.isEmpty())
        Q_EMIT programPrint(warning);
    return fits;
}

/// Editors replace a file when they save it, which ends the watch on it: this starts it again.
void VekProgrammerModel::updateWatcherFsFiles()
{
    if (m_refreshing)
        return;
    m_refreshing = true;
    QStringList const watched = m_watcher->files() + m_watcher->directories();
    if (!watched.isEmpty())
        m_watcher->removePaths(watched);

    // a signal of an old path that is already queued has to go by
    QPointer<VekProgrammerModel> const self(this);
    QElapsedTimer timer;
    timer.start();
    while (self && timer.elapsed() < SettleTime)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    if (!self)
        return;
    m_refreshing = false;
    compareFiles();
}

/// Instead of a missing file the nearest folder, in which it or a folder on the way may appear.
void VekProgrammerModel::watchFile(QString const& file)
{
    QString place = file;
    while (!QFileInfo::exists(place) && !QFileInfo(place).isRoot())
        place = QFileInfo(place).absolutePath();
    m_watcher->addPath(place);
}

/// Finds what no signal told of: a change while the watch was off, and a file that came back. The
/// watch comes first, so that nothing is missed in between.
void VekProgrammerModel::compareFiles()
{
    if (m_refreshing)
        return;
    for (DeviceItem const* const row : qAsConst(m_rows)) {
        QString const file = row->fsFile;
        if (file.isEmpty())
            continue;
        watchFile(file);
        FileState const now = stateOf(file);
        if (!m_seen.contains(file))
            m_seen.insert(file, now);
        if (m_seen.value(file) != now)
            QMetaObject::invokeMethod(
                this, [this, file] { onFileChanged(file); }, Qt::QueuedConnection);
    }
}

void VekProgrammerModel::onFileChanged(QString const& path)
{
    if (m_refreshing)
        return; // the renewal that is under way compares at its end
    m_seen[path] = stateOf(path);
    DeviceItem* const active = activeDevice();
    if (active && active->status == ProgrammerDownloaded && active->fsFile == path) {
        active->status = ProgrammerIdle;
        if (QFile::exists(path))
            Q_EMIT statusChanged(
                ProgrammerIdle,
                {QStringLiteral("Warn: File updated,checksum:%1.").arg(active->checksum)});
        else
            Q_EMIT statusChanged(ProgrammerIdle, {});
    }
    QStringList warnings;
    beginResetModel();
    for (DeviceItem* const row : qAsConst(m_rows)) {
        QString warning;
        if (row->fsFile == path && QFile::exists(path))
            readFsHeader(path, m_crc, *row, warning);
        if (!warning.isEmpty())
            warnings << warning;
    }
    endResetModel();
    for (QString const& warning : qAsConst(warnings))
        Q_EMIT programPrint(warning);
    updateWatcherFsFiles();
}

} // namespace VEK
