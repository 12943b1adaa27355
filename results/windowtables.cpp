#include "results/windowtables.h"

#include "results/tablerows.h"

#include <QRegularExpression>

#include <algorithm>

namespace VEK {
namespace {

using std::string_view;

constexpr string_view TimeTitle = "time unit: ";

QString textOf(string_view bytes)
{
    return QString::fromUtf8(bytes.data(), int(bytes.size()));
}

bool startsWith(string_view line, string_view head)
{
    return line.substr(0, head.size()) == head;
}

QStringList split(string_view line, string_view separator)
{
    QStringList pieces;
    for (std::size_t at = 0; at != string_view::npos;) {
        std::size_t const end = line.find(separator, at);
        pieces << textOf(line.substr(at, end - at));
        at = end == string_view::npos ? end : end + separator.size();
    }
    return pieces;
}

string_view withoutReturn(string_view line)
{
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

SignalItem itemOf(QString const& name)
{
    SignalItem item;
    item.name = name;
    item.captureEnable = true;
    return item;
}

QStringList namesOf(QList<SignalItem> const& items)
{
    QStringList names;
    for (SignalItem const& item : items)
        names << item.name;
    return names;
}

bool noCapture(QString& error)
{
    error = QStringLiteral("this is no table of a capture");
    return false;
}

/// "name =, member, member, format,": the text of a format may be empty.
SignalItem groupOf(string_view line)
{
    constexpr string_view Mark = " =, ";
    std::size_t const at = line.find(Mark);
    if (at == string_view::npos)
        return {};
    QStringList members = split(line.substr(at + Mark.size()), ", ");
    members.removeLast();
    SignalItem bus = itemOf(textOf(line.substr(0, at)));
    for (QString const& member : qAsConst(members))
        bus.signalList << itemOf(member);
    return bus;
}

/// What stands in front of the rows of a CSV file.
struct CsvHead
{
    QList<SignalItem> groups;
    QStringList titles; ///< The time's first.
    qint64 lines = 0;

    bool read(LineReader& lines_, QString& error)
    {
        string_view line;
        while (titles.isEmpty() && lines_.next(line)) {
            ++lines;
            line = withoutReturn(line);
            bool const isTitle = startsWith(line, TimeTitle);
            if (lines == 1 && line != "Groups:" && line != "Data:" && !isTitle)
                return noCapture(error);
            if (isTitle) {
                if (line.back() == ',')
                    line.remove_suffix(1);
                titles = split(line.substr(TimeTitle.size()), ", ");
            } else if (line != "Groups:" && line != "Data:" && !line.empty()) {
                groups << groupOf(line);
            }
        }
        bool const isWhole = titles.size() > 1 && lines_.next(line) && startsWith(line, "0, X");
        ++lines;
        return isWhole || noCapture(error);
    }
};

/// A column of a bus's values is known by the members behind it: its title is the display name.
void arrange(CsvHead const& head, CapturedWindow& window, std::vector<TableColumn>& columns)
{
    for (int i = 1, nextBus = 0; i < head.titles.size(); ++i) {
        SignalItem item = itemOf(head.titles.at(i));
        SignalItem const bus = head.groups.value(nextBus);
        int const members = bus.signalList.size();
        if (bus.isBus() && head.titles.mid(i + 1, members) == namesOf(bus.signalList)) {
            TableColumn column;
            column.kind = TableColumn::Passed;
            column.quotedLength = std::size_t(2 + (members + 7) / 8);
            columns.push_back(column);
            if (item.name != bus.name)
                item.text = item.name;
            item.name = bus.name;
            item.signalList = bus.signalList;
            ++nextBus;
            i += members;
        }
        columns.resize(columns.size() + std::size_t(std::max(1, item.signalList.size())));
        window.layout << item;
    }
}

/// Cuts a line of the plain profile at its commas; names may stand in quotes.
QStringList splitQuoted(string_view line)
{
    QStringList cells;
    QByteArray cell;
    bool isQuoted = false;
    for (std::size_t i = 0; i <= line.size(); ++i) {
        char const c = i < line.size() ? line[i] : ',';
        if (isQuoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            cell += line[++i];
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == ',' && (!isQuoted || i == line.size())) {
            cells << QString::fromUtf8(cell);
            cell.clear();
        } else {
            cell += c;
        }
    }
    return cells;
}

SignalItem busOf(QString const& name, int width)
{
    SignalItem bus = itemOf(name);
    for (int i = width; width > 1 && i-- > 0;)
        bus.signalList << itemOf(name + QStringLiteral("[%1]").arg(i));
    return bus;
}

/// How many of the names count down or up by one in brackets, as the nets of one bus do.
int runOfNames(QStringList const& names)
{
    static QRegularExpression const form(QStringLiteral("\\A(.*)\\[(\\d{1,9})\\]\\z"));
    QRegularExpressionMatch const first = form.match(names.value(0));
    int length = first.hasMatch() ? 1 : 0;
    int step = 0;
    for (int before = first.captured(2).toInt(); length > 0 && length < names.size(); ++length) {
        QRegularExpressionMatch const match = form.match(names.at(length));
        int const number = match.captured(2).toInt();
        step = length == 1 ? number - before : step;
        if (match.captured(1) != first.captured(1) || number - before != step || step * step != 1)
            break;
        before = number;
    }
    return length;
}

/// Numbers of the columns from the first on which, as one value, are what `digits` (the highest
/// bit first) says in all rows.
QList<int> fittingWidths(QList<QBitArray> const& digits, QList<QBitArray> const& columns)
{
    QList<int> widths;
    for (int width = std::max(1, digits.size() - 3); width <= digits.size(); ++width) {
        QList<QBitArray> value = columns.mid(0, width);
        while (value.size() < digits.size())
            value.prepend(QBitArray(digits.first().size()));
        if (columns.size() >= width && value == digits)
            widths << width;
    }
    return widths;
}

/// The columns of a PRN file, whose buses are known by their values.
struct PrnColumns
{
    QStringList titles; ///< Without the time's.
    QList<QBitArray> packed;
    std::vector<TableColumn> columns;

    /// The bits of a run of single columns from `at` on, up to `limit` of them.
    QList<QBitArray> bitsFrom(int at, int limit) const
    {
        QList<QBitArray> bits;
        for (; at < titles.size() && bits.size() < limit && isBit(at); ++at)
            bits << packed.at(columns[std::size_t(at)].first);
        return bits;
    }
    bool isBit(int at) const { return columns[std::size_t(at)].kind == TableColumn::Bit; }

    bool arrange(CapturedWindow& window, QString& error) const
    {
        for (int i = 0; i < titles.size(); ++i) {
            if (isBit(i)) {
                window.layout << itemOf(titles.at(i).mid(1));
                window.samples << bitsFrom(i, 1);
                continue;
            }
            TableColumn const& column = columns[std::size_t(i)];
            QList<QBitArray> const members = bitsFrom(i + 1, column.width);
            QList<int> const widths =
                fittingWidths(packed.mid(column.first, column.width), members);
            if (widths.isEmpty()) {
                error = QStringLiteral("line 1: the values of \"%1\" are not those of the columns "
                                       "behind it")
                            .arg(titles.at(i));
                return false;
            }
            int const named = runOfNames(titles.mid(i + 1, members.size()));
            int const width = widths.contains(named) ? named : widths.last();
            SignalItem bus = itemOf(titles.at(i));
            for (int member = 0; member < width; ++member)
                bus.signalList << itemOf(titles.at(i + 1 + member).mid(1));
            window.layout << bus;
            window.samples << members.mid(0, width);
            i += width;
        }
        return true;
    }
};

} // namespace

bool readCsvWindow(QIODevice& device, CapturedWindow& window, QString& error)
{
    LineReader lines(device);
    CsvHead head;
    std::vector<TableColumn> columns;
    if (!head.read(lines, error))
        return false;
    arrange(head, window, columns);
    TableRows rows(lines, {", ", ",", false, true}, columns, head.lines);
    if (!rows.read(error))
        return false;
    window.samples = rows.take();
    window.timeUnit = head.titles.first();
    window.timeStep = rows.step();
    return true;
}

bool readPlainCsvWindow(QIODevice& device, CapturedWindow& window, QString& error)
{
    LineReader lines(device);
    string_view line;
    QStringList const titles = lines.next(line) ? splitQuoted(withoutReturn(line)) : QStringList();
    QString const time = titles.value(0);
    bool const isTimed = time.startsWith(QLatin1String("time_"));
    if (titles.size() < 2 || (time != QLatin1String("sample") && !isTimed))
        return noCapture(error);
    TableColumn number;
    number.kind = TableColumn::Number;
    std::vector<TableColumn> const columns(std::size_t(titles.size() - 1), number);
    TableRows rows(lines, {",", "", true, !isTimed}, columns, 1);
    if (!rows.read(error))
        return false;
    if (isTimed)
        window.clock.setPeriod(rows.step(), time.mid(5));
    QList<QBitArray> const packed = rows.take();
    for (int i = 1; i < titles.size(); ++i) {
        TableColumn const& column = rows.columns()[std::size_t(i - 1)];
        QList<QBitArray> bits = packed.mid(column.first, column.width);
        while (bits.size() > 1 && bits.first().count(true) == 0)
            bits.removeFirst();
        window.layout << busOf(titles.at(i), bits.size());
        window.samples << bits;
    }
    return true;
}

bool readPrnWindow(QIODevice& device, CapturedWindow& window, QString& error)
{
    LineReader lines(device);
    string_view line;
    if (!lines.next(line) || !startsWith(line, TimeTitle))
        return noCapture(error);
    PrnColumns table;
    table.titles = split(withoutReturn(line).substr(TimeTitle.size()), "\t");
    window.timeUnit = table.titles.takeFirst();
    for (QString const& title : qAsConst(table.titles)) {
        TableColumn column;
        if (!title.startsWith(QLatin1Char('/')))
            column.kind = TableColumn::Hexadecimal;
        table.columns.push_back(column);
    }
    TableRows rows(lines, {"\t", " ", true, true}, table.columns, 1);
    if (!rows.read(error))
        return false;
    window.timeStep = rows.step();
    table.packed = rows.take();
    table.columns = rows.columns();
    return table.arrange(window, error);
}

bool readRawWindow(QIODevice& device, QByteArray const& channels, CapturedWindow& window,
                   QString& error)
{
    QByteArrayList const nets = channels.trimmed().split(',');
    for (int i = 0; i < nets.size(); ++i) {
        QByteArray const number = QByteArray::number(i) + '=';
        if (!nets.at(i).startsWith(number) || nets.at(i).size() == number.size()) {
            error = QStringLiteral("its channels are not of the form \"0=name,1=name\"");
            return false;
        }
        window.layout << itemOf(QString::fromUtf8(nets.at(i).mid(number.size())));
    }
    PackedRows rows(nets.size());
    int const bytes = (nets.size() + 7) / 8;
    QByteArray sample = device.read(bytes);
    for (; sample.size() == bytes && rows.count() >= 0; sample = device.read(bytes)) {
        for (int i = 0; i < bytes; ++i)
            rows.row()[i / 8] |= quint64(static_cast<unsigned char>(sample.at(i))) << (i % 8 * 8);
        if (!rows.next())
            break;
    }
    bool const isWhole = sample.isEmpty() && rows.count() > 0;
    if (!isWhole)
        error =
            QStringLiteral("its size is not that of whole samples of %1 channels").arg(nets.size());
    window.samples = rows.take();
    return isWhole;
}

} // namespace VEK
