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
        if (!m_store->element(node->id))
            return QString();
        std::optional<bool> const sample = m_store->sampleAt(node->id, time);
        return node->formatter->format(sample ? QBitArray(1, *sample) : QBitArray());
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
        std::optional<bool> const sample = m_store->sampleAt(child->id, time);
        if (width == 0 && !sample)
            return QBitArray();
        value.setBit(width++, sample.value_or(false));
    }
    value.truncate(width);
    return width > 0 ? value : QBitArray();
}

} // namespace WaveMonitor
