#include "model/signallist.h"

#include <QXmlStreamWriter>

namespace VEK {
namespace {

void writeSignal(QXmlStreamWriter& writer, SignalItem const& item, CaptureFlag flag)
{
    writer.writeStartElement(QStringLiteral("Signal"));
    if (flag == CaptureFlag::Written)
        writer.writeAttribute(QStringLiteral("capture_enable"), item.captureEnable
                                                                    ? QStringLiteral("true")
                                                                    : QStringLiteral("false"));
    if (!item.text.isEmpty())
        writer.writeAttribute(QStringLiteral("text"), item.text);
    writer.writeCharacters(item.name);
    writer.writeEndElement();
}

void writeBus(QXmlStreamWriter& writer, SignalItem const& item, CaptureFlag flag)
{
    writer.writeStartElement(QStringLiteral("Bus"));
    if (flag == CaptureFlag::Written)
        writer.writeAttribute(QStringLiteral("capture_enable"), item.captureEnable
                                                                    ? QStringLiteral("true")
                                                                    : QStringLiteral("false"));
    if (!item.text.isEmpty())
        writer.writeAttribute(QStringLiteral("name"), item.text);
    writer.writeAttribute(QStringLiteral("restorename"), item.name);
    for (SignalItem const& member : item.signalList)
        writeSignal(writer, member, CaptureFlag::None);
    writer.writeEndElement();
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

bool isCaptured(QDomElement const& element)
{
    QString const enable = element.attribute(QStringLiteral("capture_enable"));
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

SignalItem readBus(QDomElement const& element, QList<QDomElement> const& members, bool captured)
{
    SignalItem bus;
    bus.name = element.attribute(QStringLiteral("restorename"));
    bus.text = element.attribute(QStringLiteral("name"));
    if (bus.name.isEmpty()) // older files have one name only
        std::swap(bus.name, bus.text);
    bus.captureEnable = captured;
    for (QDomElement const& member : members)
        bus.signalList.append(readSignal(member, captured));
    return bus;
}

QList<QDomElement> childElements(QDomElement const& parent, QString const& tag)
{
    QList<QDomElement> elements;
    for (QDomElement child = parent.firstChildElement(tag); !child.isNull();
         child = child.nextSiblingElement(tag))
        elements.append(child);
    return elements;
}

QList<SignalItem> readPortSignals(QDomElement const& list)
{
    QList<SignalItem> items;
    for (QDomElement const& element : childElements(list)) {
        if (element.tagName() == QLatin1String("Signal"))
            items.append(readSignal(element, true));
        else if (element.tagName() == QLatin1String("Bus"))
            items.append(readBus(element, childElements(element, QStringLiteral("Signal")), true));
    }
    return items;
}

} // namespace VEK
