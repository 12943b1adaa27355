#include "workbench/viewedcapture.h"

#include "cli/exitstatus.h"
#include "results/sessionfile.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

using VEK::CapturedWindow;
using VEK::Cli::CaptureFile;
using VEK::Cli::CaptureHints;
using VEK::Cli::CoreCapture;
using VEK::Cli::Failure;
using VEK::Cli::Status;

namespace {

/// The numbers in the name of one window's file.
struct WindowFile
{
    QString path;
    QString capture; ///< The rest of the name, equal for all windows of a run; empty for others.
    int core = 0;
    int window = 0;

    explicit WindowFile(QString const& file) : path(file)
    {
        static QRegularExpression const form(
            QStringLiteral("\\A(.*)_core(\\d{1,9})_window(\\d{1,9})(\\.\\w+)\\z"));
        QRegularExpressionMatch const match = form.match(file);
        if (!match.hasMatch())
            return;
        capture = match.captured(1) + match.captured(4);
        core = match.captured(2).toInt();
        window = match.captured(3).toInt();
    }
};

QString titleOf(QStringList const& files)
{
    QString const name = QFileInfo(files.first()).fileName();
    if (files.size() == 1)
        return name;
    QString const run = QFileInfo(WindowFile(files.first()).capture).completeBaseName();
    return QStringLiteral("%1 (%2 files)").arg(run).arg(files.size());
}

bool isLike(CapturedWindow const& a, CapturedWindow const& b)
{
    QList<VEK::SignalItem> const first = VEK::flatSignals(a.layout);
    QList<VEK::SignalItem> const second = VEK::flatSignals(b.layout);
    return a.length() == b.length() &&
           std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](VEK::SignalItem const& x, VEK::SignalItem const& y) {
                          return VEK::labelOf(x) == VEK::labelOf(y);
                      });
}

QString nameOf(CoreCapture const& core)
{
    bool const isNamed = core.module != QLatin1String("capture");
    return QStringLiteral("Core %1").arg(core.index) +
           (isNamed ? QStringLiteral(": %1").arg(core.module) : QString());
}

/// The windows of further files follow those of the first.
void addCore(ViewedCapture& capture, CoreCapture const& core, QString const& path)
{
    for (ViewedCore& known : capture.cores) {
        if (known.capture.index != core.index)
            continue;
        for (CapturedWindow const& window : core.windows) {
            if (!isLike(known.capture.windows.first(), window))
                throw Failure{Status::Configuration,
                              QStringLiteral("%1: its signals or samples are not those of %2")
                                  .arg(path, capture.files.first())};
            known.capture.windows << window;
        }
        return;
    }
    capture.cores << ViewedCore{nameOf(core), core, {}};
}

/// Rows, their looks and the view are in the elements of a session only.
void takeElements(ViewedCapture& capture, QString const& session)
{
    for (VEK::SessionWindow const& saved : VEK::readSession(session, capture.document)) {
        auto const isIt = [&](ViewedCore const& core) {
            return core.capture.place == saved.core && core.window.isNull();
        };
        auto const core = std::find_if(capture.cores.begin(), capture.cores.end(), isIt);
        if (core != capture.cores.end())
            core->window = saved.window;
    }
}

void readInto(ViewedCapture& capture, QString const& path, CaptureHints const& hints)
{
    WindowFile const name(path);
    CaptureHints ownHints = hints;
    ownHints.eachChange = true;
    if (!name.capture.isEmpty())
        ownHints.core = name.core;
    CaptureFile const file = readCaptureFile(path, ownHints);
    capture.warnings << file.warnings;
    for (CoreCapture const& core : file.cores)
        addCore(capture, core, path);
}

} // namespace

QList<QStringList> filesByCapture(QStringList const& files)
{
    QList<QList<WindowFile>> captures;
    for (QString const& path : files) {
        WindowFile const file(path);
        auto const isIt = [&](QList<WindowFile> const& known) {
            return known.first().path == path ||
                   (!file.capture.isEmpty() && known.first().capture == file.capture);
        };
        auto const known = std::find_if(captures.begin(), captures.end(), isIt);
        if (known == captures.end())
            captures << QList<WindowFile>{file};
        else if (std::none_of(known->begin(), known->end(),
                              [&](WindowFile const& other) { return other.path == path; }))
            *known << file;
    }
    QList<QStringList> paths;
    for (QList<WindowFile>& capture : captures) {
        std::sort(capture.begin(), capture.end(), [](WindowFile const& a, WindowFile const& b) {
            return std::make_pair(a.core, a.window) < std::make_pair(b.core, b.window);
        });
        paths << QStringList();
        for (WindowFile const& file : qAsConst(capture))
            paths.last() << file.path;
    }
    return paths;
}

ViewedCapture readViewedCapture(QStringList const& files, CaptureHints const& hints)
{
    ViewedCapture capture;
    capture.files = files;
    if (hints.core)
        capture.files.erase(std::remove_if(capture.files.begin(), capture.files.end(),
                                           [&](QString const& path) {
                                               WindowFile const file(path);
                                               return !file.capture.isEmpty() &&
                                                      file.core != *hints.core;
                                           }),
                            capture.files.end());
    if (capture.files.isEmpty())
        throw Failure{
            Status::Usage,
            QStringLiteral("%1: no file is of core %2").arg(files.first()).arg(*hints.core)};
    capture.title = titleOf(capture.files);
    for (QString const& path : qAsConst(capture.files))
        readInto(capture, path, hints);
    if (VEK::Cli::captureFormat(capture.files.first()) == QLatin1String("rsx"))
        takeElements(capture, capture.files.first());
    return capture;
}
