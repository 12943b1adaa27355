#include "workbench/whereabouts.h"

#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/sampletimes.h"

#include <QStringList>

using WaveMonitor::WaveMonitorWidget;

namespace {

constexpr int MostEdges = 10000; // that are counted one by one

/// Changes of the selected rows behind `from`, up to `to`; empty without selected rows.
QString edges(WaveMonitorWidget const& monitor, int from, int to)
{
    auto const* const tree = monitor.treeView();
    if (tree->selectedRowList().isEmpty())
        return QString();
    int count = 0;
    for (int time = from; count <= MostEdges; ++count) {
        int const next = tree->getNextTransition(time);
        if (next <= time || next > to)
            break;
        time = next;
    }
    return count > MostEdges ? QStringLiteral(", more than %1 edges").arg(MostEdges)
           : count == 1      ? QStringLiteral(", 1 edge")
                             : QStringLiteral(", %1 edges").arg(count);
}

} // namespace

QString whereabouts(WaveMonitorWidget const& monitor, SampleTimes const& times)
{
    if (times.length() == 0)
        return QString();
    int const cursor = monitor.cursorTime();
    QList<int> const markers = monitor.markerTimes();
    QStringList parts{QStringLiteral("Cursor: ") + times.place(cursor)};
    if (!markers.isEmpty())
        parts << QStringLiteral("marker %1: %2")
                         .arg(markers.first())
                         .arg(times.distance(cursor, markers.first())) +
                     edges(monitor, qMin(cursor, markers.first()), qMax(cursor, markers.first()));
    if (markers.size() > 1)
        parts << QStringLiteral("to marker %1: %2")
                     .arg(markers.at(1))
                     .arg(times.distance(markers.first(), markers.at(1)));
    return parts.join(QStringLiteral("; "));
}
