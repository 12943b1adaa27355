#pragma once

#include <QRandomGenerator>
#include <QStringList>

/// That many random characters "0" and "1".
inline QString randomBits(int count)
{
    QRandomGenerator random{quint32(count)};
    QString bits(count, '0');
    for (QChar& bit : bits)
        bit = random.bounded(2) ? '1' : '0';
    return bits;
}

/// The rows of a reply, one at a time: `width` bits from the end on and every `step` bits before
/// it, up to `amount`, and with zeros before the first bit.
inline QStringList plainRows(QString const& stream, int width, int step, int amount)
{
    QString const padded = QString(width, '0') + stream;
    QStringList rows;
    for (int end = stream.size(); rows.size() < amount; end -= step) {
        rows.append(padded.mid(end, width));
        if (end <= step)
            break;
    }
    return rows;
}

/// The samples of each signal, whose first is this one of a row, from that row on round the ring.
inline QStringList plainColumns(QStringList const& rows, int signalCount, int firstSignal,
                                int firstRow)
{
    QStringList columns;
    for (int j = 0; j < signalCount; ++j) {
        QString column;
        for (int i = 0; i < rows.size(); ++i)
            column += rows.at((firstRow + i) % rows.size()).at(firstSignal + j);
        columns.append(column);
    }
    return columns;
}
