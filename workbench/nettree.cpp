#include "workbench/nettree.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace VEK;

namespace {

constexpr int NameWidth = 320;        ///< px
constexpr size_t MostUnfolded = 1000; ///< Nets whose scopes are all shown at once.

/// With "*" or "?" as a pattern of net names, else a part of the path in any case.
bool isShown(Dump::VcdVariable const& net, QString const& text, Dump::NetPattern const& pattern)
{
    bool const isPattern = text.contains(QLatin1Char('*')) || text.contains(QLatin1Char('?'));
    return isPattern ? pattern.fits(net.path)
                     : QString::fromUtf8(net.path).contains(text, Qt::CaseInsensitive);
}

bool isScope(QTreeWidgetItem const* item)
{
    return item->childCount() > 0;
}

} // namespace

NetTree::NetTree(QWidget* parent)
    : QWidget(parent), m_filter(new QLineEdit(this)), m_tree(new QTreeWidget(this))
{
    m_filter->setObjectName(QStringLiteral("netFilter"));
    m_filter->setPlaceholderText(QStringLiteral("Filter: a part of a name, or with * and ?"));
    m_filter->setClearButtonEnabled(true);
    m_tree->setObjectName(QStringLiteral("nets"));
    m_tree->setColumnCount(ColumnCount);
    m_tree->setHeaderLabels(
        {QStringLiteral("Net"), QStringLiteral("Width"), QStringLiteral("Changes")});
    m_tree->setColumnWidth(NameColumn, NameWidth);
    m_tree->setUniformRowHeights(true);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_filter);
    layout->addWidget(m_tree);
    connect(m_filter, &QLineEdit::textChanged, this, &NetTree::filter);
    connect(m_tree, &QTreeWidget::itemChanged, this, &NetTree::onItemChanged);
}

/// Of a path with a closing ".", made together with those around it.
QTreeWidgetItem* NetTree::scopeItem(QByteArray const& scope)
{
    if (scope.isEmpty())
        return m_tree->invisibleRootItem();
    QTreeWidgetItem*& item = m_scopes[scope];
    if (item)
        return item;
    int const dot = scope.lastIndexOf('.', scope.size() - 2);
    auto* const made =
        new QTreeWidgetItem({QString::fromUtf8(scope.mid(dot + 1, scope.size() - dot - 2))});
    made->setCheckState(NameColumn, Qt::Unchecked);
    item = made; // before the table grows
    scopeItem(scope.left(dot + 1))->addChild(made);
    made->setExpanded(m_nets->size() < MostUnfolded || !made->parent());
    return made;
}

void NetTree::showNets(std::vector<Dump::VcdVariable> const& nets)
{
    QSignalBlocker const blocker(m_tree);
    m_tree->clear();
    m_scopes.clear();
    m_items.clear();
    m_nets = &nets;
    for (Dump::VcdVariable const& net : nets) {
        auto* const item =
            new QTreeWidgetItem({QString::fromUtf8(net.name), QString::number(net.width)});
        if (net.isBits && net.width > 0)
            item->setCheckState(NameColumn, Qt::Unchecked);
        else
            item->setDisabled(true); // a real has no bits to capture
        item->setTextAlignment(WidthColumn, Qt::AlignRight);
        item->setTextAlignment(ChangesColumn, Qt::AlignRight);
        scopeItem(net.scope)->addChild(item);
        m_items.push_back(item);
    }
    filter(m_filter->text());
    Q_EMIT choiceChanged();
}

void NetTree::showChanges(std::vector<Dump::Net> const& nets)
{
    QSignalBlocker const blocker(m_tree);
    for (size_t i = 0; i < m_items.size() && i < nets.size(); ++i)
        m_items[i]->setText(ChangesColumn, QString::number(nets[i].changes));
    m_tree->viewport()->update();
}

void NetTree::filter(QString const& text)
{
    Dump::NetPattern const pattern(text);
    for (QTreeWidgetItem* const scope : qAsConst(m_scopes))
        scope->setHidden(true);
    for (size_t i = 0; i < m_items.size(); ++i) {
        bool const shown = text.isEmpty() || isShown((*m_nets)[i], text, pattern);
        m_items[i]->setHidden(!shown);
        if (!shown)
            continue;
        for (QTreeWidgetItem* at = m_items[i]->parent(); at && at->isHidden(); at = at->parent())
            at->setHidden(false);
    }
}

/// Whatever can be chosen below an item, or the item itself, as far as the filter shows it.
void NetTree::choose(QTreeWidgetItem* item, Qt::CheckState state)
{
    if (item->isHidden() || item->isDisabled())
        return;
    if (!isScope(item))
        item->setCheckState(NameColumn, state);
    for (int i = 0; i < item->childCount(); ++i)
        choose(item->child(i), state);
}

/// Gives scopes the box that their nets make.
void NetTree::followBelow(QTreeWidgetItem* scope)
{
    bool hasChosen = false;
    bool hasOthers = false;
    for (int i = 0; i < scope->childCount(); ++i) {
        QTreeWidgetItem* const child = scope->child(i);
        if (child->isDisabled())
            continue;
        if (isScope(child))
            followBelow(child);
        Qt::CheckState const state = child->checkState(NameColumn);
        hasChosen |= state != Qt::Unchecked;
        hasOthers |= state != Qt::Checked;
    }
    scope->setCheckState(NameColumn, !hasChosen  ? Qt::Unchecked
                                     : hasOthers ? Qt::PartiallyChecked
                                                 : Qt::Checked);
}

void NetTree::onItemChanged(QTreeWidgetItem* item, int column)
{
    if (column != NameColumn)
        return;
    {
        QSignalBlocker const blocker(m_tree);
        if (isScope(item))
            choose(item, item->checkState(NameColumn));
        for (int i = 0; i < m_tree->topLevelItemCount(); ++i)
            if (isScope(m_tree->topLevelItem(i)))
                followBelow(m_tree->topLevelItem(i));
    }
    m_tree->viewport()->update();
    Q_EMIT choiceChanged();
}

QSet<QByteArray> NetTree::chosen() const
{
    QSet<QByteArray> paths;
    for (size_t i = 0; i < m_items.size(); ++i)
        if (m_items[i]->checkState(NameColumn) == Qt::Checked)
            paths << (*m_nets)[i].path;
    return paths;
}

QString NetTree::chosenScope() const
{
    QByteArray common;
    bool isFirst = true;
    for (size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i]->checkState(NameColumn) != Qt::Checked)
            continue;
        QByteArray const& scope = (*m_nets)[i].scope;
        if (isFirst)
            common = scope;
        isFirst = false;
        while (!scope.startsWith(common))
            common = common.left(common.lastIndexOf('.', -2) + 1);
    }
    return QString::fromUtf8(common.left(common.size() - 1));
}
