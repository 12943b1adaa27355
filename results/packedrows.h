#pragma once

#include <QBitArray>
#include <QList>

#include <vector>

namespace VEK {

/// Turns samples that come row by row into one bit array a signal.
class PackedRows
{
public:
    explicit PackedRows(int columns);

    /// The row to be filled in: column c is bit c % 64 of word c / 64. It starts with the bits of
    /// 0.
    quint64* row() { return m_row; }

    /// Takes the row. False, and nothing is taken, when all rows together are more than a capture
    /// can be.
    bool next();

    int count() const { return m_count; }

    /// The columns; nothing is left here.
    QList<QBitArray> take();

private:
    static constexpr int Block = 64;

    void closeBlock();

    int m_columns;
    int m_words; ///< In a row.
    int m_count = 0;
    std::vector<quint64> m_block; ///< 64 rows.
    quint64* m_row;
    std::vector<std::vector<quint64>> m_packed; ///< For each column, 64 samples a word.
};

} // namespace VEK
