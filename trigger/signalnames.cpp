#include "trigger/signalnames.h"

#include "model/nearestnames.h"
#include "trigger/lexer.h"

#include <QRegularExpression>
#include <QVector>

namespace VEK::Trigger {
namespace {

QStringList netsOf(QList<SignalItem> const& items)
{
    QStringList nets;
    for (SignalItem const& item : flatSignals(items))
        nets.append(item.name);
    return nets;
}

/// The number in the last brackets of a net's name, or -1, and the name in front of them.
int indexOf(QString const& net, QString* vector = nullptr)
{
    static QRegularExpression const form(QStringLiteral("\\A(.+)\\[(\\d{1,6})\\]\\z"));
    QRegularExpressionMatch const parts = form.match(net);
    if (vector && parts.hasMatch())
        *vector = parts.captured(1);
    return parts.hasMatch() ? parts.capturedRef(2).toInt() : -1;
}

/// Both separators of scopes as one.
QString path(QString name)
{
    return name.replace(QLatin1Char('/'), QLatin1Char('.'));
}

/// The nets that an index picks; empty when one of them isn't there.
QStringList pick(QStringList const& nets, int first, int last)
{
    QVector<int> numbers;
    if (nets.size() == 1 && indexOf(nets.first()) < 0)
        return QStringList();
    for (int i = 0; i < nets.size(); ++i) {
        int const index = indexOf(nets.at(i));
        numbers.append(index < 0 ? nets.size() - 1 - i : index);
    }
    QStringList picked;
    int const step = last < first ? -1 : 1;
    for (int number = first; picked.size() <= nets.size(); number += step) {
        int const at = numbers.indexOf(number);
        if (at < 0)
            return QStringList();
        picked.append(nets.at(at));
        if (number == last)
            break;
    }
    return picked;
}

QString bitsOf(QStringList const& nets)
{
    int const high = indexOf(nets.first());
    int const low = indexOf(nets.last());
    bool const isNumbered = high >= 0 && low >= 0;
    return QStringLiteral("[%1:%2]")
        .arg(isNumbered ? high : nets.size() - 1)
        .arg(isNumbered ? low : 0);
}

} // namespace

/// Ports come first: a trigger sees nothing else. What is only captured is there to be told so.
SignalNames::SignalNames(SxCore const& core)
{
    QList<QList<SignalItem>> lists;
    for (TriggerPort const* port : core.triggers)
        lists.append(port->signalList);
    lists << core.dataSignalList << core.allSignalList;
    for (QList<SignalItem> const& items : qAsConst(lists))
        addItems(items);
    for (QList<SignalItem> const& items : qAsConst(lists))
        addVectors(items);
}

void SignalNames::add(QString const& name, QStringList const& nets)
{
    if (!name.isEmpty() && !nets.isEmpty())
        m_entries.append({name, nets});
}

void SignalNames::addItems(QList<SignalItem> const& items)
{
    for (SignalItem const& item : items) {
        QStringList const nets = netsOf({item});
        add(item.text, nets);
        add(item.name, nets);
        for (SignalItem const& member : item.signalList) {
            add(member.text, {member.name});
            add(member.name, {member.name});
        }
    }
}

/// The bits of a vector that stand by themselves, as one.
void SignalNames::addVectors(QList<SignalItem> const& items)
{
    QStringList vectors;
    QList<QStringList> nets;
    for (SignalItem const& item : flatSignals(items)) {
        QString vector;
        if (indexOf(item.name, &vector) < 0)
            continue;
        int at = vectors.indexOf(vector);
        if (at < 0) {
            at = vectors.size();
            vectors.append(vector);
            nets.append(QStringList());
        }
        nets[at].append(item.name);
    }
    for (int i = 0; i < vectors.size(); ++i)
        add(vectors.at(i), nets.at(i));
}

/// The entries of that name, else those whose path ends with it. The first of equal names counts.
QList<SignalNames::Entry const*> SignalNames::find(QString const& name) const
{
    QList<Entry const*> ends;
    QString const wanted = path(name);
    QString const end = QLatin1Char('.') + wanted;
    for (Entry const& entry : m_entries) {
        if (entry.name == name)
            return {&entry};
    }
    for (Entry const& entry : m_entries) {
        QString const candidate = path(entry.name);
        bool const isNew = std::none_of(ends.begin(), ends.end(), [&](Entry const* other) {
            return other->name == entry.name || other->nets == entry.nets;
        });
        if (isNew && (candidate == wanted || candidate.endsWith(end)))
            ends.append(&entry);
    }
    return ends;
}

QStringList SignalNames::resolve(TriggerName const& name, QString& error) const
{
    QString const single = QStringLiteral("%1[%2]").arg(name.text).arg(name.first);
    bool const isSingle = name.first != TriggerName::NoIndex && name.first == name.last;
    QList<Entry const*> found = isSingle ? find(single) : QList<Entry const*>();
    bool const isWhole = name.first == TriggerName::NoIndex || !found.isEmpty();
    if (found.isEmpty())
        found = find(name.text);
    if (found.isEmpty()) {
        error = unknown(name.text);
        return QStringList();
    }
    if (found.size() > 1) {
        QStringList names;
        for (Entry const* entry : qAsConst(found))
            names.append(writtenName(entry->name));
        error = QStringLiteral("\"%1\" is the end of several names: %2")
                    .arg(name.text, names.mid(0, 5).join(QLatin1String(", ")));
        return QStringList();
    }
    QStringList const nets = found.first()->nets;
    if (isWhole)
        return nets;
    QStringList const picked = pick(nets, name.first, name.last);
    if (picked.isEmpty())
        error = nets.size() == 1
                    ? QStringLiteral("\"%1\" is one bit, which has no index").arg(name.text)
                    : QStringLiteral("\"%1\" has the bits %2").arg(name.text, bitsOf(nets));
    return picked;
}

QString SignalNames::unknown(QString const& name) const
{
    if (m_entries.isEmpty())
        return QStringLiteral("there is no signal \"%1\": the core has none").arg(name);
    NearestNames names;
    for (Entry const& entry : m_entries)
        names.add(entry.name.toUtf8());
    QStringList nearest;
    for (QByteArray const& candidate : names.nearest(name.toUtf8()))
        nearest.append(writtenName(QString::fromUtf8(candidate)));
    return QStringLiteral("there is no signal \"%1\"%2")
        .arg(name,
             nearest.isEmpty()
                 ? QString()
                 : QStringLiteral("; the nearest is %1").arg(nearest.join(QLatin1String(" or "))));
}

bool SignalNames::standsFor(QString const& name, QStringList const& nets) const
{
    if (name.isEmpty())
        return false;
    QString ignored;
    return resolve(tokensOf(writtenName(name)).first().name, ignored) == nets;
}

QString SignalNames::written(SignalItem const& item) const
{
    QStringList const nets = netsOf({item});
    for (QString const& name : {item.text, item.name}) {
        if (standsFor(name, nets))
            return writtenName(name);
    }
    if (!item.isBus())
        return writtenName(item.name);
    QStringList members;
    for (SignalItem const& member : item.signalList)
        members.append(written(member));
    return QLatin1Char('{') + members.join(QLatin1String(", ")) + QLatin1Char('}');
}

} // namespace VEK::Trigger
