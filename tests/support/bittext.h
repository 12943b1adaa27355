#pragma once

#include "dump/sampletable.h"
#include "model/bits.h"

#include <QByteArray>

/// Bits and samples as texts of '0' and '1', first on the wire (or first signal) first.
inline QBitArray bits(QByteArray const& text)
{
    return VEK::str2bit(QString::fromLatin1(text));
}

inline QByteArray text(QBitArray const& bits)
{
    return VEK::bit2str(bits).toLatin1();
}

inline QByteArray number(quint64 value, int size)
{
    return QByteArray::number(value, 2).rightJustified(size, '0').right(size);
}

inline QByteArrayList rowTexts(VEK::Dump::SampleTable const& table)
{
    QByteArrayList rows;
    for (qint64 k = 0; k < table.rowCount(); ++k) {
        rows.append(QByteArray());
        for (int i = 0; i < table.signalCount(); ++i)
            rows.last() += char('0' + table.bit(k, i));
    }
    return rows;
}
