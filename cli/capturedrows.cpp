#include "cli/capturedrows.h"

#include "cli/capturefile.h"
#include "cli/exitstatus.h"

#include <algorithm>

namespace VEK::Cli {
namespace {

CoreCapture captureOf(CaptureFile const& file, QString const& path, int index)
{
    auto const core =
        std::find_if(file.cores.begin(), file.cores.end(),
                     [index](CoreCapture const& core) { return core.index == index; });
    if (core == file.cores.end())
        throw Failure{Status::Configuration,
                      QStringLiteral("%1: it holds nothing of core %2").arg(path).arg(index)};
    return *core;
}

/// The samples of each watched signal, by the name in the design; empty where there are none.
QList<QBitArray> columnsOf(CapturedWindow const& window, QStringList const& names)
{
    QList<SignalItem> const captured = flatSignals(window.layout);
    QList<QBitArray> columns;
    for (QString const& name : names) {
        auto const found =
            std::find_if(captured.begin(), captured.end(),
                         [&name](SignalItem const& item) { return item.name == name; });
        columns << (found == captured.end() ? QBitArray()
                                            : window.samples.at(int(found - captured.begin())));
    }
    return columns;
}

void showWindow(CapturedWindow const& window, QList<QBitArray> const& columns,
                std::function<void(quint64 const* row)> const& take)
{
    std::vector<quint64> row(std::size_t(Dump::SampleTable::wordsFor(columns.size())));
    for (int sample = 0; sample < window.length(); ++sample) {
        std::fill(row.begin(), row.end(), 0);
        for (int i = 0; i < columns.size(); ++i)
            if (!columns.at(i).isEmpty() && columns.at(i).testBit(sample))
                row[std::size_t(i / 64)] |= Dump::SampleTable::bitOf(i);
        take(row.data());
    }
}

} // namespace

void showCapture(QString const& path, QString const& configuration, int coreIndex,
                 Simulator::WatchedCore const& watched,
                 std::function<void(quint64 const* row)> const& take, QStringList& warnings)
{
    CaptureHints hints;
    hints.configuration = configuration;
    hints.core = coreIndex;
    hints.trigger = 0; // it does not matter here
    CaptureFile const file = readCaptureFile(path, hints);
    warnings << file.warnings;
    CoreCapture const core = captureOf(file, path, coreIndex);
    QStringList missing;
    for (CapturedWindow const& window : core.windows) {
        QList<QBitArray> const columns = columnsOf(window, watched.signalNames);
        for (int i = 0; i < columns.size(); ++i)
            if (columns.at(i).isEmpty() && !missing.contains(watched.signalNames.at(i)))
                missing << watched.signalNames.at(i);
        showWindow(window, columns, take);
    }
    if (!missing.isEmpty())
        warnings << QStringLiteral("core %1: the capture does not hold %2, which counts as 0 here")
                        .arg(coreIndex)
                        .arg(missing.join(QStringLiteral(", ")));
    if (core.windows.size() > 1)
        warnings << QStringLiteral("core %1: of each window but the first, edges of the first "
                                   "sample are against the window before")
                        .arg(coreIndex);
}

} // namespace VEK::Cli
