#pragma once

#include "results/packedtext.h"
#include "results/windowreader.h"

#include <QHash>

#include <vector>

namespace VEK {

class OutputBuffer;

/// What stands around the values of a row.
struct RowLayout
{
    QByteArray separator; ///< In front of every value; at most `MaxSeparator` bytes.
    QByteArray end;       ///< Behind the last value.
    qint64 firstTime = 0;
    qint64 timeStep = 1;

    static constexpr int MaxSeparator = 8;
};

/// The columns of an export as rows of text, made ready for many rows: the samples are packed once,
/// and values are written straight into the output wherever a column has nothing odd in it.
class TextColumns
{
public:
    /// Packs the samples of columns from `signalDataFromDom`. They are not needed afterwards.
    explicit TextColumns(QList<SignalData*> const& columns);

    /// Samples of the first column, 0 without columns.
    int rowCount() const { return m_rowCount; }

    /// A line for each row: the time, and every column's value. A column that has no sample there
    /// keeps its separator. Stops when the output fails.
    void writeRows(RowLayout const& layout, OutputBuffer& out);

private:
    struct Column
    {
        enum Kind {
            Bit,       ///< A signal of "0" and "1".
            Character, ///< A signal that holds other characters.
            Number,    ///< A bus whose values are written without the formatter.
            Value      ///< Any other bus.
        };

        Kind kind = Bit;
        WaveMonitor::DataFormat::Type radix = WaveMonitor::DataFormat::Binary; ///< Of a `Number`.
        std::vector<int> sources; ///< Places in `m_texts`; one, or a bus's members in order.
        int size = 0;             ///< Rows that have a value.
        WaveMonitor::DataFormatter formatter{WaveMonitor::DataFormat::Hexadecimal};

        // For the block of rows at hand:
        int blockRows = 0;          ///< Rows that have a value.
        int run = 0;                ///< Columns from here on that are single bits in all its rows.
        std::vector<quint64> words; ///< Samples, one word for each source.

        QByteArray lastBits; ///< The value that was formatted last, with its text: captures repeat.
        QByteArray lastText;

        int width() const { return int(words.size()); }
    };

    int addText(QString const& text);
    void addSignal(_Signal const& signal);
    void addBus(_Bus const& bus);
    void addColumn(Column&& column);
    void loadBlock(int firstRow, int rows);
    char* writeRun(char* place, std::size_t first, int row, char const* separator, int gap) const;
    void writeValue(Column& column, int firstRow, int row, char* place, OutputBuffer& out) const;
    static QByteArray const& formatted(Column& column, int row);

    QHash<QChar const*, int> m_known; ///< Places of texts: members stand in a bus and alone.
    std::vector<PackedText> m_texts;
    std::vector<Column> m_columns;
    std::vector<quint64> m_bits; ///< The block's samples of every column's first source.
    int m_rowCount = 0;
};

} // namespace VEK
