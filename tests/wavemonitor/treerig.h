#pragma once

#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/tree/modellayout.h"

#include <QAbstractItemModelTester>
#include <QTreeView>
#include <QtTest>

namespace WaveMonitor {

/// Counts what models publish.
class Listener : public QObject
{
    Q_OBJECT

public:
    Listener()
    {
        NotificationCenter::shared()->registerObserver(
            this, QList<NotificationType>{LayoutChanged, SelectionChanged});
    }

    Q_INVOKABLE void handleEvents(Notification* note)
    {
        (note->type == LayoutChanged ? layouts : selections) += 1;
    }

    int layouts = 0;
    int selections = 0;
};

} // namespace WaveMonitor

inline WaveMonitor::SignalData signal(int id, char const* name, char const* bits = "0101")
{
    return {id, QString::fromLatin1(name), QString(),
            WaveMonitor::string2Bits(QString::fromLatin1(bits))};
}

/// A model of a bus "bus[1:0]" (ids 0 and 1) in row 0, the signals s[1], s[0], x (ids 2 to 4) and a
/// divider, in a tree, with the tester that aborts at the first slip.
struct TreeRig
{
    TreeRig() : tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal)
    {
        view.setModel(&model);
        model.setTreeView(&view);
        model.addBus({"bus[1:0]", "", {signal(0, "t/b[1]", "0011"), signal(1, "t/b[0]", "0101")}});
        model.addRawSignal(signal(2, "t/s[1]"));
        model.addRawSignal(signal(3, "t/s[0]"));
        model.addRawSignal(signal(4, "t/x"));
        model.addRawDivider(99, QModelIndex());
        view.expandAll();
        model.updateItems();
        settle();
    }

    void settle()
    {
        QCoreApplication::processEvents();
        listener.layouts = listener.selections = 0;
    }

    QModelIndex at(int row, int member = -1) const
    {
        QModelIndex const top = model.index(row, 0);
        return member < 0 ? top : model.index(member, 0, top);
    }

    QList<QModelIndex> rows(QList<int> const& numbers) const
    {
        QList<QModelIndex> list;
        for (int row : numbers)
            list.append(at(row));
        return list;
    }

    void group(QList<int> const& numbers) { model.groupBus(rows(numbers)); }

    /// Names of all rows, the members of buses in parentheses.
    QString outline(QModelIndex const& parent = QModelIndex()) const
    {
        QStringList names;
        for (int row = 0; row < model.rowCount(parent); ++row) {
            QModelIndex const index = model.index(row, 0, parent);
            names.append(index.data().toString());
            if (model.rowCount(index) > 0)
                names.last() += "(" + outline(index) + ")";
        }
        return names.join(' ');
    }

    QString value(QModelIndex const& index) const
    {
        return index.sibling(index.row(), 1).data().toString();
    }

    WaveMonitor::LayoutNode* node(QModelIndex const& index) const
    {
        return model.layout()->nodeAt(index);
    }

    WaveMonitor::SignalTreeModel model;
    QAbstractItemModelTester tester;
    QTreeView view;
    WaveMonitor::Listener listener;
};
