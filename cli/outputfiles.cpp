#include "cli/outputfiles.h"

#include "cli/exitstatus.h"
#include "model/bits.h"
#include "model/litefile.h"
#include "model/standardfile.h"
#include "results/sessionfile.h"
#include "results/wholefile.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace VEK::Cli {
namespace {

QString const SessionFormat = QStringLiteral("rsx");

/// All endings that a window's file may have.
QStringList const WindowEndings{QStringLiteral("csv"), QStringLiteral("vcd"), QStringLiteral("raw"),
                                QStringLiteral("channels")};

Failure unwritable(QString const& path, QString const& why)
{
    return {Status::Output, QStringLiteral("%1 can't be written: %2").arg(path, why)};
}

bool isThere(QFileInfo const& file)
{
    return file.exists() || file.isSymLink(); // a link may lead nowhere
}

bool isRegular(QFileInfo const& file)
{
    return file.isFile() && !file.isSymLink();
}

void remove(QString const& path)
{
    QFile file(path);
    if (!file.remove())
        throw Failure{Status::Output, QStringLiteral("%1 is of an earlier run and can't be "
                                                     "removed: %2")
                                          .arg(path, file.errorString())};
}

} // namespace

OutputFiles::OutputFiles(OutputSettings const& settings, Capture const& capture)
    : m_settings(settings), m_capture(capture)
{}

QString OutputFiles::prefixFor(QString const& output, QString const& configuration)
{
    QString const name = QFileInfo(configuration).fileName();
    QString const base = name.split(QLatin1Char('.')).first();
    if (output.isEmpty())
        return base;
    if (output.endsWith(QLatin1Char('/')))
        return output + base;
    return QFileInfo(output).isDir() ? output + QLatin1Char('/') + base : output;
}

void OutputFiles::prepare(QList<int> const& places, QStringList const& earlier) const
{
    QString const folder = QFileInfo(m_settings.prefix).path();
    if (!QDir().mkpath(folder))
        throw Failure{Status::Output, QStringLiteral("the folder %1 can't be made").arg(folder)};
    if (!QFileInfo(folder).isWritable())
        throw Failure{Status::Output, QStringLiteral("the folder %1 is read-only").arg(folder)};
    refuseInTheWay(places);
    removeEarlier(earlier);
}

void OutputFiles::refuseInTheWay(QList<int> const& places) const
{
    QStringList targets;
    for (int const place : places) {
        int const windows = m_capture.liteCore() ? 1 : m_capture.cores().at(place)->windowNum;
        for (QString const& format : m_settings.formats)
            for (int window = 0; window < windows && format != SessionFormat; ++window)
                for (QString const& ending : endingsOf(format))
                    targets << windowPath(facts(place).index, window, ending);
    }
    for (QString const& target : targets) {
        if (isThere(QFileInfo(target)) && !isRegular(QFileInfo(target)))
            throw unwritable(target, QStringLiteral("something that is no file is in the way"));
    }
    QFileInfo const session(sessionPath());
    if (m_settings.formats.contains(SessionFormat) && isThere(session) && !isOurSession())
        throw unwritable(sessionPath(),
                         QStringLiteral("a file that no run has written is in the way"));
}

/// Whether the file at the session's path was written by a run, and by nobody since.
bool OutputFiles::isOurSession() const
{
    QFileInfo const session(sessionPath());
    if (!isRegular(session) || session == QFileInfo(m_settings.configuration))
        return false;
    QFile file(sessionPath());
    QByteArray const note = "<!--" + SessionNote.toLatin1() + "-->";
    return file.open(QIODevice::ReadOnly) && file.read(1024).contains(note);
}

/// An earlier run may have had more windows, cores and formats than this one will.
void OutputFiles::removeEarlier(QStringList const& earlier) const
{
    QFileInfo const prefix(m_settings.prefix);
    QRegularExpression const form(QStringLiteral("\\A%1_core\\d+_window\\d+\\.(?:%2)\\z")
                                      .arg(QRegularExpression::escape(prefix.fileName()),
                                           WindowEndings.join(QLatin1Char('|'))));
    QDir const folder(prefix.path());
    for (QFileInfo const& file : folder.entryInfoList(QDir::Files | QDir::Hidden)) {
        if (isRegular(file) && form.match(file.fileName()).hasMatch())
            remove(file.filePath());
    }
    if (isOurSession())
        remove(sessionPath());
    QString const start = prefix.absoluteFilePath();
    for (QString const& path : earlier) {
        QFileInfo const file(path);
        if (file.absoluteFilePath().startsWith(start) && isRegular(file) &&
            file != QFileInfo(m_settings.configuration))
            remove(path);
    }
}

OutputFiles::CoreFacts OutputFiles::facts(int place) const
{
    if (SXCore_Lite const* const core = m_capture.liteCore())
        return {0, 0, core->moduleName, core->sampleClock, core->dataSignalList};
    SxCore const& core = *m_capture.cores().at(place);
    return {core.index, core.triggerPos, core.moduleName, core.sampleClock, core.dataSignalList};
}

QString OutputFiles::windowPath(int index, int window, QString const& format) const
{
    // appended, not filled in: a prefix may hold a place marker of its own
    return m_settings.prefix + QStringLiteral("_core%1_window%2.").arg(index).arg(window) + format;
}

QList<WrittenFile> OutputFiles::writeWindow(int place, int window,
                                            QList<WaveMonitor::SignalData> const& samples)
{
    CoreFacts const core = facts(place);
    QList<WrittenFile> written;
    for (QString const& format : m_settings.formats) {
        if (format == SessionFormat) {
            QList<QList<WaveMonitor::SignalData>>& windows = m_windows[place];
            if (windows.size() == window) // one behind a lost one would take its place
                windows << samples;
            continue;
        }
        for (QString const& ending : endingsOf(format)) {
            QString const path = windowPath(core.index, window, ending);
            QString error;
            if (!writeWholeFile(path, writerFor(ending, core, samples), error))
                throw unwritable(path, error);
            written << WrittenFile{ending, path, QFileInfo(path).size()};
        }
    }
    return written;
}

/// As the batch tool and the workbench write them: a microsecond a sample, in a VCD in nanoseconds.
FileWriter OutputFiles::writerFor(QString const& ending, CoreFacts const& core,
                                  QList<WaveMonitor::SignalData> const& samples) const
{
    WindowFacts facts;
    facts.trigger = core.triggerPos;
    facts.module = core.module;
    facts.clock = core.clock;
    facts.layout = core.layout;
    facts.samples = samples;
    return windowWriter(ending, facts, m_settings.plain, m_settings.clock);
}

QByteArray OutputFiles::configuration() const
{
    return m_capture.liteCore() ? writeVekConfigToString_Lite({m_capture.liteCore()}).toUtf8()
                                : writeVekConfigToString(m_capture.cores()).toLatin1();
}

QList<WrittenFile> OutputFiles::writeSession(QStringList& notes)
{
    if (!m_settings.formats.contains(SessionFormat) || m_windows.isEmpty())
        return {};
    QDomDocument document;
    QList<SessionWindow> windows;
    QList<int> places = m_windows.keys();
    std::sort(places.begin(), places.end());
    for (int const place : qAsConst(places))
        windows << SessionWindow{place, sessionElement(place, document, notes)};
    QString error;
    if (!VEK::writeSession(sessionPath(), configuration(), windows, SessionNote, error))
        throw unwritable(sessionPath(), error);
    return {{SessionFormat, sessionPath(), QFileInfo(sessionPath()).size()}};
}

/// All windows of a core one after the other, as far as they are equally long: a reader of the file
/// divides them evenly.
QDomElement OutputFiles::sessionElement(int place, QDomDocument& document, QStringList& notes) const
{
    QList<QList<WaveMonitor::SignalData>> const& windows = m_windows[place];
    QList<WaveMonitor::SignalData> all = windows.first();
    int const length = all.isEmpty() ? 0 : all.first().data.size();
    int count = 1;
    while (count < windows.size() && !windows.at(count).isEmpty() &&
           windows.at(count).first().data.size() == length)
        ++count;
    for (int i = 0; i < all.size() && count > 1; ++i) {
        QList<QBitArray> parts;
        for (int window = 0; window < count; ++window)
            parts << windows.at(window).at(i).data;
        all[i].data = combine(parts);
    }
    CoreFacts const core = facts(place);
    if (count < windows.size())
        notes << QStringLiteral("core %1: the session holds the first %2 windows of %3, which are "
                                "equally long")
                     .arg(core.index)
                     .arg(count)
                     .arg(windows.size());
    QDomElement const element = windowElement(document, core.triggerPos, core.layout, all);
    element.firstChildElement(DOM_TAG_TRIGGER_POSITION)
        .setAttribute(DOM_ATTR_TRIGGER_SEGMENTS, count);
    return element;
}

} // namespace VEK::Cli
