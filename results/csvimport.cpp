#include "results/csvimport.h"

#include "results/linereader.h"

#include <QFile>
#include <QHash>
#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

namespace VEK {
namespace {

using std::string_view;

constexpr string_view Separator = ", ";
constexpr int RowsInWord = 64;

QString textOf(string_view bytes)
{
    return QString::fromUtf8(bytes.data(), int(bytes.size()));
}

/// Without the blanks and the comma that close a line. Blanks in front belong to a name.
string_view withoutEnd(string_view line)
{
    std::size_t const last = line.find_last_not_of(" \t\r\n\v\f");
    line = line.substr(0, last == string_view::npos ? 0 : last + 1);
    if (!line.empty() && line.back() == ',')
        line.remove_suffix(1);
    return line;
}

bool startsWith(string_view line, string_view head)
{
    return line.substr(0, head.size()) == head;
}

std::vector<string_view> split(string_view line)
{
    std::vector<string_view> pieces;
    for (std::size_t at = 0; at != string_view::npos;) {
        std::size_t const end = line.find(Separator, at);
        pieces.push_back(line.substr(at, end - at));
        at = end == string_view::npos ? end : end + Separator.size();
    }
    return pieces;
}

/// One column's bits, 64 rows a word; words at the end that are 0 are left out.
struct Column
{
    std::size_t quotedLength = 0; ///< Of its values if it is a bus in ASCII, else 0.
    quint64 pending = 0;          ///< The word at hand.
    std::vector<quint64> words;

    void closeWord(std::size_t place)
    {
        if (pending) {
            words.resize(place + 1);
            words[place] = pending;
        }
        pending = 0;
    }
};

/// The contents of a file, line by line.
class Table
{
public:
    void addGroup(string_view line);
    void setTitles(string_view line);
    bool hasTitles() const { return m_hasTitles; }
    void addRow(string_view line);

    /// Whether the bits of all columns are more than a file of that many bytes can come to: a
    /// written value takes two bytes or more, so only rows without values lead there.
    bool isOversized(qint64 fileBytes) const
    {
        constexpr qint64 AlwaysFine = qint64(1) << 27;
        return m_rows >= std::numeric_limits<int>::max() ||
               m_rows * qint64(m_columns.size()) > AlwaysFine + 8 * fileBytes;
    }

    void moveTo(QList<SignalItem>& signalList, QList<QBitArray>& dataList);

private:
    static SignalItem makeItem(QString const& name);
    static std::size_t valueEnd(string_view line, std::size_t at, Column const& column,
                                bool& noMoreQuotes);
    void closeWords();

    QList<SignalItem> m_items;
    QSet<QString> m_made;                    ///< Names of the buses and of their members.
    QHash<QString, std::size_t> m_busWidths; ///< Members of the first bus of each name.
    std::vector<Column> m_columns;
    qint64 m_rows = 0;
    bool m_hasTitles = false;
};

SignalItem Table::makeItem(QString const& name)
{
    SignalItem item;
    item.name = name;
    item.captureEnable = true;
    return item;
}

void Table::addGroup(string_view line)
{
    constexpr string_view Mark = " =";
    std::vector<string_view> pieces = split(withoutEnd(line));
    string_view name = pieces.front();
    if (name.size() < Mark.size() || name.substr(name.size() - Mark.size()) != Mark)
        return;
    name.remove_suffix(Mark.size());
    if (pieces.size() > 1)
        pieces.pop_back(); // What stands behind the members is the format text.
    bool const isEmpty = pieces.size() == 2 && pieces.back().empty();

    SignalItem bus = makeItem(textOf(name));
    for (std::size_t i = 1; i < pieces.size() && !isEmpty; ++i) {
        bus.signalList.append(makeItem(textOf(pieces[i])));
        m_made.insert(bus.signalList.last().name);
    }
    m_made.insert(bus.name);
    if (!m_busWidths.contains(bus.name))
        m_busWidths.insert(bus.name, std::size_t(bus.signalList.size()));
    m_items.append(bus);
}

void Table::setTitles(string_view line)
{
    std::vector<string_view> const pieces = split(withoutEnd(line));
    m_columns.resize(pieces.size() - 1);
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        QString const name = textOf(pieces[i]);
        if (!m_made.contains(name))
            m_items.append(makeItem(name));
        if (std::size_t const width = m_busWidths.value(name))
            m_columns[i - 1].quotedLength = 2 + (width + 7) / 8;
    }
    m_hasTitles = true;
}

/// The end of the value at `at`. Only ASCII texts can hold a separator: one that is quoted ends
/// where its bus's width says or, for a bus that goes by another name in the title line, at the
/// next quote that closes a value.
std::size_t Table::valueEnd(string_view line, std::size_t at, Column const& column,
                            bool& noMoreQuotes)
{
    auto const closes = [line](std::size_t end) {
        return end == line.size() || (end < line.size() && startsWith(line.substr(end), Separator));
    };
    if (at < line.size() && line[at] == '"') {
        std::size_t const end = at + column.quotedLength;
        if (column.quotedLength && closes(end) && line[end - 1] == '"')
            return end;
        for (std::size_t quote = at; !noMoreQuotes && !closes(at + 1);) {
            quote = line.find('"', quote + 1);
            noMoreQuotes = quote == string_view::npos;
            if (!noMoreQuotes && closes(quote + 1))
                return quote + 1;
        }
    }
    return std::min(line.find(Separator, at), line.size());
}

void Table::addRow(string_view line)
{
    line = withoutEnd(line);
    quint64 const bit = quint64(1) << (m_rows % RowsInWord);
    std::size_t at = line.find(Separator);
    bool noMoreQuotes = false;
    for (Column& column : m_columns) {
        if (at >= line.size())
            break;
        at += Separator.size();
        std::size_t const end = valueEnd(line, at, column, noMoreQuotes);
        string_view const value = line.substr(at, end - at);
        if (value != "0" && value != "X")
            column.pending |= bit;
        at = end;
    }
    if (++m_rows % RowsInWord == 0)
        closeWords();
}

void Table::closeWords()
{
    std::size_t const place = std::size_t((m_rows - 1) / RowsInWord);
    for (Column& column : m_columns)
        column.closeWord(place);
}

void Table::moveTo(QList<SignalItem>& signalList, QList<QBitArray>& dataList)
{
    if (m_rows % RowsInWord)
        closeWords();
    QBitArray const clear(int(m_rows), false);
    std::size_t const words = std::size_t((m_rows + RowsInWord - 1) / RowsInWord);
    for (Column& column : m_columns) {
        if (column.words.empty()) {
            dataList.append(clear);
            continue;
        }
        column.words.resize(words);
        qToLittleEndian<quint64>(column.words.data(), qsizetype(words), column.words.data());
        dataList.append(
            QBitArray::fromBits(reinterpret_cast<char const*>(column.words.data()), int(m_rows)));
        std::vector<quint64>().swap(column.words);
    }
    signalList.append(m_items);
}

} // namespace

bool readCsv(QString const& file, QList<SignalItem>& signalList, QList<QBitArray>& dataList)
{
    QFile source(file);
    if (file.isEmpty() || !source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    LineReader reader(source);
    Table table;
    string_view line;
    for (bool first = true; reader.next(line); first = false) {
        if (first && startsWith(line, "Group:"))
            return false;
        string_view const trimmed = line.substr(0, line.find_last_not_of(" \t\r\n\v\f") + 1);
        if (table.hasTitles())
            table.addRow(line);
        else if (startsWith(line, "time unit:"))
            table.setTitles(line);
        else if (trimmed != "Groups:" && trimmed != "Data:")
            table.addGroup(line);
        if (table.isOversized(reader.bytesRead()))
            return false;
    }
    if (reader.tooLong())
        return false;
    table.moveTo(signalList, dataList);
    return true;
}

} // namespace VEK
