#include "results/windowreader.h"

#include "results/windowdocument.h"

#include <QHash>

namespace VEK {
namespace {

template <typename Visit>
void forEachChild(QDomElement const& parent, QString const& tag, Visit visit)
{
    for (QDomElement child = parent.firstChildElement(tag); !child.isNull();
         child = child.nextSiblingElement(tag))
        visit(child);
}

QString nodeType(QDomElement const& node)
{
    return node.attribute(DOM_ATTR_NODE_TYPE);
}

/// The first record of each id.
QHash<QString, int> placesById(QList<Signal> const& records)
{
    QHash<QString, int> places;
    places.reserve(records.size());
    for (int i = 0; i < records.size(); ++i) {
        if (!places.contains(records.at(i).id))
            places.insert(records.at(i).id, i);
    }
    return places;
}

/// Makes the columns of one window.
class ColumnReader
{
public:
    explicit ColumnReader(QDomElement const& window)
        : m_records(baseSignalListFromDom(window)), m_places(placesById(m_records))
    {}

    _Signal* readSignal(QDomElement const& node) const
    {
        QString label = node.attribute(DOM_ATTR_NODE_TEXT);
        int const place = m_places.value(node.attribute(DOM_ATTR_NODE_ID), -1);
        if (place < 0)
            return new _Signal(label, QString());
        Signal const& record = m_records.at(place);
        return new _Signal(label.isEmpty() ? record.label : label, record.data);
    }

    void appendBus(QDomElement const& node, bool expand, QList<SignalData*>& columns) const
    {
        QString label = node.attribute(DOM_ATTR_NODE_TEXT);
        if (label.isEmpty())
            label = node.attribute(DOM_ATTR_NODE_NAME);
        QList<SignalData*> members;
        QList<QString> data;
        forEachChild(node, DOM_TAG_NODE, [&](QDomElement const& child) {
            if (nodeType(child) == DOM_VAL_NODE_T_DIVIDER)
                return;
            _Signal* member = readSignal(child);
            members.append(member);
            data.append(member->samples());
        });

        _Bus* bus = new _Bus(label, data);
        QString const format = node.attribute(DOM_ATTR_NODE_FORMAT);
        if (!format.isEmpty())
            bus->formatter.setFormatType(WaveMonitor::DataFormat::typeFromString(format));
        columns.append(bus);
        if (expand)
            columns.append(members);
        else
            qDeleteAll(members);
    }

private:
    QList<Signal> m_records;
    QHash<QString, int> m_places;
};

} // namespace

QString _Signal::data(int index) const
{
    return index < 0 || index >= m_data.size() ? QString() : QString(m_data.at(index));
}

QString _Bus::data(int index) const
{
    if (index < 0 || m_members.isEmpty())
        return QString();
    QBitArray bits(m_members.size());
    for (int k = 0; k < m_members.size(); ++k) {
        QString const& member = m_members.at(k);
        if (index >= member.size())
            return QString();
        if (member.at(index) == QLatin1Char('1'))
            bits.setBit(k);
    }
    return formatter.format(bits);
}

int _Bus::dataSize() const
{
    return m_members.isEmpty() ? 0 : m_members.first().size();
}

QString elementText(QDomElement const& element)
{
    QDomNode node = element.firstChild();
    if (node.isText() && node.nextSibling().isNull())
        return node.nodeValue();
    QString text;
    while (!node.isNull() && node != element) {
        if (node.isText())
            text += node.nodeValue();
        QDomNode next = node.isElement() ? node.firstChild() : QDomNode();
        while (next.isNull() && node != element) {
            next = node.nextSibling();
            node = node.parentNode();
        }
        node = next;
    }
    return text;
}

QString signalLabel(QDomElement const& signal)
{
    QString const text = signal.attribute(DOM_ATTR_SIGNAL_TEXT);
    return text.isEmpty() ? signal.attribute(DOM_ATTR_SIGNAL_NAME) : text;
}

QList<Signal> baseSignalListFromDom(QDomElement const& window)
{
    QList<Signal> records;
    forEachChild(window.firstChildElement(DOM_TAG_SIGNALS), DOM_TAG_SIGNAL,
                 [&records](QDomElement const& signal) {
                     records.append({signalLabel(signal), signal.attribute(DOM_ATTR_SIGNAL_ID),
                                     elementText(signal)});
                 });
    return records;
}

QList<Signal> signalListFromDom(QDomElement const& window)
{
    QList<Signal> records = baseSignalListFromDom(window);
    QHash<QString, int> const places = placesById(records);
    auto const rename = [&](QDomElement const& node) {
        QString const text = node.attribute(DOM_ATTR_NODE_TEXT);
        int const place = text.isEmpty() ? -1 : places.value(node.attribute(DOM_ATTR_NODE_ID), -1);
        if (place >= 0)
            records[place].label = text;
    };
    forEachChild(window.firstChildElement(DOM_TAG_LAYOUT), DOM_TAG_NODE,
                 [&rename](QDomElement const& node) {
                     if (nodeType(node) == DOM_VAL_NODE_T_SIG)
                         rename(node);
                     else if (nodeType(node) == DOM_VAL_NODE_T_BUS)
                         forEachChild(node, DOM_TAG_NODE, rename);
                 });
    return records;
}

QList<SignalData*> signalDataFromDom(QDomElement const& window, bool expandBuses)
{
    ColumnReader const reader(window);
    QList<SignalData*> columns;
    forEachChild(window.firstChildElement(DOM_TAG_LAYOUT), DOM_TAG_NODE,
                 [&](QDomElement const& node) {
                     if (nodeType(node) == DOM_VAL_NODE_T_SIG)
                         columns.append(reader.readSignal(node));
                     else if (nodeType(node) == DOM_VAL_NODE_T_BUS)
                         reader.appendBus(node, expandBuses, columns);
                 });
    return columns;
}

QStringList getBusNames(QDomElement const& window)
{
    QStringList names;
    QList<SignalData*> const columns = signalDataFromDom(window, true);
    for (SignalData const* column : columns) {
        if (column->isBus())
            names.append(column->label());
    }
    qDeleteAll(columns);
    return names;
}

} // namespace VEK
