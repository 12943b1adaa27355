#include "model/signallist.h"

#include <QXmlStreamWriter>

#include <algorithm>
#include <utility>

namespace VEK {
namespace {

void writeFlag(QXmlStreamWriter& writer, SignalItem const& item, CaptureFlag flag)
{
    if (flag == CaptureFlag::Written)
        writer.writeAttribute(QStringLiteral("capture_enable"), item.captureEnable
                                                                    ? QStringLiteral("true")
                                                                    : QStringLiteral("false"));
}

void writeSignal(QXmlStreamWriter& writer, SignalItem const& item, CaptureFlag flag)
{
    writer.writeStartElement(QStringLiteral("Signal"));
    writeFlag(writer, item, flag);
    if (!item.text.isEmpty())
        writer.writeAttribute(QStringLiteral("text"), item.text);
    writer.writeCharacters(item.name);
    writer.writeEndElement();
}

void writeBus(QXmlStreamWriter& writer, SignalItem const& item, CaptureFlag flag)
{
    writer.writeStartElement(QStringLiteral("Bus"));
    writeFlag(writer, item, flag);
    if (!item.text.isEmpty())
        writer.writeAttribute(QStringLiteral("name"), item.text);
    writer.writeAttribute(QStringLiteral("restorename"), item.name);
    for (SignalItem const& member : item.signalList)
        writeSignal(writer, member, CaptureFlag::None);
    writer.writeEndElement();
}

/// An absent attribute, and an empty one, mean captured.
bool isCaptured(QString const& enable)
{
    return enable.isEmpty() || enable == QLatin1String("true");
}

SignalItem readSignal(QDomElement const& element, bool captured)
{
    SignalItem item;
    item.name = element.text();
    item.text = element.attribute(QStringLiteral("text"));
    item.captureEnable = captured;
    return item;
}

/// The nodes of a bus that are its members.
QList<QDomElement> memberElements(QDomElement const& bus, ListForm form)
{
    if (form != ListForm::Lite)
        return childElements(bus, QStringLiteral("Signal"));
    QList<QDomElement> nodes;
    for (QDomNode node = bus.firstChild(); !node.isNull(); node = node.nextSibling())
        nodes.append(node.toElement());
    return nodes;
}

SignalItem readBus(QDomElement const& element, ListForm form, bool captured)
{
    SignalItem bus;
    bus.name = element.attribute(QStringLiteral("restorename"));
    bus.text = element.attribute(QStringLiteral("name"));
    if (bus.name.isEmpty()) // older files have one name only
        std::swap(bus.name, bus.text);
    bus.captureEnable = captured;
    for (QDomElement const& member : memberElements(element, form))
        bus.signalList.append(readSignal(member, captured));
    return bus;
}

} // namespace

void writeSignalList(QXmlStreamWriter& writer, QList<SignalItem> const& items, CaptureFlag flag)
{
    writer.writeStartElement(QStringLiteral("SignalList"));
    for (SignalItem const& item : items) {
        if (item.isBus())
            writeBus(writer, item, flag);
        else
            writeSignal(writer, item, flag);
    }
    writer.writeEndElement();
}

QList<QDomElement> childElements(QDomElement const& parent, QString const& tag)
{
    QList<QDomElement> elements;
    for (QDomElement child = parent.firstChildElement(tag); !child.isNull();
         child = child.nextSiblingElement(tag))
        elements.append(child);
    return elements;
}

QList<SignalItem> readSignalList(QDomElement const& list, ListForm form)
{
    QList<SignalItem> items;
    for (QDomElement const& element : childElements(list)) {
        QString const enable = element.attribute(QStringLiteral("capture_enable"));
        bool const captured = form == ListForm::Port || isCaptured(enable);
        if (element.tagName() == QLatin1String("Bus"))
            items.append(readBus(element, form, captured));
        else if (element.tagName() == QLatin1String("Signal") &&
                 (captured || form == ListForm::Lite || enable == QLatin1String("false")))
            items.append(readSignal(element, captured));
    }
    return items;
}

QList<SignalItem> capturedItems(QList<SignalItem> const& items)
{
    QList<SignalItem> captured;
    std::copy_if(items.begin(), items.end(), std::back_inserter(captured),
                 [](SignalItem const& item) { return item.captureEnable; });
    return captured;
}

} // namespace VEK
