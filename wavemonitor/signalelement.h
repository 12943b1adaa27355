#pragma once

#include "results/signaldata.h"

#include <QBitArray>
#include <QList>
#include <QMap>
#include <QString>

namespace WaveMonitor {

/// The samples of one captured signal, and what it is called; its rows refer to it by id.
struct SignalElement
{
    int id = -1;    ///< Number of the captured signal; -1 until known.
    QString name;   ///< Full hierarchical name with "/" as separator. Never edited.
    QString text;   ///< Display text; the name is shown while it is empty.
    QBitArray data; ///< One bit a sample, the oldest at 0; windows lie one after the other.
};

/// A bus as it is handed to a monitor, the most significant member first.
struct BusData
{
    QString name;
    QString text;
    QList<SignalData> signalDataList;
};

/// "0" and "1", bit 0 first.
QString bits2String(QBitArray const& bits);

/// The way back: as many bits as the text has characters, a bit is set where the character is "1".
QBitArray string2Bits(QString const& text);

} // namespace WaveMonitor

namespace VEK {

class SxCore;
class SXCore_Lite;

/// Copies names and display texts of a monitor's signals to the captured signals of a core, whose
/// flat positions are the map's keys. Returns false and changes nothing unless the map has as many
/// entries as the core captures bits; a position without entry keeps its names. The list of all
/// signals stays as it is.
bool writeSignalItemFromSignalElements(SxCore* core,
                                       QMap<int, WaveMonitor::SignalElement*> const& elements);
bool writeSignalItemFromSignalElements(SXCore_Lite* core,
                                       QMap<int, WaveMonitor::SignalElement*> const& elements);

} // namespace VEK
