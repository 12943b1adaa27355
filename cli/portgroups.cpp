#include "cli/portgroups.h"

#include <QRegularExpression>

#include <algorithm>

namespace VEK::Cli {
namespace {

constexpr int WordBits = 64;

/// "name[3]" in its parts; a name without an index has no base.
struct Indexed
{
    QString base;
    int index = 0;
};

Indexed indexed(QString const& name)
{
    static QRegularExpression const form(QStringLiteral("\\A(.+)\\[(\\d{1,6})\\]\\z"));
    QRegularExpressionMatch const match = form.match(name);
    return match.hasMatch() ? Indexed{match.captured(1), match.captured(2).toInt()} : Indexed();
}

/// How many names from `first` on are neighbouring bits of one vector, falling or rising.
int vectorLength(QList<SignalItem> const& items, int first)
{
    Indexed const head = indexed(items.at(first).name);
    int step = 0;
    int count = 1;
    for (; first + count < items.size() && !head.base.isEmpty(); ++count) {
        SignalItem const& item = items.at(first + count);
        Indexed const next = indexed(item.name);
        int const distance = next.index - head.index;
        bool const isPlain = !item.isBus() && item.text.isEmpty() && next.base == head.base;
        if (count == 1 && (distance == 1 || distance == -1))
            step = distance;
        if (!isPlain || step == 0 || distance != step * count)
            break;
    }
    return count;
}

/// Adds `width` signals, cut where the words of a port are.
void addGroup(std::vector<PortGroup>& groups, QString const& label, int from, int width)
{
    for (int done = 0; done < width;) {
        int const at = from + done;
        int const piece = std::min(width - done, WordBits - at % WordBits);
        QString const part =
            piece == width
                ? QString()
                : QStringLiteral("[%1:%2]").arg(width - 1 - done).arg(width - done - piece);
        groups.push_back({label + part, at, piece});
        done += piece;
    }
}

QList<SignalItem> itemsOf(QStringList const& names, TriggerPort const* port)
{
    QStringList described;
    if (port) {
        for (SignalItem const& item : port->singleSignals())
            described << item.name;
    }
    if (port && described == names)
        return port->signalList;
    QList<SignalItem> items;
    for (QString const& name : names) {
        SignalItem item;
        item.name = name;
        items << item;
    }
    return items;
}

} // namespace

std::vector<PortGroup> groupsOf(QStringList const& names, TriggerPort const* port)
{
    QList<SignalItem> const items = itemsOf(names, port);
    std::vector<PortGroup> groups;
    int at = 0;
    for (int i = 0; i < items.size(); ++i) {
        SignalItem const& item = items.at(i);
        QString label = item.text.isEmpty() ? item.name : item.text;
        int width = item.isBus() ? item.signalList.size() : 1;
        int const length = item.isBus() || !item.text.isEmpty() ? 1 : vectorLength(items, i);
        if (length > 1) {
            QString const last = QString::number(indexed(items.at(i + length - 1).name).index);
            label = item.name.chopped(1) + QLatin1Char(':') + last + QLatin1Char(']');
            width = length;
            i += length - 1;
        }
        addGroup(groups, label, at, width);
        at += width;
    }
    return groups;
}

QString numberText(quint64 value, int width)
{
    if (width == 1)
        return QString::number(value);
    return QStringLiteral("0x") +
           QString::number(value, 16).toUpper().rightJustified((width + 3) / 4, QLatin1Char('0'));
}

QString numberText(quint64 const* words, int width)
{
    if (width <= WordBits)
        return numberText(words[0] >> (WordBits - std::max(width, 1)), width);
    QString bits;
    for (int i = 0; i < width; ++i)
        bits += QLatin1Char(words[i / WordBits] >> (WordBits - 1 - i % WordBits) & 1 ? '1' : '0');
    bits = bits.rightJustified((width + 3) / 4 * 4, QLatin1Char('0'));
    QString text = QStringLiteral("0x");
    for (int i = 0; i < bits.size(); i += 4)
        text += QString::number(bits.midRef(i, 4).toInt(nullptr, 2), 16).toUpper();
    return text;
}

} // namespace VEK::Cli
