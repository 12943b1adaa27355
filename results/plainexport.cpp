#include "results/plainexport.h"

#include "results/outputbuffer.h"
#include "results/valuetext.h"

#include <QVector>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace VEK {
namespace {

/// The widest value that is written as a number.
constexpr int NumberBits = 64;

/// The values of a column, sample by sample.
class Values
{
public:
    explicit Values(PlainWindow::Column const& column) : m_bits(column.bits) {}

    int width() const { return m_bits.size(); }
    bool bit(int which, int sample) const
    {
        QBitArray const& bits = m_bits.at(which);
        return sample < bits.size() && bits.testBit(sample);
    }
    /// `count` bits from the `first` on, most significant first.
    quint64 number(int first, int count, int sample) const
    {
        quint64 value = 0;
        for (int i = first; i < first + count; ++i)
            value = value << 1 | quint64(bit(i, sample));
        return value;
    }
    bool isAsBefore(int sample) const
    {
        for (int i = 0; i < width(); ++i) {
            if (bit(i, sample) != bit(i, sample - 1))
                return false;
        }
        return true;
    }

private:
    QList<QBitArray> const m_bits;
};

QVector<Values> valuesOf(PlainWindow const& window)
{
    QVector<Values> values;
    for (PlainWindow::Column const& column : window.columns)
        values.append(Values(column));
    return values;
}

QByteArray quoted(QString const& text)
{
    QByteArray bytes = text.toUtf8();
    bool const needsQuotes = std::any_of(bytes.begin(), bytes.end(), [](char c) {
        return c == ',' || c == '"' || c == '\n' || c == '\r';
    });
    return needsQuotes ? '"' + bytes.replace('"', "\"\"") + '"' : bytes;
}

char* writeCell(char* out, Values const& values, int sample)
{
    int const width = values.width();
    if (width <= NumberBits)
        return writeDecimal(out, values.number(0, width, sample));
    *out++ = '0';
    *out++ = 'x';
    int const head = width % 4 == 0 ? 4 : width % 4;
    out = writeHex(out, values.number(0, head, sample), 1);
    for (int at = head; at < width; at += 4)
        out = writeHex(out, values.number(at, 4, sample), 1);
    return out;
}

int cellRoom(Values const& values)
{
    return 24 + values.width() / 4;
}

/// The code of variable `n`: base 94 in the printable characters.
QByteArray codeOf(int n)
{
    QByteArray code;
    do {
        code.append(char('!' + n % 94));
        n /= 94;
    } while (n > 0);
    return code;
}

/// Names of a dump have no blanks.
QByteArray dumpName(QString const& name)
{
    QByteArray bytes = name.toUtf8();
    for (char& c : bytes)
        c = c == ' ' || c == '\t' || c == '\n' || c == '\r' ? '_' : c;
    return bytes.isEmpty() ? QByteArrayLiteral("_") : bytes;
}

/// A column's place in a dump.
struct Variable
{
    QStringList scopes;
    QByteArray name;
    QByteArray range; ///< Such as " [7:0]"; empty for one bit.
};

/// The number in brackets at a name's end; -1 without one.
int bitNumber(QString const& name)
{
    int const open = name.lastIndexOf(QLatin1Char('['));
    bool ok = false;
    int const number = name.midRef(open + 1, name.size() - open - 2).toInt(&ok);
    return open > 0 && name.endsWith(QLatin1Char(']')) && ok && number >= 0 ? number : -1;
}

/// A bus keeps the numbers of its nets when they run down or up by one.
QByteArray rangeOf(PlainWindow::Column const& column)
{
    int const width = column.bits.size();
    if (width == 1)
        return QByteArray();
    int const first = bitNumber(column.bitNames.first());
    int const last = bitNumber(column.bitNames.last());
    bool isRun = first >= 0 && last >= 0 && std::abs(first - last) == width - 1;
    int const step = last > first ? 1 : -1;
    for (int i = 0; i < width && isRun; ++i)
        isRun = bitNumber(column.bitNames.at(i)) == first + i * step;
    return " [" +
           (isRun ? QByteArray::number(first) + ':' + QByteArray::number(last)
                  : QByteArray::number(width - 1) + ":0") +
           ']';
}

Variable variableFor(PlainWindow::Column const& column)
{
    Variable variable;
    QString path = column.name;
    path.replace(QLatin1Char('/'), QLatin1Char('.'));
    variable.scopes = path.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    QString name = variable.scopes.isEmpty() ? QString() : variable.scopes.takeLast();
    variable.range = rangeOf(column);
    if (!variable.range.isEmpty() && name.endsWith(QLatin1Char(']')) &&
        name.lastIndexOf(QLatin1Char('[')) > 0)
        name.truncate(name.lastIndexOf(QLatin1Char('['))); // it would stand there twice
    variable.name = dumpName(name);
    return variable;
}

QByteArray dumpHead(PlainWindow const& window, QString const& unit)
{
    QByteArray head = "$version vek $end\n$timescale 1 " + unit.toLatin1() +
                      " $end\n$scope module " + dumpName(window.module) + " $end\n";
    head += "$var event 1 " + codeOf(window.columns.size()) + " trigger $end\n";
    for (int i = 0; i < window.columns.size(); ++i) {
        Variable const variable = variableFor(window.columns.at(i));
        for (QString const& scope : variable.scopes)
            head += "$scope module " + dumpName(scope) + " $end\n";
        head += "$var wire " + QByteArray::number(window.columns.at(i).bits.size()) + ' ' +
                codeOf(i) + ' ' + variable.name + variable.range + " $end\n";
        for (int level = 0; level < variable.scopes.size(); ++level)
            head += "$upscope $end\n";
    }
    return head + "$upscope $end\n$enddefinitions $end\n";
}

void writeChange(OutputBuffer& out, Values const& values, int sample, QByteArray const& code)
{
    QByteArray change;
    if (values.width() > 1)
        change += 'b';
    for (int i = 0; i < values.width(); ++i)
        change += values.bit(i, sample) ? '1' : '0';
    if (values.width() > 1)
        change += ' ';
    out.append(change + code + '\n');
}

} // namespace

bool exportPlainCsv(QIODevice& device, PlainWindow const& window, SampleClock const& clock)
{
    OutputBuffer out(device);
    QByteArray title = clock.isKnown() ? "time_" + clock.unit().toLatin1() : QByteArray("sample");
    for (PlainWindow::Column const& column : window.columns)
        title += ',' + quoted(column.name);
    out.append(title + '\n');
    QVector<Values> const columns = valuesOf(window);
    SampleClock::Times times(clock);
    for (int sample = 0; sample < window.samples && !out.failed(); ++sample, times.next()) {
        out.commit(writeDecimal(out.reserve(24), times.now()));
        for (Values const& values : columns) {
            char* at = out.reserve(cellRoom(values) + 1);
            *at++ = ',';
            out.commit(writeCell(at, values, sample));
        }
        *out.reserve(1) = '\n';
        out.commit(out.reserve(1) + 1);
    }
    return out.finish();
}

bool exportPlainVcd(QIODevice& device, PlainWindow const& window, SampleClock const& clock)
{
    OutputBuffer out(device);
    out.append(dumpHead(window, clock.isKnown() ? clock.unit() : QStringLiteral("ns")));
    QVector<Values> const columns = valuesOf(window);
    QVector<QByteArray> codes;
    for (int i = 0; i <= columns.size(); ++i)
        codes << codeOf(i);
    SampleClock::Times times(clock);
    for (int sample = 0; sample < window.samples && !out.failed(); ++sample, times.next()) {
        bool isTold = false; // the time of the sample
        auto const tell = [&] {
            if (!std::exchange(isTold, true))
                out.append('#' + QByteArray::number(times.now()) + '\n');
        };
        if (sample == 0) {
            tell();
            out.append("$dumpvars\n");
        }
        for (int i = 0; i < columns.size(); ++i) {
            if (sample > 0 && columns.at(i).isAsBefore(sample))
                continue;
            tell();
            writeChange(out, columns.at(i), sample, codes.at(i));
        }
        if (sample == 0)
            out.append("$end\n");
        if (sample == window.trigger) {
            tell();
            out.append('1' + codes.last() + '\n');
        }
    }
    out.append('#' + QByteArray::number(times.now()) + '\n'); // the last sample's end
    return out.finish();
}

bool exportPlainRaw(QIODevice& device, PlainWindow const& window)
{
    OutputBuffer out(device);
    QList<QBitArray> nets;
    for (PlainWindow::Column const& column : window.columns)
        nets << column.bits;
    int const bytes = (nets.size() + 7) / 8;
    for (int sample = 0; sample < window.samples && !out.failed(); ++sample) {
        for (int byte = 0; byte < bytes; ++byte) {
            int value = 0;
            for (int bit = 0, net = byte * 8; bit < 8 && net < nets.size(); ++bit, ++net)
                value |= int(sample < nets.at(net).size() && nets.at(net).testBit(sample)) << bit;
            char* const at = out.reserve(1);
            *at = char(value);
            out.commit(at + 1);
        }
    }
    return out.finish();
}

QByteArray rawChannels(PlainWindow const& window)
{
    QByteArray line;
    int number = 0;
    for (PlainWindow::Column const& column : window.columns) {
        for (QString const& name : column.bitNames) {
            QByteArray channel = dumpName(name);
            channel.replace(',', '_').replace('=', '_');
            line += (number > 0 ? "," : "") + QByteArray::number(number) + '=' + channel;
            ++number;
        }
    }
    return line + '\n';
}

} // namespace VEK
