#include "workbench/savedview.h"

#include <QLocale>

using WaveMonitor::ViewState;

namespace {

QString const ViewTag = QStringLiteral("View");
QString const CursorAttribute = QStringLiteral("cursor");
QString const ZoomAttribute = QStringLiteral("zoom");
QString const LeftAttribute = QStringLiteral("left");
QString const MarkerTag = QStringLiteral("Marker");
QString const TimeAttribute = QStringLiteral("time");

QString exact(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

} // namespace

void saveView(ViewState const& view, QDomElement window)
{
    QDomDocument document = window.ownerDocument();
    QDomElement element = document.createElement(ViewTag);
    element.setAttribute(CursorAttribute, view.cursorTime);
    element.setAttribute(ZoomAttribute, exact(view.zoomRate));
    element.setAttribute(LeftAttribute, exact(view.leftTime));
    for (int time : view.markerTimes) {
        QDomElement marker = document.createElement(MarkerTag);
        marker.setAttribute(TimeAttribute, time);
        element.appendChild(marker);
    }
    window.removeChild(window.firstChildElement(ViewTag));
    window.appendChild(element);
}

bool restoreView(QDomElement const& window, ViewState& view)
{
    QDomElement const element = window.firstChildElement(ViewTag);
    view.cursorTime = element.attribute(CursorAttribute).toInt();
    view.zoomRate = element.attribute(ZoomAttribute).toDouble();
    view.leftTime = element.attribute(LeftAttribute).toDouble();
    QDomElement marker = element.firstChildElement(MarkerTag);
    for (; !marker.isNull(); marker = marker.nextSiblingElement(MarkerTag))
        view.markerTimes << marker.attribute(TimeAttribute).toInt();
    return !element.isNull();
}
