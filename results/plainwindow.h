#pragma once

#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QBitArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace VEK {

/// One window as the plain profiles write it: values, not the rows of a viewer.
struct PlainWindow
{
    /// A signal, or a bus as one value.
    struct Column
    {
        QString name;          ///< Display name, else the net's.
        QList<QBitArray> bits; ///< One bit a sample each, the most significant first; not empty.
        QStringList bitNames;  ///< Of the nets, as many.
    };

    QString module;
    int trigger = 0; ///< Sample of the trigger.
    int samples = 0;
    QList<Column> columns;
};

/// From the core's list of captured signals and buses, and the signals of its flat list.
PlainWindow plainWindow(QString const& module, int trigger, QList<SignalItem> const& layout,
                        QList<WaveMonitor::SignalData> const& decoded);

} // namespace VEK
