#include "workbench/sessionfile.h"

#include "model/vekfile.h"
#include "results/wholefile.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"

#include <QFile>
#include <QLocale>

using namespace VEK;
using WaveMonitor::ViewState;

namespace {

QString const CoreAttribute = QStringLiteral("core");
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

QDomElement viewElement(ViewState const& view, QDomDocument& document)
{
    QDomElement element = document.createElement(ViewTag);
    element.setAttribute(CursorAttribute, view.cursorTime);
    element.setAttribute(ZoomAttribute, exact(view.zoomRate));
    element.setAttribute(LeftAttribute, exact(view.leftTime));
    for (int time : view.markerTimes) {
        QDomElement marker = document.createElement(MarkerTag);
        marker.setAttribute(TimeAttribute, time);
        element.appendChild(marker);
    }
    return element;
}

ViewState viewFrom(QDomElement const& element)
{
    ViewState view;
    view.cursorTime = element.attribute(CursorAttribute).toInt();
    view.zoomRate = element.attribute(ZoomAttribute).toDouble();
    view.leftTime = element.attribute(LeftAttribute).toDouble();
    QDomElement marker = element.firstChildElement(MarkerTag);
    for (; !marker.isNull(); marker = marker.nextSiblingElement(MarkerTag))
        view.markerTimes << marker.attribute(TimeAttribute).toInt();
    return view;
}

} // namespace

bool writeSession(QString const& path, QByteArray const& configuration,
                  QList<SavedWindow> const& windows, QString& error)
{
    ParsedDocument parsed = parseVekDocument(configuration);
    if (!parsed.isOk()) {
        error = parsed.error;
        return false;
    }
    QDomElement root = parsed.config();
    for (SavedWindow const& saved : windows) {
        QDomNode copy = parsed.document.importNode(saved.window, true);
        copy.toElement().setAttribute(CoreAttribute, saved.core);
        copy.toElement().setAttribute(DOM_ATTR_WINDOW_INDEX, 0);
        copy.appendChild(viewElement(saved.view, parsed.document));
        root.appendChild(copy);
    }
    return writeWholeFile(path, parsed.document.toByteArray(4), error);
}

QList<SavedWindow> readSession(QString const& path, QDomDocument& document)
{
    QList<SavedWindow> windows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return windows;
    ParsedDocument const parsed = parseVekDocument(file.readAll());
    document = parsed.document;
    QDomElement window = parsed.config().firstChildElement(DOM_TAG_WINDOW);
    for (; !window.isNull(); window = window.nextSiblingElement(DOM_TAG_WINDOW)) {
        QDomElement const view = window.firstChildElement(ViewTag);
        windows.append(
            {window.attribute(CoreAttribute).toInt(), window, !view.isNull(), viewFrom(view)});
    }
    return windows;
}

QDomElement singleWindow(QDomElement const& all, int window, int count)
{
    QDomElement single = all.cloneNode(true).toElement();
    QDomElement signal = single.firstChildElement(DOM_TAG_SIGNALS).firstChildElement();
    for (; !signal.isNull(); signal = signal.nextSiblingElement()) {
        QString const bits = elementText(signal);
        int const length = bits.size() / qMax(1, count);
        while (signal.hasChildNodes())
            signal.removeChild(signal.firstChild());
        signal.appendChild(all.ownerDocument().createTextNode(bits.mid(window * length, length)));
    }
    return single;
}
