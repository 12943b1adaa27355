#pragma once

#include "wavemonitor/signalelement.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/tree/layoutnode.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "wavemonitor/waveview.h"

#include <QScrollBar>
#include <QtTest>

#include <memory>

/// A shown monitor with a capture of 200 samples. Rows: bus "data[3:0]" of the ids 0 to 3 (a
/// counter), "top/clk" (id 4), "top/ready" (id 5, one pulse at 100 to 104), a divider, "top/idle"
/// (id 6, all 0).
struct MonitorRig
{
    static constexpr int Samples = 200;

    explicit MonitorRig(quint64 domain = 7)
        : widget(std::make_unique<WaveMonitor::WaveMonitorWidget>(domain))
    {
        WaveMonitor::BusData bus;
        bus.name = QStringLiteral("data[3:0]");
        for (int i = 0; i < 4; ++i)
            bus.signalDataList.append(signal(i, QStringLiteral("top/data[%1]").arg(3 - i),
                                             [i](int t) { return (t / 10 >> (3 - i) & 1) != 0; }));
        widget->addData(bus);
        widget->addData(signal(4, QStringLiteral("top/clk"), [](int t) { return t % 2 != 0; }));
        widget->addData(
            signal(5, QStringLiteral("top/ready"), [](int t) { return t >= 100 && t < 105; }));
        widget->addData(signal(6, QStringLiteral("top/idle"), [](int) { return false; }));
        model()->addRawDivider(0, row(3));
        widget->setTriggerPosition(50);
        widget->resize(1000, 400);
        widget->show();
        settle();
    }

    template <typename Value>
    static WaveMonitor::SignalData signal(int id, QString const& name, Value value)
    {
        QBitArray bits(Samples);
        for (int t = 0; t < Samples; ++t)
            bits.setBit(t, value(t));
        return {id, name, QString(), bits};
    }

    static void settle() { QCoreApplication::processEvents(); }

    WaveMonitor::SignalTreeModel* model() const { return widget->model(); }
    WaveMonitor::SignalTreeView* tree() const { return widget->treeView(); }
    WaveMonitor::WaveView* waves() const { return widget->waveView(); }

    QModelIndex row(int row, int member = -1) const
    {
        QModelIndex const top = model()->index(row, 0);
        return member < 0 ? top : model()->index(member, 0, top);
    }

    QString text(QModelIndex const& index) const { return index.data().toString(); }

    /// The names of all rows, the members of a bus in parentheses.
    QString rows() const
    {
        QStringList texts;
        for (int i = 0; i < model()->rowCount(); ++i) {
            QStringList members;
            for (int k = 0; k < model()->rowCount(row(i)); ++k)
                members.append(text(row(i, k)));
            texts.append(text(row(i)) +
                         (members.isEmpty() ? QString() : "(" + members.join(' ') + ")"));
        }
        return texts.join(' ');
    }

    void select(QList<QModelIndex> const& indexes) const
    {
        tree()->clearSelection();
        for (QModelIndex const& index : indexes)
            tree()->selectionModel()->select(index, QItemSelectionModel::Select |
                                                        QItemSelectionModel::Rows);
    }

    QPoint centre(QModelIndex const& index) const { return tree()->visualRect(index).center(); }

    std::unique_ptr<WaveMonitor::WaveMonitorWidget> widget;
};
