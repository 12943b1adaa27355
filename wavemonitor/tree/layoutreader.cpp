#include "wavemonitor/tree/layoutreader.h"

#include "results/windowdocument.h"
#include "wavemonitor/mlog.h"
#include "wavemonitor/tree/layoutnode.h"

#include <memory>

namespace WaveMonitor {

namespace {

/// The heights that a user can choose: others come from damaged documents.
constexpr int LeastRowHeight = 30;
constexpr int MostRowHeight = 1000;

int nameTypeFrom(QString const& text)
{
    if (text == QLatin1String("0"))
        return LayoutNode::LongName;
    return text == QLatin1String("1") ? LayoutNode::ShortName : LayoutNode::OriginalName;
}

VEK::RealType realTypeFrom(QDomElement const& element)
{
    VEK::RealType real;
    real.type =
        VEK::RealType::FixedFloatingtypeFromString(element.attribute(VEK::DOM_ATTR_NODE_REALTYPE));
    real.binaryPoint = element.attribute(VEK::DOM_ATTR_NODE_REALPOINT).toInt();
    real.kind = real.type == VEK::FloatingSingle || real.type == VEK::FloatingDouble;
    if (real.type == VEK::FloatingDouble) {
        real.exponentWidth = 11;
        real.fractionWidth = 53;
    }
    return real;
}

void readFormat(DataFormatter& formatter, QDomElement const& element)
{
    auto const format = DataFormat::typeFromString(element.attribute(VEK::DOM_ATTR_NODE_FORMAT));
    formatter.setFormatType(format);
    if (format == DataFormat::Real)
        formatter.setRealType(realTypeFrom(element));
    if (isChart(format)) {
        int const height = element.attribute(VEK::DOM_ATTR_NODE_ROWHEIGHT).toInt();
        formatter.setRowHeight(qBound(LeastRowHeight, height, MostRowHeight));
    }
}

void readCommon(LayoutNode& node, QDomElement const& element)
{
    QString const color = element.attribute(VEK::DOM_ATTR_NODE_COLOR);
    node.color = color.isEmpty() ? LayoutNode::DefaultColor : color.toInt();
    node.nameType = nameTypeFrom(element.attribute(VEK::DOM_ATTR_NODE_NAMETYPE));
    node.id = element.attribute(VEK::DOM_ATTR_NODE_ID).toInt();
}

template <typename Node>
std::unique_ptr<Node> readNode(QDomElement const& element)
{
    auto node = std::make_unique<Node>();
    readCommon(*node, element);
    node->text = element.attribute(VEK::DOM_ATTR_NODE_TEXT);
    return node;
}

/// A signal or a divider; false for any other kind.
bool readLeaf(LayoutNode& parent, QDomElement const& element)
{
    QString const kind = element.attribute(VEK::DOM_ATTR_NODE_TYPE);
    if (kind == VEK::DOM_VAL_NODE_T_SIG) {
        auto node = readNode<SignalLayoutNode>(element);
        MLog() << "sigNode: type(" << node->type << ") id(" << node->id << ")";
        parent.append(node.release());
        return true;
    }
    if (kind == VEK::DOM_VAL_NODE_T_DIVIDER) {
        parent.append(readNode<DividerLayoutNode>(element).release());
        return true;
    }
    return false;
}

template <typename Visit>
void forEachNode(QDomElement const& parent, Visit visit)
{
    for (QDomElement node = parent.firstChildElement(VEK::DOM_TAG_NODE); !node.isNull();
         node = node.nextSiblingElement(VEK::DOM_TAG_NODE))
        visit(node);
}

} // namespace

void readRows(QDomElement const& layout, LayoutNode& root)
{
    forEachNode(layout, [&root](QDomElement const& element) {
        if (readLeaf(root, element) ||
            element.attribute(VEK::DOM_ATTR_NODE_TYPE) != VEK::DOM_VAL_NODE_T_BUS)
            return;
        auto bus = readNode<BusLayoutNode>(element);
        bus->name = element.attribute(VEK::DOM_ATTR_NODE_NAME);
        readFormat(*bus->formatter, element);
        MLog() << "BusNode: type(" << bus->type << ") id(" << bus->id << ")";
        forEachNode(element, [&bus](QDomElement const& child) { readLeaf(*bus, child); });
        root.append(bus.release());
    });
}

} // namespace WaveMonitor
