#pragma once

#include "results/linereader.h"
#include "results/packedrows.h"

#include <QString>

#include <memory>
#include <string_view>
#include <vector>

namespace VEK {

/// A column of a table.
struct TableColumn
{
    enum Kind {
        Bit,         ///< One character, "0" or "1".
        Hexadecimal, ///< As many digits in each row.
        Number,      ///< Decimal, up to 64 bits, or hexadecimal behind "0x".
        Passed       ///< Not looked at.
    };

    Kind kind = Bit;
    std::size_t quotedLength = 0; ///< Of the values of a `Passed` one that stand in quotes.
    int first = 0;                ///< Place of its highest bit among the packed ones.
    int width = 1;                ///< Bits that are kept; those of values in its first row.
    std::size_t runEnd = 0;       ///< From a `Bit` on, the next column that is none.
};

/// Reads the rows of a table: a number that goes up evenly, and the columns' values.
class TableRows
{
public:
    struct Form
    {
        std::string_view separator;
        std::string_view end;    ///< Stands behind the last value; may be missing there.
        bool isFromZero = false; ///< The first row's number is 0, else it is the step.
        bool isEven = true;      ///< The numbers go up by the same step.
    };

    TableRows(LineReader& lines, Form const& form, std::vector<TableColumn> const& columns,
              qint64 linesBefore)
        : m_lines(lines), m_form(form), m_columns(columns), m_line(linesBefore)
    {}

    /// Reads to the end. False, with an error that names the line.
    bool read(QString& error);

    std::vector<TableColumn> const& columns() const { return m_columns; }
    /// What the number goes up by; 0 when it does not go up evenly, or in a single row from zero.
    quint64 step() const { return m_isUneven ? 0 : m_step; }
    QList<QBitArray> take() { return m_rows->take(); }

private:
    bool readRow(std::string_view line);
    bool readNumber(std::string_view line, std::size_t& at);
    void measure(std::string_view line, std::size_t at);
    bool readValue(TableColumn const& column, std::string_view value);
    std::size_t valueEnd(std::string_view line, std::size_t at, TableColumn const& column) const;
    bool readBits(std::string_view line, std::size_t& at, std::size_t& column);
    bool readHexadecimal(TableColumn const& column, std::string_view digits);
    bool readDecimal(TableColumn const& column, std::string_view digits);
    void setBit(int place);
    bool fail(QString const& what);

    LineReader& m_lines;
    Form m_form;
    std::vector<TableColumn> m_columns;
    std::unique_ptr<PackedRows> m_rows;
    qint64 m_line;
    quint64 m_before = 0; ///< The number of the row before.
    quint64 m_step = 0;
    bool m_isUneven = false;
    QString m_error;
};

} // namespace VEK
