#include "cli/benchcheck.h"

#include "model/litefile.h"
#include "model/standardfile.h"
#include "model/vekfile.h"
#include "simulator/bench.h"
#include "simulator/chipfactory.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace VEK::Cli {
namespace {

QStringList knownDevices()
{
    QFile catalogue(QStringLiteral(":/programmer.json"));
    catalogue.open(QIODevice::ReadOnly); // a resource
    QStringList names;
    QJsonObject const json = QJsonDocument::fromJson(catalogue.readAll()).object();
    for (QJsonValue const& device : json.value(QStringLiteral("DEVICE_CONFIG")).toArray())
        names << device.toObject().value(QStringLiteral("DEVICE")).toString();
    return names;
}

/// Samples of a window of each core, in file order.
std::vector<int> windowSizes(QString const& design)
{
    std::vector<int> sizes;
    QString id;
    if (vekModeFromVekConfigFile(design) == VekModeLite) {
        QList<SXCore_Lite*> const cores = readVEKConfigFromXml_Lite(design, id, nullptr, nullptr);
        for (SXCore_Lite const* core : cores)
            sizes.push_back(core->captureAmount);
        qDeleteAll(cores);
    } else {
        QList<SxCore*> const cores = readVEKConfigFromXml(design, id, nullptr, nullptr);
        for (SxCore const* core : cores)
            sizes.push_back(core->captureAmount);
        qDeleteAll(cores);
    }
    return sizes;
}

Finding finding(Severity severity, char const* member, QString const& message)
{
    return {severity, 0, QString::fromLatin1(member), QString(), message};
}

QList<Finding> checkStimulus(Simulator::Bench const& bench)
{
    QList<Finding> findings;
    std::vector<qint64> samples;
    QString warning;
    QString error;
    if (!Simulator::countSamples(bench, samples, warning, error))
        return {finding(Severity::Error, "stimulus", error)};
    if (!warning.isEmpty())
        findings << finding(Severity::Warning, "stimulus", warning);
    std::vector<int> const sizes = windowSizes(bench.design);
    for (std::size_t i = 0; i < samples.size() && i < sizes.size(); ++i)
        if (samples[i] < sizes[i])
            findings << finding(
                Severity::Warning, "stimulus",
                QStringLiteral("it has %1 samples, and a window of core %2 takes %3")
                    .arg(samples[i])
                    .arg(i)
                    .arg(sizes[i]));
    return findings;
}

} // namespace

QList<Finding> checkBench(QString const& path)
{
    Simulator::Bench bench;
    QString error;
    if (!Simulator::readBench(path, bench, error))
        return {
            finding(Severity::Error, "", error.mid(error.startsWith(path) ? path.size() + 2 : 0))};
    QList<Finding> findings;
    if (bench.device.isEmpty())
        findings << finding(Severity::Warning, "device", QStringLiteral("there is no device"));
    else if (!knownDevices().contains(bench.device))
        findings << finding(Severity::Error, "device",
                            QStringLiteral("\"%1\" is no device that is known").arg(bench.device));
    if (bench.design.isEmpty())
        findings << finding(Severity::Warning, "design",
                            QStringLiteral("the device holds no bitstream"));
    else
        findings << checkStimulus(bench);
    return findings;
}

} // namespace VEK::Cli
