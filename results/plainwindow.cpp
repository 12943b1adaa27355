#include "results/plainwindow.h"

#include <algorithm>

namespace VEK {

PlainWindow plainWindow(QString const& module, int trigger, QList<SignalItem> const& layout,
                        QList<WaveMonitor::SignalData> const& decoded)
{
    PlainWindow window;
    window.module = module;
    window.trigger = trigger;
    int at = 0;
    for (SignalItem const& item : layout) {
        PlainWindow::Column column;
        column.name = item.text.isEmpty() ? item.name : item.text;
        int const end = at + (item.isBus() ? item.signalList.size() : 1);
        for (; at < end && at < decoded.size(); ++at) {
            column.bits << decoded.at(at).data;
            column.bitNames << decoded.at(at).name;
            window.samples = std::max(window.samples, decoded.at(at).data.size());
        }
        at = end;
        if (!column.bits.isEmpty())
            window.columns << column;
    }
    return window;
}

} // namespace VEK
