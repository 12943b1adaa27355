#include "wavemonitor/tree/layoutnode.h"

#include "results/windowdocument.h"

namespace WaveMonitor {

LayoutNode::LayoutNode(Type type)
    : type(type), formatter(new DataFormatter(DataFormat::Hexadecimal))
{}

LayoutNode::~LayoutNode()
{
    removeAll();
}

void LayoutNode::append(LayoutNode* child)
{
    child->parent = this;
    children.append(child);
}

void LayoutNode::removeAll()
{
    delete formatter;
    formatter = nullptr;
    qDeleteAll(children);
    children.clear();
}

int LayoutNode::row() const
{
    if (!parent)
        return -1;
    QList<LayoutNode*> const& siblings = parent->children;
    if (siblings.value(m_row) != this) {
        for (int i = 0; i < siblings.size(); ++i)
            siblings.at(i)->m_row = i;
    }
    return siblings.value(m_row) == this ? m_row : -1;
}

QDomElement LayoutNode::domElement(QDomDocument& document) const
{
    return document.createElement(VEK::DOM_TAG_LAYOUT);
}

QDomElement LayoutNode::nodeElement(QDomDocument& document, QString const& kind,
                                    QString const& text) const
{
    QDomElement element = document.createElement(VEK::DOM_TAG_NODE);
    element.setAttribute(VEK::DOM_ATTR_NODE_TYPE, kind);
    element.setAttribute(VEK::DOM_ATTR_NODE_TEXT, text);
    element.setAttribute(VEK::DOM_ATTR_NODE_COLOR, color);
    element.setAttribute(VEK::DOM_ATTR_NODE_NAMETYPE, nameType);
    return element;
}

QDomElement SignalLayoutNode::domElement(QDomDocument& document) const
{
    QDomElement element = nodeElement(document, VEK::DOM_VAL_NODE_T_SIG, text);
    element.setAttribute(VEK::DOM_ATTR_NODE_ID, id);
    return element;
}

QDomElement BusLayoutNode::domElement(QDomDocument& document) const
{
    QDomElement element = nodeElement(document, VEK::DOM_VAL_NODE_T_BUS, text);
    DataFormat::Type const format = formatter->formatType();
    element.setAttribute(VEK::DOM_ATTR_NODE_NAME, name);
    element.setAttribute(VEK::DOM_ATTR_NODE_FORMAT, DataFormat::stringFromType(format));
    if (format == DataFormat::Real) {
        VEK::RealType const& real = formatter->realType();
        element.setAttribute(VEK::DOM_ATTR_NODE_REALTYPE,
                             VEK::RealType::stringFromFixedFloatingType(real.type));
        element.setAttribute(VEK::DOM_ATTR_NODE_REALPOINT, real.binaryPoint);
    }
    if (isChart(format))
        element.setAttribute(VEK::DOM_ATTR_NODE_ROWHEIGHT, formatter->rowHeight());
    return element;
}

QDomElement DividerLayoutNode::domElement(QDomDocument& document) const
{
    return nodeElement(document, VEK::DOM_VAL_NODE_T_DIVIDER, text);
}

} // namespace WaveMonitor
