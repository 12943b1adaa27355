#include "results/prnexport.h"

#include "results/outputbuffer.h"
#include "results/textcolumns.h"
#include "results/windowreader.h"

#include <QFile>

namespace VEK {
namespace {

QList<SignalData*> columnsOfMode(QDomElement const& window, int mode)
{
    if (mode != PrnAllColumns && mode != PrnWithoutMembers)
        return {};
    return signalDataFromDom(window, mode == PrnAllColumns);
}

/// Walks the buses with one cursor in the selection; what is not kept is deleted.
QList<SignalData*> selectedBuses(QDomElement const& window, QList<int> const& selection)
{
    QList<SignalData*> kept;
    int bus = 0;
    int cursor = 0;
    for (SignalData* column : signalDataFromDom(window, true)) {
        bool const wanted =
            column->isBus() && cursor < selection.size() && selection.at(cursor) == bus;
        bus += column->isBus();
        cursor += wanted;
        if (wanted)
            kept.append(column);
        else
            delete column;
    }
    return kept;
}

void writeTable(QFile& file, QString const& timeUnit, unsigned int timeStep,
                QList<SignalData*> const& columns)
{
    OutputBuffer out(file);
    out.append("time unit: " + timeUnit.toUtf8() + '\t');
    QByteArray separator;
    for (SignalData const* column : columns) {
        out.append(separator + (column->isBus() ? "" : "/") + column->label().toUtf8());
        separator = "\t";
    }
    if (!columns.isEmpty())
        out.append("\n");
    TextColumns(columns).writeRows({"\t", " \n", 0, qint64(timeStep)}, out);
}

} // namespace

bool exportPRN(QString const& path, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, int mode)
{
    QFile file(path);
    if (!openForExport(file))
        return false;
    QList<SignalData*> const columns = columnsOfMode(window, mode);
    writeTable(file, timeUnit, timeStep, columns);
    qDeleteAll(columns);
    return true;
}

bool exportPRN(QString const& path, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, QList<int> const& selection)
{
    QFile file(path);
    if (!openForExport(file))
        return false;
    QList<SignalData*> const columns = selectedBuses(window, selection);
    writeTable(file, timeUnit, timeStep, columns);
    qDeleteAll(columns);
    return true;
}

} // namespace VEK
