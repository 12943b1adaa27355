#include "results/windowbuilder.h"

#include "model/bits.h"
#include "results/windowdocument.h"

namespace VEK {
namespace {

/// Key of the hexadecimal format as the batch run writes it.
constexpr int HexadecimalKey = 4;

QDomElement signalElement(QDomDocument& document, WaveMonitor::SignalData const& signal)
{
    QDomElement element = document.createElement(DOM_TAG_SIGNAL);
    element.setAttribute(DOM_ATTR_SIGNAL_NAME, signal.name);
    element.setAttribute(DOM_ATTR_SIGNAL_ID, signal.id);
    element.setAttribute(DOM_ATTR_SIGNAL_TEXT, signal.text);
    element.appendChild(document.createTextNode(bit2str(signal.data)));
    return element;
}

QDomElement signalNode(QDomDocument& document, WaveMonitor::SignalData const& signal)
{
    QDomElement node = document.createElement(DOM_TAG_NODE);
    node.setAttribute(DOM_ATTR_NODE_TYPE, DOM_VAL_NODE_T_SIG);
    node.setAttribute(DOM_ATTR_NODE_ID, signal.id);
    node.setAttribute(DOM_ATTR_NODE_TEXT, signal.text.isEmpty() ? signal.name : signal.text);
    return node;
}

QDomElement busNode(QDomDocument& document, SignalItem const& bus)
{
    QDomElement node = document.createElement(DOM_TAG_NODE);
    node.setAttribute(DOM_ATTR_NODE_TYPE, DOM_VAL_NODE_T_BUS);
    node.setAttribute(DOM_ATTR_NODE_NAME, bus.name);
    node.setAttribute(DOM_ATTR_NODE_TEXT, bus.text);
    node.setAttribute(DOM_ATTR_NODE_FORMAT, HexadecimalKey);
    return node;
}

QDomElement layoutElement(QDomDocument& document, QList<SignalItem> const& items,
                          QList<WaveMonitor::SignalData> const& decoded)
{
    QDomElement layout = document.createElement(DOM_TAG_LAYOUT);
    int at = 0;
    for (SignalItem const& item : items) {
        QDomElement parent = item.isBus() ? busNode(document, item) : layout;
        int const end = at + (item.isBus() ? item.signalList.size() : 1);
        for (; at < end; ++at) {
            if (at < decoded.size())
                parent.appendChild(signalNode(document, decoded.at(at)));
        }
        if (item.isBus())
            layout.appendChild(parent);
    }
    return layout;
}

} // namespace

QList<WaveMonitor::SignalData> namedSignals(QList<SignalItem> const& flat,
                                            QList<QBitArray> const& arrays)
{
    QList<WaveMonitor::SignalData> decoded;
    decoded.reserve(arrays.size());
    for (int id = 0; id < arrays.size(); ++id) {
        SignalItem const item = flat.value(id);
        decoded.append({id, item.name, item.text, arrays.at(id)});
    }
    return decoded;
}

QDomElement windowElement(QDomDocument& document, int triggerPos, QList<SignalItem> const& layout,
                          QList<WaveMonitor::SignalData> const& decoded)
{
    QDomElement window = document.createElement(DOM_TAG_WINDOW);
    QDomElement position = document.createElement(DOM_TAG_TRIGGER_POSITION);
    position.appendChild(document.createTextNode(QString::number(triggerPos)));
    window.appendChild(position);
    QDomElement samples = document.createElement(DOM_TAG_SIGNALS);
    for (WaveMonitor::SignalData const& signal : decoded)
        samples.appendChild(signalElement(document, signal));
    window.appendChild(samples);
    window.appendChild(layoutElement(document, layout, decoded));
    return window;
}

} // namespace VEK
