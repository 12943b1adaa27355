#include "wavemonitor/signalelement.h"

#include "model/bits.h"
#include "model/capturecore.h"

#include <algorithm>

namespace WaveMonitor {

QString bits2String(QBitArray const& bits)
{
    return VEK::bit2str(bits);
}

QBitArray string2Bits(QString const& text)
{
    QBitArray bits(text.size());
    char* const bytes = VEK::storageOf(bits);
    QChar const* const characters = text.constData();
    for (int start = 0; start < text.size(); start += 8) {
        int const count = std::min(8, text.size() - start);
        unsigned byte = 0;
        for (int i = 0; i < count; ++i)
            byte |= unsigned(characters[start + i] == QLatin1Char('1')) << i;
        bytes[start / 8] = char(byte);
    }
    return bits;
}

} // namespace WaveMonitor

namespace VEK {

namespace {

using Elements = QMap<int, WaveMonitor::SignalElement*>;

int flatCount(QList<SignalItem> const& items)
{
    int count = 0;
    for (SignalItem const& item : items)
        count += item.isBus() ? item.signalList.size() : 1;
    return count;
}

void takeNames(SignalItem& item, WaveMonitor::SignalElement const* element)
{
    if (!element)
        return;
    item.name = element->name;
    item.text = element->text;
}

bool takeAllNames(QList<SignalItem>& items, Elements const& elements)
{
    if (elements.size() != flatCount(items))
        return false;
    int position = 0;
    for (SignalItem& item : items) {
        if (!item.isBus())
            takeNames(item, elements.value(position++));
        for (SignalItem& member : item.signalList)
            takeNames(member, elements.value(position++));
    }
    return true;
}

} // namespace

bool writeSignalItemFromSignalElements(SxCore* core, Elements const& elements)
{
    return core && takeAllNames(core->dataSignalList, elements);
}

bool writeSignalItemFromSignalElements(SXCore_Lite* core, Elements const& elements)
{
    return core && takeAllNames(core->dataSignalList, elements);
}

} // namespace VEK
