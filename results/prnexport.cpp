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

/// Takes over the columns.
bool writeTable(QIODevice& device, QString const& timeUnit, unsigned int timeStep,
                QList<SignalData*> const& columns)
{
    OutputBuffer out(device);
    out.append("time unit: " + timeUnit.toUtf8() + '\t');
    QByteArray separator;
    for (SignalData const* column : columns) {
        out.append(separator + (column->isBus() ? "" : "/") + column->label().toUtf8());
        separator = "\t";
    }
    if (!columns.isEmpty())
        out.append("\n");
    TextColumns(columns).writeRows({"\t", " \n", 0, qint64(timeStep)}, out);
    qDeleteAll(columns);
    return out.finish();
}

template <typename Choice>
bool exportToFile(QString const& path, QString const& timeUnit, unsigned int timeStep,
                  QDomElement const& window, Choice const& choice)
{
    QFile file(path);
    if (!openForExport(file))
        return false;
    exportPRN(file, timeUnit, timeStep, window, choice);
    return true;
}

} // namespace

bool exportPRN(QIODevice& device, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, int mode)
{
    return writeTable(device, timeUnit, timeStep, columnsOfMode(window, mode));
}

bool exportPRN(QIODevice& device, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, QList<int> const& selection)
{
    return writeTable(device, timeUnit, timeStep, selectedBuses(window, selection));
}

bool exportPRN(QString const& path, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, int mode)
{
    return exportToFile(path, timeUnit, timeStep, window, mode);
}

bool exportPRN(QString const& path, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, QList<int> const& selection)
{
    return exportToFile(path, timeUnit, timeStep, window, selection);
}

} // namespace VEK
