// Data and arrangement as a "Window" element.

#include "model/bits.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"
#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/waves/waveviewdatasource.h"

namespace WaveMonitor {

namespace {

int windowIndex(QDomElement const& window)
{
    return window.attribute(VEK::DOM_ATTR_WINDOW_INDEX, QStringLiteral("-1")).toInt();
}

SignalElement readElement(QDomElement const& signal)
{
    return {signal.attribute(VEK::DOM_ATTR_SIGNAL_ID).toInt(),
            signal.attribute(VEK::DOM_ATTR_SIGNAL_NAME),
            signal.attribute(VEK::DOM_ATTR_SIGNAL_TEXT), string2Bits(VEK::elementText(signal))};
}

/// Another window behind the samples so far; left out when a vector can't hold them all.
void appendSamples(SignalElement& element, QBitArray const& samples)
{
    QBitArray const joined = VEK::combine(element.data, samples);
    if (joined.size() > element.data.size())
        element.data = joined;
}

} // namespace

QDomElement SignalTreeModel::save(QDomDocument& document) const
{
    QDomElement window = document.createElement(VEK::DOM_TAG_WINDOW);
    QDomElement trigger = document.createElement(VEK::DOM_TAG_TRIGGER_POSITION);
    trigger.setAttribute(VEK::DOM_ATTR_TRIGGER_SEGMENTS, m_windowsNum);
    trigger.appendChild(document.createTextNode(QString::number(m_triggerPosition)));
    window.appendChild(trigger);
    window.appendChild(saveData(document));
    window.appendChild(saveLayout(document));
    return window;
}

QDomElement SignalTreeModel::saveData(QDomDocument& document) const
{
    QDomElement list = document.createElement(VEK::DOM_TAG_SIGNALS);
    for (SignalElement const* element : m_elements) { // by ascending id
        MLog() << "Sig ID: " << element->id;
        QDomElement signal = document.createElement(VEK::DOM_TAG_SIGNAL);
        signal.setAttribute(VEK::DOM_ATTR_SIGNAL_NAME, element->name);
        signal.setAttribute(VEK::DOM_ATTR_SIGNAL_ID, element->id);
        signal.setAttribute(VEK::DOM_ATTR_SIGNAL_TEXT, element->text);
        signal.appendChild(document.createTextNode(bits2String(element->data)));
        list.appendChild(signal);
    }
    return list;
}

QDomElement SignalTreeModel::saveLayout(QDomDocument& document) const
{
    return m_layout->exportDomElement(document);
}

void SignalTreeModel::restore(QDomElement const& window)
{
    if (windowIndex(window) != 0) { // a further window
        restoreData(window);
        return;
    }
    clear();
    beginResetModel();
    m_dataSource->clear();
    m_layout->removeAll();
    endResetModel();
    MLog() << "data cleared! signals: " << m_elements.size();
    restoreData(window);
    restoreLayout(window.firstChildElement(VEK::DOM_TAG_LAYOUT));
}

void SignalTreeModel::restoreData(QDomElement const& window)
{
    if (window.tagName() != VEK::DOM_TAG_WINDOW)
        return;
    bool const first = windowIndex(window) == 0;
    if (first) {
        m_triggerPosition =
            VEK::elementText(window.firstChildElement(VEK::DOM_TAG_TRIGGER_POSITION)).toInt();
        m_currentTime = m_triggerPosition;
    }
    QDomElement signal =
        window.firstChildElement(VEK::DOM_TAG_SIGNALS).firstChildElement(VEK::DOM_TAG_SIGNAL);
    for (; !signal.isNull(); signal = signal.nextSiblingElement(VEK::DOM_TAG_SIGNAL)) {
        SignalElement const read = readElement(signal);
        MLog() << "signal: id(" << read.id << ") name(" << read.name << ")";
        if (first)
            m_layout->appendSignal(storeElement(read));
        else
            signalElementByID(read.id,
                              [&](SignalElement* known) { appendSamples(*known, read.data); });
    }
    post(LayoutChanged);
}

void SignalTreeModel::restoreLayout(QDomElement const& layout)
{
    if (layout.isNull())
        return;
    beginResetModel();
    m_dataSource->clear();
    m_layout->removeAll();
    m_layout->restoreLayout(layout);
    m_dataSource->updateWaveColor();
    endResetModel();
    post(LayoutChanged);
    post(SelectionChanged);
}

} // namespace WaveMonitor
