#pragma once

#include "results/dataformatter.h"

#include <QDomDocument>
#include <QDomElement>
#include <QList>
#include <QString>

namespace WaveMonitor {

/// Whether rows of that format are drawn as a chart, with a height of their own.
constexpr bool isChart(DataFormat::Type format)
{
    return format >= DataFormat::UnsignedBarChart && format <= DataFormat::SignedLineChart;
}

/// A row of the arrangement, or its root. Owns its formatter and its children.
struct LayoutNode
{
    enum Type : int { Root = 0, Signal = 1, Bus = 2, Divider = 3 };
    enum NameType : int { LongName = 0, ShortName = 1, OriginalName = 2 };

    static constexpr int DefaultColor = 0x00ff00;

    explicit LayoutNode(Type type);
    virtual ~LayoutNode();
    LayoutNode(LayoutNode const&) = delete;
    LayoutNode& operator=(LayoutNode const&) = delete;

    /// The node's own element "Node", without its children. The root makes "Layout". Made in the
    /// document but not placed in it.
    virtual QDomElement domElement(QDomDocument& document) const;

    /// Makes a node without a parent the last child.
    void append(LayoutNode* child);

    /// Deletes the formatter and all children.
    void removeAll();

    /// The node's place among its parent's children; -1 without a parent.
    int row() const;

    int color = DefaultColor;     ///< 0xRRGGBB, of the node's wave.
    int type;                     ///< A `Type`.
    LayoutNode* parent = nullptr; ///< Not owned; null until the node is attached.
    DataFormatter* formatter;     ///< Owned. Holds the height of chart rows, too.
    QList<LayoutNode*> children;  ///< Owned.
    int nameType = OriginalName;  ///< A `NameType`: the form of the name that was chosen.
    int id = 0;                   ///< Of the signal; in a divider the number that it was made with.

protected:
    /// An element "Node" with what the nodes of all kinds have.
    QDomElement nodeElement(QDomDocument& document, QString const& kind, QString const& text) const;

private:
    // Views ask for rows all the time, so one search numbers all siblings. Checked before use.
    mutable int m_row = 0;
};

struct SignalLayoutNode : LayoutNode
{
    SignalLayoutNode() : LayoutNode(Signal) {}
    QDomElement domElement(QDomDocument& document) const override;

    QString text; ///< Display text of this row alone; the signal's is shown while it is empty.
};

struct BusLayoutNode : LayoutNode
{
    BusLayoutNode() : LayoutNode(Bus) {}
    QDomElement domElement(QDomDocument& document) const override;

    QString name; ///< The bus's own name.
    QString text; ///< Display text; the name is shown while it is empty.
};

struct DividerLayoutNode : LayoutNode
{
    DividerLayoutNode() : LayoutNode(Divider) {}
    QDomElement domElement(QDomDocument& document) const override;

    QString text = QStringLiteral("New Divider");
};

} // namespace WaveMonitor
