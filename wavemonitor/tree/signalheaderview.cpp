#include "wavemonitor/tree/signalheaderview.h"

namespace WaveMonitor {

SignalHeaderView::SignalHeaderView(Qt::Orientation orientation, QWidget* parent)
    : QHeaderView(orientation, parent)
{
    setCascadingSectionResizes(true);
    setSectionResizeMode(QHeaderView::Interactive);
    setDefaultSectionSize(100); // the value column
}

QSize SignalHeaderView::sizeHint() const
{
    // The label above the tree and this header are together as high as the ruler.
    return {QHeaderView::sizeHint().width(), 20};
}

} // namespace WaveMonitor
