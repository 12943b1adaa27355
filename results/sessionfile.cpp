#include "results/sessionfile.h"

#include "model/vekfile.h"
#include "results/wholefile.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"

#include <QFile>

namespace VEK {
namespace {

QString const CoreAttribute = QStringLiteral("core");

} // namespace

bool writeSession(QString const& path, QByteArray const& configuration,
                  QList<SessionWindow> const& windows, QString const& note, QString& error)
{
    ParsedDocument parsed = parseVekDocument(configuration);
    if (!parsed.isOk()) {
        error = parsed.error;
        return false;
    }
    QDomElement root = parsed.config();
    if (!note.isEmpty())
        parsed.document.insertBefore(parsed.document.createComment(note),
                                     parsed.document.documentElement());
    for (SessionWindow const& saved : windows) {
        QDomNode copy = parsed.document.importNode(saved.window, true);
        copy.toElement().setAttribute(CoreAttribute, saved.core);
        copy.toElement().setAttribute(DOM_ATTR_WINDOW_INDEX, 0);
        root.appendChild(copy);
    }
    return writeWholeFile(path, parsed.document.toByteArray(4), error);
}

QList<SessionWindow> readSession(QString const& path, QDomDocument& document)
{
    QList<SessionWindow> windows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return windows;
    ParsedDocument const parsed = parseVekDocument(file.readAll());
    document = parsed.document;
    QDomElement window = parsed.config().firstChildElement(DOM_TAG_WINDOW);
    for (; !window.isNull(); window = window.nextSiblingElement(DOM_TAG_WINDOW))
        windows.append({window.attribute(CoreAttribute).toInt(), window});
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

} // namespace VEK
