#include "cli/newdesign.h"

#include "cli/exitstatus.h"
#include "cli/rehearsalmark.h"
#include "cli/triggerfailure.h"
#include "dump/netlist.h"
#include "model/litefile.h"
#include "model/standardfile.h"
#include "results/wholefile.h"
#include "trigger/trigger.h"
#include "trigger/unitplan.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <functional>

namespace VEK::Cli {
namespace {

constexpr int OwnSamples = 4; ///< Of a window, behind the latest trigger that a chip can place.
constexpr int SparesWidth = 16;

Failure usage(QString const& message)
{
    return {Status::Usage, message};
}

/// The path within the scope; null for one outside of it.
QString nameIn(QString const& scope, Dump::VcdVariable const& variable)
{
    QString const path = QString::fromUtf8(variable.path);
    if (scope.isEmpty())
        return path;
    QString const head =
        QString(scope).replace(QLatin1Char('/'), QLatin1Char('.')) + QLatin1Char('.');
    return path.startsWith(head) ? path.mid(head.size()) : QString();
}

void checkName(QString const& name)
{
    bool const isLatin1 = std::all_of(
        name.begin(), name.end(), [](QChar c) { return c.unicode() > 31 && c.unicode() < 256; });
    if (!isLatin1)
        throw usage(QStringLiteral("\"%1\" has letters that a configuration can't hold").arg(name));
}

SignalItem signalOf(QString const& name)
{
    SignalItem item;
    item.name = name;
    item.captureEnable = true;
    return item;
}

/// A vector becomes a bus, its bits in the order of the declaration.
SignalItem itemOf(QString const& name, Dump::VcdVariable const& variable)
{
    checkName(name);
    if (variable.width == 1)
        return signalOf(variable.hasRange ? QStringLiteral("%1[%2]").arg(name).arg(variable.msb)
                                          : name);
    SignalItem bus = signalOf(name);
    int const step = variable.msb < variable.lsb ? 1 : -1;
    for (int i = 0; i < variable.width; ++i)
        bus.signalList << signalOf(QStringLiteral("%1[%2]").arg(name).arg(variable.msb + i * step));
    return bus;
}

/// Appends those of `nets` that fit, as they are called within the scope, each name once. False
/// when none fits.
bool addFitting(std::vector<Dump::VcdVariable> const& nets, QString const& scope,
                std::function<bool(Dump::VcdVariable const&, QString const&)> const& fits,
                QList<SignalItem>& items, QSet<QString>& names)
{
    bool isFound = false;
    for (Dump::VcdVariable const& net : nets) {
        QString const name = nameIn(scope, net);
        if (name.isEmpty() || !net.isBits || net.width == 0 || !fits(net, name))
            continue;
        isFound = true;
        SignalItem const item = itemOf(name, net);
        if (!names.contains(item.name))
            items << item;
        names << item.name;
    }
    return isFound;
}

/// The largest power of two that the windows leave.
int amountFor(NewDesign const& design)
{
    int const share = design.depth / int(fixedWindowNum(unsigned(design.windows)));
    int amount = 1;
    while (amount * 2 <= share)
        amount *= 2;
    if (amount < 2 * OwnSamples)
        throw usage(QStringLiteral("%1 samples are too few for %2 windows")
                        .arg(design.depth)
                        .arg(design.windows));
    return amount;
}

int positionFor(QString const& text, int amount)
{
    bool const isShare = text.endsWith(QLatin1Char('%'));
    bool ok = false;
    double const number = (isShare ? text.chopped(1) : text).toDouble(&ok);
    double const samples = isShare ? number / 100 * amount : number;
    if (!ok || samples < 0 || (isShare && number > 100) || (!isShare && samples >= amount))
        throw usage(QStringLiteral("--position: \"%1\" is neither a sample below %2 nor a share "
                                   "such as 25%")
                        .arg(text)
                        .arg(amount));
    return std::min(int(samples), amount - OwnSamples);
}

/// Units for triggers to come, of the type that can do all, one a net.
void addSpareUnits(int count, SxCore& core)
{
    int net = 0;
    for (int i = 0; i < CoreUnitCount && count > 0 && net < core.dataSignalList.size(); ++i) {
        MatchUnit* const unit = core.matchUnit(i);
        TriggerPort* const port = core.getTrigger(CoreUnitCount - 1 - net);
        if (unit->enabled || !port->signalList.isEmpty())
            continue;
        port->signalList = {core.dataSignalList.at(net)};
        unit->enabled = true;
        unit->trigger = port;
        unit->matchType = MatchRangeEdges;
        unit->counterEnable = true;
        unit->counterWidth = SparesWidth;
        unit->counter = 1;
        unit->value0 = QString(port->singleSignals().size(), QLatin1Char('X'));
        ++net;
        --count;
    }
    if (count > 0)
        throw usage(QStringLiteral("--units: the core has no room for %1 of them").arg(count));
}

/// A core with these signals, and the trigger if it can do it.
QList<TriggerError> planTrigger(NewDesign const& design, QList<SignalItem> const& items,
                                SxCore& core)
{
    core.dataSignalList = core.allSignalList = items;
    if (!design.trigger.isEmpty())
        return planUnits(design.trigger, core);
    core.expressionType = ExpressionDynamic;
    return {};
}

QByteArray standardText(NewDesign const& design, QList<SignalItem> const& items,
                        MadeDesign const& made)
{
    SxCore core(0);
    core.sampleClock = design.clock;
    core.storageDepth = design.depth;
    core.windowNum = design.windows;
    core.captureAmount = made.amount;
    core.triggerPos = made.position;
    core.moduleName = QStringLiteral("rehearsal");
    QList<TriggerError> const errors = planTrigger(design, items, core);
    if (!errors.isEmpty())
        throw triggerFailure(design.trigger, errors);
    addSpareUnits(design.units, core);
    return writeVekConfigToString({&core}).toLatin1();
}

QByteArray liteText(NewDesign const& design, QList<SignalItem> const& items)
{
    if (!design.trigger.isEmpty() || design.units > 0 || design.windows != 1)
        throw usage(QStringLiteral("--lite: a Lite core has one window, and neither trigger nor "
                                   "units"));
    SXCore_Lite core;
    core.sampleClock = design.clock;
    core.captureAmount = design.depth;
    core.moduleName = QStringLiteral("rehearsal");
    core.dataSignalList = core.allSignalList = items;
    return writeVekConfigToString_Lite({&core}).toUtf8();
}

QByteArray benchText(NewDesign const& design, MadeDesign const& made)
{
    QDir const folder = QFileInfo(made.bench).absoluteDir();
    QJsonObject stimulus{
        {QStringLiteral("vcd"), folder.relativeFilePath(QFileInfo(design.dump).absoluteFilePath())},
        {QStringLiteral("clock"), design.clock}};
    if (!design.scope.isEmpty())
        stimulus.insert(QStringLiteral("scope"), design.scope);
    QJsonObject const json{{QStringLiteral("device"), design.device},
                           {QStringLiteral("design"), QFileInfo(made.configuration).fileName()},
                           {QStringLiteral("stimulus"), stimulus}};
    return QJsonDocument(json).toJson();
}

bool isOurs(QString const& path)
{
    return !QFile::exists(path) || !rehearsalBench(path).isEmpty();
}

void write(QString const& path, QByteArray const& bytes)
{
    QString error;
    if (!writeWholeFile(path, bytes, error))
        throw Failure{Status::Output, QStringLiteral("%1: %2").arg(path, error)};
}

} // namespace

std::vector<Dump::VcdVariable> designNets(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure{Status::Configuration,
                      QStringLiteral("%1: %2").arg(path, file.errorString())};
    std::vector<Dump::VcdVariable> nets;
    Dump::VcdReader reader(file);
    if (!reader.readHeader([&nets](Dump::VcdVariable const& net) { nets.push_back(net); }))
        throw Failure{Status::Configuration, QStringLiteral("%1: %2").arg(path, reader.error())};
    return nets;
}

QList<SignalItem> designSignals(NewDesign const& design, std::vector<Dump::VcdVariable> const& nets)
{
    QList<SignalItem> items;
    QSet<QString> names;
    auto const isChosen = [&design](Dump::VcdVariable const& net, QString const&) {
        return design.paths.contains(net.path);
    };
    addFitting(nets, design.scope, isChosen, items, names);
    for (QString const& text : design.patterns) {
        Dump::NetPattern const pattern(text);
        auto const fits = [&pattern](Dump::VcdVariable const&, QString const& name) {
            return pattern.fits(name.toUtf8());
        };
        if (!addFitting(nets, design.scope, fits, items, names))
            throw usage(QStringLiteral("no net of %1 fits \"%2\". Try vek nets.")
                            .arg(design.scope.isEmpty() ? design.dump : design.scope, text));
    }
    return items;
}

QList<TriggerError> designTriggerErrors(NewDesign const& design, QList<SignalItem> const& items)
{
    SxCore core(0);
    return planTrigger(design, items, core);
}

MadeDesign makeDesign(NewDesign const& design)
{
    MadeDesign made;
    made.configuration = design.prefix + QStringLiteral(".vek");
    made.bench = design.prefix + QStringLiteral(".json");
    if (!isOurs(made.configuration) ||
        (QFile::exists(made.bench) && !QFile::exists(made.configuration)))
        throw usage(QStringLiteral("%1 is there already, and not made by vek new")
                        .arg(isOurs(made.configuration) ? made.bench : made.configuration));
    QList<SignalItem> const items = designSignals(design, designNets(design.dump));
    made.signalCount = flatSignals(items).size();
    made.amount = design.isLite ? design.depth : amountFor(design);
    made.position = design.isLite ? 0 : positionFor(design.position, made.amount);
    QByteArray const text =
        design.isLite ? liteText(design, items) : standardText(design, items, made);
    write(made.configuration, markedForRehearsal(text, made.configuration, made.bench));
    write(made.bench, benchText(design, made));
    return made;
}

} // namespace VEK::Cli
