#include "wavemonitor/tree/signalstore.h"

#include "model/bits.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"
#include "wavemonitor/mlog.h"

namespace WaveMonitor {

namespace {

template <typename Visit>
void forEachSignal(QDomElement const& list, Visit visit)
{
    for (QDomElement signal = list.firstChildElement(VEK::DOM_TAG_SIGNAL); !signal.isNull();
         signal = signal.nextSiblingElement(VEK::DOM_TAG_SIGNAL)) {
        SignalElement const read{signal.attribute(VEK::DOM_ATTR_SIGNAL_ID).toInt(),
                                 signal.attribute(VEK::DOM_ATTR_SIGNAL_NAME),
                                 signal.attribute(VEK::DOM_ATTR_SIGNAL_TEXT),
                                 string2Bits(VEK::elementText(signal))};
        MLog() << "signal: id(" << read.id << ") name(" << read.name << ")";
        visit(read);
    }
}

} // namespace

SignalStore::~SignalStore()
{
    qDeleteAll(m_elements);
}

SignalElement* SignalStore::add(SignalElement const& element)
{
    SignalElement*& place = m_elements[element.id];
    delete place;
    return place = new SignalElement(element);
}

int SignalStore::length(int id) const
{
    SignalElement const* const signal = element(id);
    return signal ? signal->data.size() : 0;
}

int SignalStore::greatestLength() const
{
    int length = 0;
    for (SignalElement const* element : m_elements)
        length = qMax(length, element->data.size());
    return length;
}

bool SignalStore::replaceSamples(QList<QBitArray> const& samples)
{
    if (samples.size() != m_elements.size())
        return false;
    for (int id = 0; id < samples.size(); ++id) {
        if (SignalElement* const signal = element(id))
            signal->data = samples.at(id);
    }
    return true;
}

void SignalStore::clear()
{
    int const count = m_elements.size();
    qDeleteAll(m_elements);
    m_elements.clear();
    MLog() << "signals cleared: " << count << "remains: " << m_elements.size();
}

QDomElement SignalStore::exportDomElement(QDomDocument& document) const
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

QList<int> SignalStore::addSignals(QDomElement const& list)
{
    QList<int> ids;
    forEachSignal(list, [&](SignalElement const& read) { ids.append(add(read)->id); });
    return ids;
}

void SignalStore::appendSamples(QDomElement const& list)
{
    forEachSignal(list, [this](SignalElement const& read) {
        SignalElement* const known = element(read.id);
        if (!known)
            return;
        QBitArray const joined = VEK::combine(known->data, read.data);
        if (joined.size() > known->data.size())
            known->data = joined;
    });
}

} // namespace WaveMonitor
