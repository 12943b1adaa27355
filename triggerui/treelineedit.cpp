#include "triggerui/treelineedit.h"

#include <QFont>
#include <QKeyEvent>
#include <QTreeWidget>

namespace VEK {

namespace {

constexpr int ValueColumn = 1;

void nameItem(QTreeWidgetItem* row, SignalItem const& item)
{
    QString const& shown = item.text.isEmpty() ? item.name : item.text;
    row->setText(0, shown);
    row->setToolTip(0, shown);
}

} // namespace

TreeLineEdit::TreeLineEdit(QWidget* parent) : QLineEdit(parent)
{
    QFont font(QStringLiteral("Monospace"));
    font.setStyleHint(QFont::Monospace);
    setFont(font);
    setContextMenuPolicy(Qt::CustomContextMenu);
}

TreeLineEdit* TreeLineEdit::inItem(QTreeWidgetItem* item)
{
    auto* const edit = new TreeLineEdit;
    edit->m_item = item;
    item->treeWidget()->setItemWidget(item, ValueColumn, edit);
    return edit;
}

TreeLineEdit* TreeLineEdit::ofItem(QTreeWidgetItem* item)
{
    return static_cast<TreeLineEdit*>(item->treeWidget()->itemWidget(item, ValueColumn));
}

void TreeLineEdit::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    if (m_item)
        m_item->treeWidget()->scrollToItem(m_item);
}

void TreeLineEdit::keyPressEvent(QKeyEvent* event)
{
    bool const unfolds = event->text() == QLatin1String("+");
    TreeLineEdit* const top = bus ? bus : this;
    if (!top->m_item || (!unfolds && event->text() != QLatin1String("-"))) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    top->setFocus(); // a bit's editor goes out of sight
    top->m_item->setExpanded(unfolds);
}

QTreeWidgetItem* Signal2treeItem(QTreeWidget* tree, SignalItem const& item)
{
    auto* const row = new QTreeWidgetItem;
    nameItem(row, item);
    QList<QTreeWidgetItem*> members;
    for (SignalItem const& member : item.signalList) {
        members << new QTreeWidgetItem;
        nameItem(members.last(), member);
    }
    row->addChildren(members);
    tree->addTopLevelItem(row);
    return row;
}

} // namespace VEK
