#include "wavemonitor/tree/busnaming.h"

#include <QRegExp>
#include <QSet>

namespace WaveMonitor {

namespace {

QRegExp indexedName()
{
    return QRegExp(QStringLiteral("^(.+)(\\[[1-9]\\d*\\]|\\[0\\])$"));
}

QRegExp bracketedIndex()
{
    return QRegExp(QStringLiteral("^\\[([1-9]\\d*|0)\\]$"));
}

QRegExp generatedBusName()
{
    return QRegExp(QStringLiteral("^(group_)(0|[1-9]\\d*)(\\[(0|[1-9]\\d*):(0|[1-9]\\d*)\\]$)"));
}

} // namespace

QString vectorName(QStringList const& signalNames)
{
    if (signalNames.size() < 2)
        return QString();
    QRegExp named = indexedName();
    QRegExp bracketed = bracketedIndex();
    QString stem;
    QList<int> indexes;
    for (QString const& name : signalNames) {
        if (named.indexIn(name) < 0 || bracketed.indexIn(named.cap(2)) < 0)
            return QString();
        bool fits = false;
        indexes.append(bracketed.cap(1).toInt(&fits));
        if (!fits || (indexes.size() > 1 && named.cap(1) != stem))
            return QString();
        stem = named.cap(1);
    }
    int const step = indexes.at(1) - indexes.at(0);
    if (step != 1 && step != -1)
        return QString();
    for (int i = 2; i < indexes.size(); ++i) {
        if (indexes.at(i) - indexes.at(i - 1) != step)
            return QString();
    }
    return stem + QStringLiteral("[%1:%2]").arg(indexes.first()).arg(indexes.last());
}

QString freeGroupName(QStringList const& busNames)
{
    QRegExp generated = generatedBusName();
    QSet<int> taken;
    for (QString const& name : busNames) {
        if (generated.indexIn(name) < 0)
            continue;
        bool fits = false;
        int const number = generated.cap(2).toInt(&fits);
        if (fits)
            taken.insert(number);
    }
    int number = 0;
    while (taken.contains(number))
        ++number;
    return QStringLiteral("group_%1").arg(number);
}

} // namespace WaveMonitor
