#include "wavemonitor/tree/rowdisplay.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/tree/signalstore.h"

#include <QColor>
#include <QFont>
#include <QSize>

namespace WaveMonitor {

namespace {

constexpr QRgb MemberBackground = 0xdddddd;

bool hasSample(SignalElement const* element, int time)
{
    return element && time >= 0 && time < element->data.size();
}

QVariant background(LayoutNode const* node)
{
    if (node->type == LayoutNode::Divider)
        return QColor(QRgb(node->color));
    return node->parent->type == LayoutNode::Root ? QColor(Qt::white)
                                                  : QColor(QRgb(MemberBackground));
}

QVariant sizeHint(LayoutNode const* node)
{
    if (node->type != LayoutNode::Bus)
        return QVariant();
    bool const chart = isChart(node->formatter->formatType()) && !node->children.isEmpty();
    return QSize(0, chart ? node->formatter->rowHeight() : Constants::Graphics::kRowHeight);
}

/// The roles that are alike in both columns.
QVariant rowData(LayoutNode const* node, int role)
{
    switch (role) {
    case Qt::BackgroundRole:
        return background(node);
    case Qt::SizeHintRole:
        return sizeHint(node);
    default:
        return QVariant();
    }
}

} // namespace

RowDisplay::RowDisplay(ModelLayout const* layout, SignalStore const* store)
    : m_layout(layout), m_store(store)
{}

QVariant RowDisplay::nameData(LayoutNode const* node, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return m_layout->displayText(node);
    case Qt::FontRole:
        return nameFont(node);
    default:
        return rowData(node, role);
    }
}

QVariant RowDisplay::valueData(LayoutNode const* node, int role, int time) const
{
    return role == Qt::DisplayRole || role == Qt::EditRole ? QVariant(valueText(node, time))
                                                           : rowData(node, role);
}

QVariant RowDisplay::nameFont(LayoutNode const* node) const
{
    bool renamed = false;
    if (node->type == LayoutNode::Bus) {
        renamed = !static_cast<BusLayoutNode const*>(node)->text.isEmpty();
    } else if (node->type == LayoutNode::Signal) {
        SignalElement const* const element = m_store->element(node->id);
        renamed = !static_cast<SignalLayoutNode const*>(node)->text.isEmpty() ||
                  (element && !element->text.isEmpty());
    }
    QFont font;
    if (renamed && node->nameType != LayoutNode::ShortName)
        font.setItalic(true);
    return font;
}

QString RowDisplay::valueText(LayoutNode const* node, int time) const
{
    if (node->type == LayoutNode::Signal) {
        SignalElement const* const element = m_store->element(node->id);
        if (!element)
            return QString();
        return node->formatter->format(
            hasSample(element, time) ? QBitArray(1, element->data.testBit(time)) : QBitArray());
    }
    if (node->type == LayoutNode::Bus)
        return node->formatter->format(busValue(node, time));
    return QStringLiteral("");
}

/// One bit a member; a null array where the first member has no sample.
QBitArray RowDisplay::busValue(LayoutNode const* bus, int time) const
{
    QBitArray value(bus->children.size());
    int width = 0;
    for (LayoutNode const* child : bus->children) {
        if (child->type == LayoutNode::Divider)
            continue;
        SignalElement const* const element = m_store->element(child->id);
        bool const sampled = hasSample(element, time);
        if (width == 0 && !sampled)
            return QBitArray();
        value.setBit(width++, sampled && element->data.testBit(time));
    }
    value.truncate(width);
    return width > 0 ? value : QBitArray();
}

} // namespace WaveMonitor
