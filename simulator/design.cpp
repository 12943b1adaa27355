#include "simulator/design.h"

#include "image/registermap.h"
#include "model/capturecore.h"
#include "model/standardfile.h"

#include <QHash>

namespace VEK::Simulator {
namespace {

/// As many as the core select tells apart.
constexpr int MaxCores = 16;
constexpr int MaxDepth = 1 << 22;
constexpr int MaxSignals = 1 << 16;
/// As many as there are addresses for tables.
constexpr int MaxExpressions =
    (0x10000 - Register::ExpressionTable) / Register::ExpressionTableStep;

/// Gives every signal of a core its place in a row. The captured ones come first, a name that
/// stands twice among them has two places.
class Rows
{
public:
    explicit Rows(BuiltCore& built) : m_built(built) {}

    void addData(QString const& name)
    {
        if (!m_places.contains(name))
            m_places.insert(name, m_built.signalNames.size());
        m_built.signalNames.append(name);
    }

    int place(QString const& name)
    {
        if (!m_places.contains(name))
            addData(name);
        return m_places.value(name);
    }

private:
    BuiltCore& m_built;
    QHash<QString, int> m_places;
};

void buildSignals(SxCore const& core, BuiltCore& built)
{
    Rows rows(built);
    for (SignalItem const& item : core.dataSignals())
        rows.addData(item.name);
    built.dataCount = built.signalNames.size();

    QHash<TriggerPort const*, int> places;
    for (TriggerPort const* port : core.availableTriggers()) {
        BuiltPort wires;
        for (SignalItem const& item : port->singleSignals())
            wires.positions.push_back(rows.place(item.name));
        places.insert(port, int(built.ports.size()));
        built.ports.push_back(wires);
    }
    for (int i = 0; i < BuiltCore::Units; ++i) {
        MatchUnit const* unit = core.matchUnit(i);
        built.units[i].port = unit ? places.value(unit->trigger, -1) : -1;
        built.units[i].hasCounter = unit && unit->counterEnable;
    }
}

bool buildExpressions(SxCore const& core, BuiltCore& built, QString& error)
{
    if (core.expressions.size() > MaxExpressions) {
        error = QStringLiteral("more than %1 expressions").arg(MaxExpressions);
        return false;
    }
    for (QString const& text : core.expressions) {
        TruthTable table;
        unsigned units = 0;
        if (!compileExpression(text, table, units, error)) {
            error = QStringLiteral("expression \"%1\": %2").arg(text.left(60), error);
            return false;
        }
        for (int i = 0; i < BuiltCore::Units; ++i) {
            if ((units >> i & 1) && built.units[i].port < 0) {
                error = QStringLiteral("expression \"%1\": unit M%2 watches no port")
                            .arg(text.left(60))
                            .arg(i);
                return false;
            }
        }
        built.expressions.push_back(table);
        built.expressionTexts.append(text);
        built.expressionUnits |= units;
    }
    return true;
}

} // namespace

bool buildCore(SxCore const& core, BuiltCore& built, QString& error)
{
    built = BuiltCore();
    built.index = core.index;
    built.shiftWidth = core.dataOutShiftWidth();
    built.storageDepth = core.storageDepth;
    built.isDynamic = core.expressionType == ExpressionDynamic;
    built.hasCaptureInit = core.captureInitDataEnabled;
    built.sampleClock = core.sampleClock;
    if (built.shiftWidth > MaxSignals) {
        error = QStringLiteral("its registers are wider than %1 bits").arg(MaxSignals);
        return false;
    }
    if (built.storageDepth < 1 || built.storageDepth > MaxDepth) {
        error = QStringLiteral("the storage depth %1 is not between 1 and %2")
                    .arg(built.storageDepth)
                    .arg(MaxDepth);
        return false;
    }
    buildSignals(core, built);
    return built.isDynamic || buildExpressions(core, built, error);
}

bool readStandardDesign(QString const& path, std::vector<BuiltCore>& cores, QString& error)
{
    cores.clear();
    error.clear();
    bool ok = false;
    QString id;
    QList<SxCore*> const read = readVEKConfigFromXml(path, id, &ok, &error);
    if (ok && read.isEmpty())
        error = QStringLiteral("there is no core in it");
    if (read.size() > MaxCores)
        error = QStringLiteral("there are more than %1 cores in it").arg(MaxCores);
    for (SxCore const* core : read) {
        cores.emplace_back();
        if (error.isEmpty() && !buildCore(*core, cores.back(), error))
            error = QStringLiteral("core %1: %2").arg(core->index).arg(error);
    }
    qDeleteAll(read);
    if (error.isEmpty())
        return true;
    error = QStringLiteral("%1: %2").arg(path, error);
    return false;
}

} // namespace VEK::Simulator
