#include "results/csvexport.h"

#include "results/outputbuffer.h"
#include "results/textcolumns.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"

#include <QFile>
#include <QHash>

namespace VEK {
namespace {

/// Display names by signal id; a later equal id replaces an earlier one.
QHash<QString, QString> signalLabels(QDomElement const& window)
{
    QHash<QString, QString> labels;
    QDomElement const parent = window.firstChildElement(DOM_TAG_SIGNALS);
    for (QDomElement signal = parent.firstChildElement(DOM_TAG_SIGNAL); !signal.isNull();
         signal = signal.nextSiblingElement(DOM_TAG_SIGNAL))
        labels.insert(signal.attribute(DOM_ATTR_SIGNAL_ID), signalLabel(signal));
    return labels;
}

QList<Bus> readGroups(QDomElement const& window)
{
    QHash<QString, QString> const labels = signalLabels(window);
    QList<Bus> groups;
    QDomElement const layout = window.firstChildElement(DOM_TAG_LAYOUT);
    for (QDomElement node = layout.firstChildElement(DOM_TAG_NODE); !node.isNull();
         node = node.nextSiblingElement(DOM_TAG_NODE)) {
        if (node.attribute(DOM_ATTR_NODE_TYPE) != DOM_VAL_NODE_T_BUS)
            continue;
        Bus group{node.attribute(DOM_ATTR_NODE_NAME), {}};
        for (QDomElement child = node.firstChildElement(DOM_TAG_NODE); !child.isNull();
             child = child.nextSiblingElement(DOM_TAG_NODE)) {
            if (child.attribute(DOM_ATTR_NODE_TYPE) != DOM_VAL_NODE_T_DIVIDER)
                group.members.append(labels.value(child.attribute(DOM_ATTR_NODE_ID)));
        }
        groups.append(group);
    }
    return groups;
}

void writeGroups(QDomElement const& window, OutputBuffer& out)
{
    QList<Bus> const groups = readGroups(window);
    if (groups.isEmpty())
        return;
    QByteArray const format = elementText(window.firstChildElement(DOM_TAG_FORMAT)).toUtf8();
    out.append("Groups:\n");
    for (Bus const& group : groups) {
        out.append(group.name.toUtf8() + " =, ");
        out.append(group.members.join(QStringLiteral(", ")).toUtf8() + ", " + format + ",\n");
    }
    out.append("\n");
}

/// The title line and the row of unknown values.
void writeHead(QString const& timeUnit, QList<SignalData*> const& columns, OutputBuffer& out)
{
    out.append("Data:\ntime unit: " + timeUnit.toUtf8());
    for (SignalData const* column : columns)
        out.append(", " + column->label().toUtf8());
    out.append(",\n0");
    for (int i = 0; i < columns.size(); ++i)
        out.append(", X");
    out.append(",\n");
}

} // namespace

bool exportCSV(QIODevice& device, QString const& timeUnit, int timeStep, QDomElement const& window)
{
    QList<SignalData*> const columns = signalDataFromDom(window, true);
    OutputBuffer out(device);
    writeGroups(window, out);
    writeHead(timeUnit, columns, out);
    TextColumns(columns).writeRows({", ", ",\n", timeStep, timeStep}, out);
    qDeleteAll(columns);
    return out.finish();
}

bool exportCSV(QString const& path, QString const& timeUnit, int timeStep,
               QDomElement const& window)
{
    QFile file(path);
    if (!openForExport(file))
        return false;
    exportCSV(file, timeUnit, timeStep, window);
    return true;
}

} // namespace VEK
