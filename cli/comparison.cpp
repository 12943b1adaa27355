#include "cli/comparison.h"

#include "cli/exitstatus.h"
#include "model/bits.h"
#include "results/dataformatter.h"

#include <QHash>
#include <QJsonArray>
#include <QSet>

#include <algorithm>

namespace VEK::Cli {
namespace {

constexpr int TableRows = 10;
constexpr int TableBefore = 3;
constexpr int TableColumns = 8;
constexpr int Block = 64;

/// A signal, or a bus, with its place among a window's nets.
struct Entry
{
    SignalItem item;
    int place = 0;

    int width() const { return std::max(1, item.signalList.size()); }
    bool goesBy(QString const& name) const
    {
        return labelOf(item) == name || item.name == name ||
               std::any_of(
                   item.signalList.begin(), item.signalList.end(),
                   [&](SignalItem const& net) { return labelOf(net) == name || net.name == name; });
    }
};

QList<Entry> entriesOf(CapturedWindow const& window)
{
    QList<Entry> entries;
    int place = 0;
    for (SignalItem const& item : window.layout) {
        entries << Entry{item, place};
        place += entries.last().width();
    }
    return entries;
}

QList<Entry> netsOf(Entry const& entry)
{
    QList<Entry> nets;
    for (int i = 0; i < entry.item.signalList.size(); ++i)
        nets << Entry{entry.item.signalList.at(i), entry.place + i};
    return nets;
}

/// The entries of a window that a golden one can be found among: buses and signals first, then the
/// nets of buses.
class Candidates
{
public:
    explicit Candidates(CapturedWindow const& window)
        : m_entries(entriesOf(window)), m_taken(window.samples.size())
    {
        for (Entry const& entry : m_entries)
            add(entry);
        for (Entry const& entry : m_entries)
            for (Entry const& net : netsOf(entry))
                add(net);
    }

    /// Takes the one of that name, if it is there and whole.
    bool take(Entry const& wanted, Entry& found)
    {
        for (int const at : m_byName.values(labelOf(wanted.item))) {
            Entry const& entry = m_all.at(at);
            bool const isFree = std::none_of(m_taken.begin() + entry.place,
                                             m_taken.begin() + entry.place + entry.width(),
                                             [](bool taken) { return taken; });
            if (!isFree)
                continue;
            std::fill_n(m_taken.begin() + entry.place, entry.width(), true);
            found = entry;
            return true;
        }
        return false;
    }

    /// Whole entries of which nothing was taken, and single nets of the others.
    QList<Entry> left() const
    {
        QList<Entry> left;
        for (Entry const& entry : m_entries) {
            int const free = std::count(m_taken.begin() + entry.place,
                                        m_taken.begin() + entry.place + entry.width(), false);
            if (free == entry.width()) {
                left << entry;
                continue;
            }
            for (Entry const& net : netsOf(entry)) {
                if (!m_taken.at(net.place))
                    left << net;
            }
        }
        return left;
    }

private:
    void add(Entry const& entry)
    {
        m_byName.insert(labelOf(entry.item), m_all.size());
        m_all << entry;
    }

    QList<Entry> m_entries;
    QVector<bool> m_taken; ///< By net.
    QList<Entry> m_all;
    QMultiHash<QString, int> m_byName;
};

QList<QBitArray> bitsOf(CapturedWindow const& window, Entry const& entry)
{
    return window.samples.mid(entry.place, entry.width());
}

bool isNamed(QStringList const& names, Entry const& entry)
{
    return names.contains(labelOf(entry.item)) || names.contains(entry.item.name);
}

/// What two samples of one bit differ in, 64 samples a word.
quint64 changed(QList<QBitArray> const& bits, int fromLowest, qint64 sample, int count)
{
    int const place = bits.size() - 1 - fromLowest;
    return place < 0 ? 0 : packedBits(bits.at(place), sample, count);
}

QString kindWord(SignalOutcome::Kind kind)
{
    switch (kind) {
    case SignalOutcome::Differs:
        return QStringLiteral("differs");
    case SignalOutcome::Missing:
        return QStringLiteral("missing");
    case SignalOutcome::Added:
        return QStringLiteral("added");
    default:
        return QStringLiteral("equal");
    }
}

QString sentence(SignalOutcome const& outcome)
{
    if (outcome.kind == SignalOutcome::Differs)
        return QStringLiteral("%1: %2 samples differ, the first at %3")
            .arg(outcome.name, QString::number(outcome.differing), QString::number(outcome.first));
    return outcome.name + QStringLiteral(": ") + kindWord(outcome.kind);
}

} // namespace

Comparison::Comparison(CapturedWindow const& golden, int goldenAt, CapturedWindow const& made,
                       int madeAt, ComparisonSettings const& settings)
    : m_goldenAt(goldenAt), m_madeAt(madeAt)
{
    setRange(golden.length(), made.length(), settings);
    QList<Entry> const known = entriesOf(golden) + entriesOf(made);
    for (QString const& name : settings.ignored + settings.masks.keys()) {
        if (std::none_of(known.begin(), known.end(),
                         [&](Entry const& entry) { return entry.goesBy(name); }))
            throw Failure{Status::Usage, QStringLiteral("no signal has the name %1").arg(name)};
    }
    pairUp(golden, made, settings);
}

void Comparison::setRange(int goldenLength, int madeLength, ComparisonSettings const& settings)
{
    int const goldenFrom = std::max(-m_goldenAt, settings.from.value_or(-m_goldenAt));
    int const madeFrom = std::max(-m_madeAt, settings.from.value_or(-m_madeAt));
    int const goldenTo =
        std::min<qint64>(goldenLength - m_goldenAt, qint64(settings.to.value_or(goldenLength)) + 1);
    int const madeTo =
        std::min<qint64>(madeLength - m_madeAt, qint64(settings.to.value_or(madeLength)) + 1);
    m_from = std::max(goldenFrom, madeFrom);
    m_to = std::min(goldenTo, madeTo);
    if (goldenFrom >= goldenTo && madeFrom >= madeTo)
        throw Failure{Status::Usage, QStringLiteral("neither capture has a sample in that range")};
    if (goldenFrom != madeFrom || goldenTo != madeTo)
        m_lengths = QStringLiteral("the golden capture has the samples %1 to %2 from the trigger, "
                                   "the new one %3 to %4")
                        .arg(goldenFrom)
                        .arg(goldenTo - 1)
                        .arg(madeFrom)
                        .arg(madeTo - 1);
}

void Comparison::pairUp(CapturedWindow const& golden, CapturedWindow const& made,
                        ComparisonSettings const& settings)
{
    Candidates candidates(made);
    auto const maskOf = [&](Entry const& entry) {
        return settings.masks.value(labelOf(entry.item), settings.masks.value(entry.item.name));
    };
    auto const isIgnored = [&](Entry const& entry) { return isNamed(settings.ignored, entry); };
    auto const pair = [&](Entry const& entry, bool isPassed = false) {
        Entry found;
        if (!candidates.take(entry, found))
            return false;
        if (!isPassed && !isIgnored(entry) && !isIgnored(found))
            compare({labelOf(entry.item), SignalOutcome::Same, 0, 0, bitsOf(golden, entry),
                     bitsOf(made, found)},
                    maskOf(entry));
        return true;
    };
    auto const miss = [&](Entry const& entry) {
        if (!isIgnored(entry))
            m_outcomes << SignalOutcome{
                labelOf(entry.item), SignalOutcome::Missing, 0, 0, bitsOf(golden, entry), {}};
    };
    for (Entry const& entry : entriesOf(golden)) {
        if (pair(entry))
            continue;
        QList<Entry> missing;
        QList<Entry> const nets = netsOf(entry);
        for (Entry const& net : nets) {
            if (!pair(net, isIgnored(entry)))
                missing << net;
        }
        if (isIgnored(entry))
            continue;
        if (missing.size() == nets.size())
            miss(entry);
        else
            std::for_each(missing.begin(), missing.end(), miss);
    }
    for (Entry const& entry : candidates.left()) {
        if (!isIgnored(entry))
            m_outcomes << SignalOutcome{labelOf(entry.item), SignalOutcome::Added, 0, 0, {},
                                        bitsOf(made, entry)};
    }
}

void Comparison::compare(SignalOutcome outcome, QBitArray const& mask)
{
    int const width = std::max(outcome.golden.size(), outcome.made.size());
    for (int at = m_from; at < m_to; at += Block) {
        int const count = std::min(Block, m_to - at);
        quint64 differs = 0;
        for (int bit = 0; bit < width; ++bit) {
            int const place = mask.size() - 1 - bit;
            if (!mask.isEmpty() && (place < 0 || !mask.testBit(place)))
                continue;
            differs |= changed(outcome.golden, bit, qint64(at) + m_goldenAt, count) ^
                       changed(outcome.made, bit, qint64(at) + m_madeAt, count);
        }
        if (differs && outcome.differing == 0)
            outcome.first = at + int(qCountTrailingZeroBits(differs));
        outcome.differing += int(qPopulationCount(differs));
    }
    if (outcome.differing)
        outcome.kind = SignalOutcome::Differs;
    m_outcomes << outcome;
}

bool Comparison::isEqual() const
{
    return failures() == 0;
}

int Comparison::failures() const
{
    return int(!m_lengths.isEmpty()) + int(std::count_if(m_outcomes.begin(), m_outcomes.end(),
                                                         [](SignalOutcome const& outcome) {
                                                             return outcome.kind !=
                                                                    SignalOutcome::Same;
                                                         }));
}

QStringList Comparison::lines() const
{
    QStringList lines;
    if (!m_lengths.isEmpty())
        lines << m_lengths;
    for (SignalOutcome const& outcome : m_outcomes) {
        if (outcome.kind != SignalOutcome::Same)
            lines << sentence(outcome);
    }
    return lines + table();
}

QString Comparison::valueText(QList<QBitArray> const& bits, int at, int sample) const
{
    QBitArray value(bits.size());
    for (int i = 0; i < bits.size(); ++i)
        value.setBit(i, bits.at(i).testBit(at + sample));
    return WaveMonitor::DataFormatter(WaveMonitor::DataFormat::Hexadecimal).format(value);
}

/// The signals that differ, around the first sample that does. Without rows when none does.
Comparison::Excerpt Comparison::excerpt() const
{
    QList<SignalOutcome> differing;
    int first = m_to;
    for (SignalOutcome const& outcome : m_outcomes) {
        if (outcome.kind != SignalOutcome::Differs)
            continue;
        first = std::min(first, outcome.first);
        differing << outcome;
    }
    Excerpt excerpt;
    excerpt.from = std::max(m_from, first - TableBefore);
    int const to = std::min(m_to, excerpt.from + TableColumns);
    for (SignalOutcome const& outcome : qAsConst(differing).mid(0, TableRows)) {
        Excerpt::Row row{outcome.name, {}, {}};
        for (int sample = excerpt.from; sample < to; ++sample) {
            row.golden << valueText(outcome.golden, m_goldenAt, sample);
            row.made << valueText(outcome.made, m_madeAt, sample);
        }
        excerpt.rows << row;
    }
    return excerpt;
}

QStringList Comparison::table() const
{
    Excerpt const around = excerpt();
    if (around.rows.isEmpty())
        return {};
    QList<QStringList> cells{{QStringLiteral("sample"), QString()}};
    int const count = around.rows.first().golden.size();
    for (int sample = 0; sample < count; ++sample)
        cells.first() << QString::number(around.from + sample);
    for (Excerpt::Row const& row : around.rows)
        cells << (QStringList{row.name, QStringLiteral("golden")} << row.golden)
              << (QStringList{QString(), QStringLiteral("new")} << row.made);
    QVector<int> widths(count + 2);
    for (QStringList const& line : qAsConst(cells))
        for (int i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths.at(i), line.at(i).size());
    QStringList lines;
    for (QStringList const& line : qAsConst(cells)) {
        QString text;
        for (int i = 0; i < line.size(); ++i)
            text += QStringLiteral("  ") + (i < 2 ? line.at(i).leftJustified(widths.at(i))
                                                  : line.at(i).rightJustified(widths.at(i)));
        lines << text;
    }
    return lines;
}

QJsonObject Comparison::json() const
{
    QJsonArray outcomes;
    for (SignalOutcome const& outcome : m_outcomes) {
        QJsonObject object{{QStringLiteral("name"), outcome.name},
                           {QStringLiteral("result"), kindWord(outcome.kind)},
                           {QStringLiteral("differing"), outcome.differing}};
        if (outcome.kind == SignalOutcome::Differs)
            object.insert(QStringLiteral("first"), outcome.first);
        outcomes.append(object);
    }
    QJsonObject json{
        {QStringLiteral("equal"), isEqual()}, {QStringLiteral("golden_at"), m_goldenAt},
        {QStringLiteral("new_at"), m_madeAt}, {QStringLiteral("from"), m_from},
        {QStringLiteral("to"), m_to - 1},     {QStringLiteral("lengths"), m_lengths},
        {QStringLiteral("signals"), outcomes}};
    Excerpt const around = excerpt();
    QJsonArray rows;
    for (Excerpt::Row const& row : around.rows)
        rows.append(QJsonObject{{QStringLiteral("name"), row.name},
                                {QStringLiteral("golden"), QJsonArray::fromStringList(row.golden)},
                                {QStringLiteral("new"), QJsonArray::fromStringList(row.made)}});
    if (!rows.isEmpty())
        json.insert(QStringLiteral("around"), QJsonObject{{QStringLiteral("from"), around.from},
                                                          {QStringLiteral("signals"), rows}});
    return json;
}

QByteArray Comparison::cases(QString const& className) const
{
    QByteArray text;
    auto const add = [&](QString const& name, QString const& failure) {
        text += "    <testcase classname=\"" + className.toHtmlEscaped().toUtf8() + "\" name=\"" +
                name.toHtmlEscaped().toUtf8() + '"';
        text += failure.isEmpty() ? QByteArray("/>\n")
                                  : "><failure message=\"" + failure.toHtmlEscaped().toUtf8() +
                                        "\"/></testcase>\n";
    };
    add(QStringLiteral("samples"), m_lengths);
    for (SignalOutcome const& outcome : m_outcomes)
        add(outcome.name, outcome.kind == SignalOutcome::Same ? QString() : sentence(outcome));
    return text;
}

} // namespace VEK::Cli
