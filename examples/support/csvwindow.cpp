#include "support/csvwindow.h"

#include "model/bits.h"
#include "results/csvimport.h"
#include "results/windowbuilder.h"

#include <QFile>
#include <QStringList>

using namespace VEK;

namespace {

QStringList columnTitles(QString const& csvPath)
{
    QFile file(csvPath);
    QString line;
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd() && !line.startsWith(QLatin1String("time unit: ")))
            line = QString::fromUtf8(file.readLine()).trimmed();
    }
    return line.chopped(line.endsWith(QLatin1Char(','))).split(QStringLiteral(", ")).mid(1);
}

} // namespace

// A column of bus values is known by the members behind it: its title need not be the bus's name.
QDomElement windowFromCsv(QString const& path, int trigger, QDomDocument& document)
{
    QList<SignalItem> items; // the buses, then the other columns, which the titles tell as well
    QList<QBitArray> columns;
    QStringList const titles = columnTitles(path);
    if (!readCsv(path, items, columns) || titles.size() != columns.size())
        return {};

    QList<SignalItem> layout;
    QList<QBitArray> samples;
    auto const takeColumn = [&](int i) { samples.append(cutHead(columns.at(i), 1)); }; // row of X
    for (int i = 0, nextBus = 0; i < titles.size(); ++i) {
        SignalItem item = items.value(nextBus);
        QStringList members;
        for (SignalItem const& member : qAsConst(item.signalList))
            members.append(member.name);
        if (item.isBus() && titles.mid(i + 1, members.size()) == members) {
            ++nextBus;
            item.text = titles.at(i);
            for (int k = 0; k < members.size(); ++k)
                takeColumn(++i);
        } else {
            item = SignalItem();
            item.name = titles.at(i);
            takeColumn(i);
        }
        layout.append(item);
    }
    return windowElement(document, trigger, layout, namedSignals(flatSignals(layout), samples));
}
