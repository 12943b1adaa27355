#include "analyzer/batchrun.h"

#include "acquire/datamanager.h"
#include "analyzer/console.h"
#include "jtag/jtagsession.h"
#include "jtag/protocol.h"
#include "results/csvexport.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"

namespace VEK {
namespace {

const QString TimeUnit = QStringLiteral("us");
constexpr int TimeStep = 1;

} // namespace

bool hasRunEnding(QString const& path)
{
    return path.endsWith(QStringLiteral(".vek")) || path.endsWith(QStringLiteral(".rsx"));
}

void printInvalidFile(QString const& path)
{
    printLine(QStringLiteral("Error: Invalid VEK file ") + path + QLatin1Char('.'));
}

void printResult(int status)
{
    switch (status) {
    case Protocol::Result::Ok:
        printLine(QStringLiteral("Running VEK analyzer complete."));
        break;
    case Protocol::Result::NoBitstream:
        printLine(QStringLiteral("Error: No fs file downloaded."));
        break;
    case Protocol::Result::OpenFailed:
        printLine(QStringLiteral("Error: Open device failed."));
        break;
    default:
        printLine(QStringLiteral("Error: Unknown device error."));
    }
}

bool connectToServer(QString const& serverName)
{
    if (JtagSession::shared()->connectServer(serverName))
        return true;
    printLine(QStringLiteral("Error: Can not connect with JTAG server."));
    return false;
}

QString outputPrefix(QString const& outputBase, QString const& vekFile)
{
    if (!outputBase.isEmpty())
        return outputBase;
    QString const name = vekFile.split(QLatin1Char('/')).last();
    return name.split(QLatin1Char('.')).first();
}

void openChain(DataManager& manager, QString const& cable, QString const& location)
{
    QList<QVariant> const chain{0};
    if (cable.isEmpty() || location.isEmpty())
        manager.initDeviceChain(chain);
    else
        manager.initDeviceChainandLocation(chain, cable, location);
}

void exportWindow(QString const& prefix, int triggerPos, QList<SignalItem> const& layout,
                  QList<WaveMonitor::SignalData> const& decoded)
{
    QDomDocument document;
    document.appendChild(document.createElement(DOM_TAG_WAVE_DATA));
    QDomElement const window = windowElement(document, triggerPos, layout, decoded);
    QString const name = prefix + QStringLiteral(".csv");
    printLine(QStringLiteral("Export ") + name);
    exportCSV(name, TimeUnit, TimeStep, window);
}

} // namespace VEK
