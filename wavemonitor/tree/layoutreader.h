#pragma once

class QDomElement;

namespace WaveMonitor {

struct LayoutNode;

/// Appends the rows of an element "Layout" to a root, which owns them. Unknown kinds of nodes are
/// passed over.
void readRows(QDomElement const& layout, LayoutNode& root);

} // namespace WaveMonitor
