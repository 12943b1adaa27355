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

bool mayOpen(DataManager const& manager, QString const& path)
{
    return manager.status() == AnalyzerIdle &&
           (path.endsWith(QStringLiteral(".vek")) || path.endsWith(QStringLiteral(".rsx")));
}

bool startRun(DataManager& manager, QString const& announcement, QString const& serverName,
              QString const& cable, QString const& location)
{
    printLine(announcement);
    if (!JtagSession::shared()->connectServer(serverName)) {
        printLine(QStringLiteral("Error: Can not connect with JTAG server."));
        return false;
    }
    QList<QVariant> const chain{0};
    if (cable.isEmpty() || location.isEmpty())
        manager.initDeviceChain(chain);
    else
        manager.initDeviceChainandLocation(chain, cable, location);
    return true;
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

QString outputPrefix(QString const& outputBase, QString const& vekFile)
{
    if (!outputBase.isEmpty())
        return outputBase;
    QString const name = vekFile.split(QLatin1Char('/')).last();
    return name.split(QLatin1Char('.')).first();
}

bool BatchRun::noteLoaded(QString const& path, bool ok)
{
    if (ok)
        m_vekFile = path;
    else
        printLine(QStringLiteral("Error: Invalid VEK file ") + path + QLatin1Char('.'));
    return ok;
}

void BatchRun::exportWindow(QString const& suffix, int triggerPos, QList<SignalItem> const& layout,
                            QList<WaveMonitor::SignalData> const& decoded) const
{
    QDomDocument document;
    document.appendChild(document.createElement(DOM_TAG_WAVE_DATA));
    QDomElement const window = windowElement(document, triggerPos, layout, decoded);
    QString const name = outputPrefix(m_outputBase, m_vekFile) + suffix + QStringLiteral(".csv");
    printLine(QStringLiteral("Export ") + name);
    exportCSV(name, TimeUnit, TimeStep, window);
}

} // namespace VEK
