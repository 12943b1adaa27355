#pragma once

#include "model/capturecore.h"

#include "jtag/protocol.h"

#include <QBitArray>
#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace VEK::Cli {

/// A request of a run, taken apart.
struct ImageRow
{
    QString request;      ///< OPRATE, or CMD where it has none.
    QBitArray bits;       ///< The word, as it is shifted; empty when none is.
    int size = -1;        ///< Bits that are read; -1 when none are.
    int core = -1;        ///< Index of the core that the chain is turned to; -1 before that.
    int address = -1;     ///< Of the register; -1 for a word without one.
    QString registerName; ///< Such as "M1 A"; empty without an address.
    int headBits = 0;     ///< Of the word, in front of the data field.
    QString meaning;
    QByteArray frame; ///< As it is on the wire, length field included.
};

/// Takes the requests of a run apart, in their order.
class Dialogue
{
public:
    /// `cores` must outlive this object; empty for a lite core.
    explicit Dialogue(QList<SxCore*> const& cores) : m_cores(cores) {}

    ImageRow take(CmdPack const& request, QByteArray const& frame);

private:
    void takeWord(ImageRow& row);
    void describeWrite(ImageRow& row, quint64 number);
    void describeUnit(ImageRow& row, quint64 number);
    void describeTable(ImageRow& row, quint64 combination);
    void describeRead(CmdPack const& request, ImageRow& row);
    void selectCore(ImageRow& row);

    QList<SxCore*> m_cores;
    SxCore const* m_core = nullptr; ///< That the chain is turned to.
    int m_sections = 0;             ///< Of the window that is read.
};

} // namespace VEK::Cli
