#include "workbench/monitorview.h"

#include "wavemonitor/rulerview.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"

#include <QDomDocument>
#include <QScrollBar>

using WaveMonitor::WaveMonitorWidget;

QString const ViewTag = QStringLiteral("View");

namespace {

QString const CursorAttribute = QStringLiteral("cursor");
QString const ZoomAttribute = QStringLiteral("zoom");
QString const MarkerTag = QStringLiteral("Marker");
QString const TimeAttribute = QStringLiteral("time");
constexpr int ExactDigits = 17;

} // namespace

MonitorView MonitorView::of(WaveMonitorWidget const& monitor)
{
    MonitorView view;
    view.cursor = monitor.rulerView()->cursorItem()->time();
    for (WaveMonitor::TimeSliderData const* marker : monitor.rulerView()->timeMarkers())
        view.markers << marker->time();
    view.zoom = monitor.zoomRate();
    view.scroll = monitor.waveView()->horizontalScrollBar()->value();
    return view;
}

void MonitorView::show(WaveMonitorWidget& monitor) const
{
    MonitorView const now = of(monitor);
    WaveMonitor::RulerView* const ruler = monitor.rulerView();
    if (now.cursor != cursor) {
        ruler->cursorItem()->setTime(cursor);
        monitor.onUpdateCursorTime();
        monitor.waveView()->viewport()->update();
    }
    if (now.markers != markers) {
        ruler->deleteAllMarker();
        for (auto time = markers.crbegin(); time != markers.crend(); ++time)
            if (*time >= 0 && *time < monitor.model()->timeLength())
                ruler->createMarker(*time); // the last one made is the active one
    }
    if (now.zoom != zoom)
        monitor.zoomTo(zoom);
    else
        monitor.waveView()->horizontalScrollBar()->setValue(scroll);
}

QDomElement MonitorView::save(QDomDocument& document) const
{
    QDomElement view = document.createElement(ViewTag);
    view.setAttribute(CursorAttribute, cursor);
    view.setAttribute(ZoomAttribute, QString::number(zoom, 'g', ExactDigits));
    for (int time : markers) {
        QDomElement marker = document.createElement(MarkerTag);
        marker.setAttribute(TimeAttribute, time);
        view.appendChild(marker);
    }
    return view;
}

MonitorView MonitorView::read(QDomElement const& view)
{
    MonitorView read;
    read.cursor = view.attribute(CursorAttribute).toInt();
    read.zoom = view.attribute(ZoomAttribute).toDouble();
    QDomElement marker = view.firstChildElement(MarkerTag);
    for (; !marker.isNull(); marker = marker.nextSiblingElement(MarkerTag))
        read.markers << marker.attribute(TimeAttribute, QStringLiteral("-1")).toInt();
    return read;
}
