#include "oracle.h"

#include <QDomDocument>
#include <QStringList>

#include <algorithm>
#include <map>

namespace {

int number(QDomElement const& element, char const* attribute)
{
    return element.attribute(attribute).toInt();
}

/// The elements of that name inside another one, in the order of the text.
QVector<QDomElement> all(QDomElement const& parent, char const* name)
{
    QVector<QDomElement> result;
    QDomNodeList const nodes = parent.elementsByTagName(name);
    for (int i = 0; i < nodes.size(); ++i)
        result += nodes.at(i).toElement();
    return result;
}

/// The expression from place `at` on, up to where an operator of a lower level stands: `|` is the
/// lowest, then `^`, `&` and `!`.
bool evaluate(QString const& text, int& at, QMap<int, bool> const& units, int level = 0)
{
    if (level < 3) {
        bool result = evaluate(text, at, units, level + 1);
        while (at < text.size() && text[at] == QString("|^&")[level]) {
            bool const next = evaluate(text, ++at, units, level + 1);
            result = level == 0 ? result || next : level == 1 ? result != next : result && next;
        }
        return result;
    }
    QChar const first = text[at++];
    if (first == '!')
        return !evaluate(text, at, units, level);
    if (first == '(') {
        bool const result = evaluate(text, at, units);
        ++at;
        return result;
    }
    int unit = 0;
    for (; at < text.size() && text[at].isDigit(); ++at)
        unit = 10 * unit + text[at].digitValue();
    return units.value(unit);
}

bool holds(char wanted, bool changed, char now)
{
    if (wanted == 'X' || wanted == now)
        return true;
    return changed ? wanted == 'B' || wanted == (now == '1' ? 'R' : 'F') : wanted == 'N';
}

/// A unit at work: its counter starts anew with each window.
class Watch
{
public:
    Watch(QDomElement const& unit, QDomElement const& core, Waves const& waves)
        : m_func(number(unit, "func")), m_counted(number(unit, "counter_enable")),
          m_continuous(number(unit, "countinuous")), m_reload(number(unit, "counter") - 1),
          m_left(m_reload)
    {
        for (QDomElement const& port : all(core, "Trigger"))
            if (number(port, "index") == number(unit, "trigger"))
                for (QDomElement const& signal : all(port, "Signal"))
                    m_port += waves[signal.text()];
        // A value has a character for each signal: zeros are added in front, a tail is cut.
        for (char const* value : {"value0", "value1"})
            m_values += unit.attribute(value).toLatin1().rightJustified(m_port.size(), '0', true);
    }

    bool fires(int sample)
    {
        bool const match = matches(sample);
        bool const fired = match && (!m_counted || m_left == 0);
        if (match)
            --m_left;
        if (fired || (!match && m_continuous))
            m_left = m_reload;
        return fired;
    }

private:
    bool matches(int sample) const
    {
        QByteArray const &low = m_values[0], &high = m_values[1];
        QByteArray now; // texts of one width compare as the numbers that they stand for
        bool equal = true;
        for (QByteArray const& wave : m_port) {
            bool const changed = sample > 0 && wave[sample - 1] != wave[sample];
            equal &= holds(low[now.size()], changed, wave[sample]);
            now += wave[sample];
        }
        bool const inside = low <= now && now <= high;
        bool const results[] = {equal,      !equal,     now > low, now < low,
                                now >= low, now <= low, inside,    !inside};
        return results[m_func];
    }

    int m_func;
    bool m_counted;
    bool m_continuous;
    int m_reload;
    int m_left; ///< Matches still to be counted before the unit fires.
    QVector<QByteArray> m_port;
    QVector<QByteArray> m_values;
};

bool isDynamic(QDomElement const& core)
{
    return core.firstChildElement("Expressions").attribute("type") == "Dynamic";
}

/// The first sample that fires, -1 if none does.
int findTrigger(QDomElement const& core, Waves const& waves, int start, int earliest)
{
    std::map<int, Watch> watches;
    for (QDomElement const& unit : all(core, "MatchUnit"))
        if (number(unit, "enabled"))
            watches.emplace(number(unit, "index"), Watch(unit, core, waves));
    QStringList stages;
    for (QDomElement const& expression : all(core, "Expression"))
        stages += expression.text().remove(' ');
    if (isDynamic(core))
        stages = stages.mid(0, 1); // a file can't switch more on
    for (int sample = start; sample < waves.first().size(); ++sample) {
        QMap<int, bool> units;
        for (auto& [index, watch] : watches)
            units[index] = watch.fires(sample);
        int at = 0;
        if (sample >= earliest && !stages.isEmpty() && evaluate(stages.first(), at, units))
            stages.removeFirst();
        if (sample >= earliest && stages.isEmpty())
            return sample;
    }
    return -1;
}

/// The samples that a window shows, first row first; -1 is memory that was never written.
QVector<int> rows(QDomElement const& core, ExpectedWindow const& capture)
{
    // The ring has all rows, but only whole sections of it are read, from its first place on.
    int const amount = number(core, "capture_amount");
    int const position = number(core, "trigger_pos");
    int const read = amount < 128 ? amount : amount / 128 * 128;
    QVector<int> ring(amount, -1);
    for (int i = capture.start; i < capture.trigger - position + amount; ++i)
        ring[(i - capture.start) % amount] = i;
    // The mark of a dynamic core comes one row late, and is taken back within what was read.
    int trigger = std::min((capture.trigger - capture.start + isDynamic(core)) % amount, read);
    if (isDynamic(core))
        trigger = trigger == 0 ? read - 1 : trigger - 1;
    QVector<int> result;
    for (int i = 0; i < read; ++i)
        result += ring[(trigger - position + i + amount * read) % read];
    return result;
}

QByteArray csv(QDomElement const& core, Waves const& waves, QVector<int> const& rows)
{
    QString groups;
    QStringList titles;
    QVector<QString> lines(rows.size());
    for (QDomElement entry = core.firstChildElement("SignalList").firstChildElement();
         !entry.isNull(); entry = entry.nextSiblingElement()) {
        if (entry.attribute("capture_enable") == "false")
            continue;
        bool const bus = entry.tagName() == "Bus";
        QStringList names;
        QVector<QByteArray> nets;
        for (QDomElement const& signal : bus ? all(entry, "Signal") : QVector<QDomElement>{entry}) {
            names += signal.attribute("text", signal.text());
            nets += waves[signal.text()];
        }
        if (bus) {
            QString const name = entry.attribute("restorename");
            groups += name + " =, " + names.join(", ") + ", ,\n";
            titles += entry.attribute("name", name);
        }
        titles += names;
        for (int i = 0; i < rows.size(); ++i) {
            QByteArray bits;
            for (QByteArray const& net : nets) // what stands at the end stands for ever
                bits += rows[i] < 0 ? '0' : net[std::min(rows[i], net.size() - 1)];
            if (bus)
                lines[i] +=
                    QString(", %1")
                        .arg(bits.toULongLong(nullptr, 2), (bits.size() + 3) / 4, 16, QChar('0'))
                        .toUpper();
            for (char bit : bits)
                lines[i] += QString(", ") + bit;
        }
    }
    QString text = groups.isEmpty() ? QString() : "Groups:\n" + groups + "\n";
    text += "Data:\ntime unit: us, " + titles.join(", ") + ",\n0" +
            QString(", X").repeated(titles.size()) + ",\n";
    for (int i = 0; i < rows.size(); ++i)
        text += QString::number(i + 1) + lines[i] + ",\n";
    return text.toUtf8();
}

} // namespace

QVector<ExpectedWindow> expectedCaptures(QByteArray const& vek, QMap<QString, Waves> const& waves)
{
    QDomDocument document;
    document.setContent(vek);
    QVector<ExpectedWindow> result;
    for (QDomElement const& core : all(document.documentElement(), "SxCore")) {
        Waves const seen = waves[core.attribute("sample_clock")];
        bool const initial = core.attribute("capture_init_data_enabled") == "true";
        int const position = number(core, "trigger_pos");
        int start = 0;
        for (int window = 0; window < number(core, "window_num"); ++window) {
            int const earliest = initial && window == 0 ? position : start;
            int const trigger = findTrigger(core, seen, start, earliest);
            if (trigger < 0)
                break;
            ExpectedWindow capture{number(core, "index"), window, start, trigger, {}};
            capture.csv = csv(core, seen, rows(core, capture));
            result += capture;
            start = trigger + number(core, "capture_amount") - position;
        }
    }
    return result;
}

QByteArray csvOf(QByteArray const& vek, Waves const& waves, QVector<int> const& samples)
{
    QDomDocument document;
    document.setContent(vek);
    QDomElement const list = all(document.documentElement(), "SignalList").first();
    return csv(list.parentNode().toElement(), waves, samples);
}
