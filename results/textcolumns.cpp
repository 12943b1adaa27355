#include "results/textcolumns.h"

#include "results/outputbuffer.h"
#include "results/valuetext.h"

#include <algorithm>
#include <cstring>

namespace VEK {
namespace {

using WaveMonitor::DataFormat;

constexpr int MaxNumberBits = 64;
constexpr int MaxCell = 64; ///< Characters of a number in binary, the longest of all.
constexpr int MaxRun = 64;  ///< Columns that are written in one go.

/// Whether values of `width` bits are written without the formatter.
bool isDirect(DataFormat::Type radix, int width)
{
    switch (radix) {
    case DataFormat::Binary:
    case DataFormat::Octal:
    case DataFormat::SignedDecimal:
    case DataFormat::UnsignedDecimal:
    case DataFormat::Hexadecimal:
        return width <= MaxNumberBits;
    default:
        return false;
    }
}

char* writeSigned(char* out, quint64 value, int width)
{
    if (!(value >> (width - 1) & 1))
        return writeDecimal(out, value);
    *out++ = '-';
    return writeDecimal(out, (~value + 1) & (~quint64(0) >> (64 - width)));
}

char* writeNumber(char* out, std::vector<quint64> const& members, int row, DataFormat::Type radix)
{
    quint64 value = 0;
    for (quint64 word : members)
        value = value << 1 | ((word >> row) & 1);
    int const width = int(members.size());
    switch (radix) {
    case DataFormat::Binary:
        return writeBinary(out, value, width);
    case DataFormat::Octal:
        return writeOctal(out, value, (width + 2) / 3);
    case DataFormat::Hexadecimal:
        return writeHex(out, value, (width + 3) / 4);
    case DataFormat::SignedDecimal:
        return writeSigned(out, value, width);
    default:
        return writeDecimal(out, value);
    }
}

char* writeTime(char* out, qint64 time)
{
    if (time < 0)
        *out++ = '-';
    return writeDecimal(out, quint64(time < 0 ? -time : time));
}

} // namespace

TextColumns::TextColumns(QList<SignalData*> const& columns)
{
    m_columns.reserve(std::size_t(columns.size()));
    for (SignalData const* column : columns) {
        if (column->isBus())
            addBus(static_cast<_Bus const&>(*column));
        else
            addSignal(static_cast<_Signal const&>(*column));
    }
    m_rowCount = columns.isEmpty() ? 0 : columns.first()->dataSize();
    m_known.clear(); // Its keys live only as long as the columns that were given.
}

int TextColumns::addText(QString const& text)
{
    auto place = m_known.constFind(text.constData());
    if (place == m_known.constEnd()) {
        place = m_known.insert(text.constData(), int(m_texts.size()));
        m_texts.emplace_back(text);
    }
    return *place;
}

void TextColumns::addSignal(_Signal const& signal)
{
    Column column;
    column.sources = {addText(signal.samples())};
    column.kind =
        m_texts[std::size_t(column.sources.front())].isBinary() ? Column::Bit : Column::Character;
    addColumn(std::move(column));
}

void TextColumns::addBus(_Bus const& bus)
{
    Column column;
    for (QString const& member : bus.members())
        column.sources.push_back(addText(member));
    int const width = bus.members().size();
    column.formatter = bus.formatter;
    // One-bit values are bits in every radix.
    column.radix = width == 1 ? DataFormat::Binary : DataFormat::radix(bus.formatter.formatType());
    column.kind = isDirect(column.radix, width) ? Column::Number : Column::Value;
    addColumn(std::move(column));
}

void TextColumns::addColumn(Column&& column)
{
    auto const sizeOf = [this](int source) { return m_texts[std::size_t(source)].size(); };
    column.words.resize(column.sources.size());
    if (!column.sources.empty())
        column.size = sizeOf(column.sources.front());
    for (int source : column.sources)
        column.size = std::min(column.size, sizeOf(source));
    m_columns.push_back(std::move(column));
}

void TextColumns::loadBlock(int firstRow, int rows)
{
    int const block = firstRow / PackedText::Block;
    int run = 0;
    m_bits.resize(m_columns.size());
    for (std::size_t i = m_columns.size(); i-- > 0;) {
        Column& column = m_columns[i];
        for (std::size_t k = 0; k < column.sources.size(); ++k)
            column.words[k] = m_texts[std::size_t(column.sources[k])].word(block);
        m_bits[i] = column.words.empty() ? 0 : column.words.front();
        column.blockRows = std::clamp(column.size - firstRow, 0, rows);
        bool const inRun = column.kind == Column::Bit && column.blockRows == rows;
        run = inRun ? run % MaxRun + 1 : 0;
        column.run = run;
    }
}

char* TextColumns::writeRun(char* place, std::size_t first, int row, char const* separator,
                            int gap) const
{
    quint64 const* bits = m_bits.data() + first;
    for (int i = 0; i < m_columns[first].run; ++i) {
        std::memcpy(place, separator, RowLayout::MaxSeparator);
        place += gap;
        *place++ = char('0' + ((bits[i] >> row) & 1));
    }
    return place;
}

QByteArray const& TextColumns::formatted(Column& column, int row)
{
    int const width = column.width();
    QByteArray bits((width + 7) / 8, '\0');
    char* bytes = bits.data();
    for (int k = 0; k < width; ++k)
        bytes[k / 8] = char(bytes[k / 8] | ((column.words[std::size_t(k)] >> row) & 1) << (k % 8));
    if (bits != column.lastBits) {
        column.lastText = column.formatter.format(QBitArray::fromBits(bytes, width)).toUtf8();
        column.lastBits = bits;
    }
    return column.lastText;
}

void TextColumns::writeValue(Column& column, int firstRow, int row, char* place,
                             OutputBuffer& out) const
{
    switch (column.kind) {
    case Column::Bit:
        *place++ = char('0' + ((column.words.front() >> row) & 1));
        break;
    case Column::Number:
        place = writeNumber(place, column.words, row, column.radix);
        break;
    case Column::Character: {
        QChar const character = m_texts[std::size_t(column.sources.front())].at(firstRow + row);
        if (character.unicode() < 0x80) {
            *place++ = char(character.unicode());
            break;
        }
        out.commit(place);
        out.append(QString(character).toUtf8());
        return;
    }
    case Column::Value:
        out.commit(place);
        out.append(formatted(column, row));
        return;
    }
    out.commit(place);
}

void TextColumns::writeRows(RowLayout const& layout, OutputBuffer& out)
{
    constexpr int MaxTime = 20;
    constexpr int Room = MaxRun * (RowLayout::MaxSeparator + 1) + MaxCell;
    static_assert(Room <= OutputBuffer::MaxReserve);
    // A copy of fixed size, of which only the gap stays, is a single instruction.
    int const gap = std::min(layout.separator.size(), RowLayout::MaxSeparator);
    char separator[RowLayout::MaxSeparator] = {};
    std::copy_n(layout.separator.begin(), gap, separator);

    qint64 time = layout.firstTime;
    for (int first = 0; first < m_rowCount && !out.failed(); first += PackedText::Block) {
        int const rows = std::min(PackedText::Block, m_rowCount - first);
        loadBlock(first, rows);
        for (int row = 0; row < rows; ++row, time += layout.timeStep) {
            out.commit(writeTime(out.reserve(MaxTime), time));
            for (std::size_t i = 0; i < m_columns.size();) {
                Column& column = m_columns[i];
                char* place = out.reserve(Room);
                if (column.run) {
                    out.commit(writeRun(place, i, row, separator, gap));
                    i += std::size_t(column.run);
                    continue;
                }
                std::memcpy(place, separator, RowLayout::MaxSeparator);
                if (row < column.blockRows)
                    writeValue(column, first, row, place + gap, out);
                else
                    out.commit(place + gap);
                ++i;
            }
            out.append(layout.end);
        }
    }
}

} // namespace VEK
