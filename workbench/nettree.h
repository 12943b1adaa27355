#pragma once

#include "dump/netlist.h"

#include <QSet>
#include <QWidget>

class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

/// The nets of a dump by their scopes, with a line that filters them and a box for each to choose
/// it. The box of a scope chooses those below it that the filter shows.
class NetTree : public QWidget
{
    Q_OBJECT

public:
    explicit NetTree(QWidget* parent = nullptr);

    /// Shows these instead; none is chosen. They must outlive what is shown.
    void showNets(std::vector<VEK::Dump::VcdVariable> const& nets);
    /// How often each of the nets changes, in the same order.
    void showChanges(std::vector<VEK::Dump::Net> const& nets);

    /// By `VcdVariable::path`.
    QSet<QByteArray> chosen() const;
    /// The innermost scope that all the chosen nets lie in; empty when there is none.
    QString chosenScope() const;

Q_SIGNALS:
    void choiceChanged();

private:
    enum Column { NameColumn, WidthColumn, ChangesColumn, ColumnCount };

    QTreeWidgetItem* scopeItem(QByteArray const& scope);
    void filter(QString const& text);
    void onItemChanged(QTreeWidgetItem* item, int column);
    static void choose(QTreeWidgetItem* item, Qt::CheckState state);
    static void followBelow(QTreeWidgetItem* scope);

    std::vector<VEK::Dump::VcdVariable> const* m_nets = nullptr;
    std::vector<QTreeWidgetItem*> m_items; ///< Of the nets, in their order.
    QHash<QByteArray, QTreeWidgetItem*> m_scopes;
    QLineEdit* m_filter;
    QTreeWidget* m_tree;
};
