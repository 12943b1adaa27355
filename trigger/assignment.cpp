#include "trigger/assignment.h"

#include "image/matchvalue.h"

#include <QSet>

#include <algorithm>

namespace VEK::Trigger {
namespace {

/// What its register holds.
constexpr int MostCounted = 1 << 16;

QStringList netsOf(TriggerPort const& port)
{
    QStringList nets;
    for (SignalItem const& item : port.singleSignals())
        nets.append(item.name);
    return nets;
}

/// The nets that a unit must see.
QStringList neededNets(Leaf const& leaf)
{
    return leaf.isNumber || leaf.bits.isEmpty() ? leaf.nets : QStringList(leaf.bits.keys());
}

bool sees(TriggerPort const& port, Leaf const& leaf)
{
    QStringList const nets = netsOf(port);
    if (leaf.isNumber)
        return nets == leaf.nets;
    QStringList const needed = neededNets(leaf);
    return std::all_of(needed.begin(), needed.end(),
                       [&](QString const& net) { return nets.contains(net); });
}

bool hasTypeFor(MatchUnit const& unit, Leaf const& leaf)
{
    bool const hasEdges = unit.matchType == MatchBasicEdges ||
                          unit.matchType == MatchExtendedEdges || unit.matchType == MatchRangeEdges;
    return optionalFunctions(unit.matchType).contains(leaf.unitFunc()) &&
           (hasEdges || !leaf.needsEdges());
}

int mostCounted(MatchUnit const& unit)
{
    return std::min(counterLimit(unit.counterWidth), MostCounted);
}

bool hasCounterFor(MatchUnit const& unit, Leaf const& leaf)
{
    return !leaf.isCounted() || (unit.counterEnable && leaf.count <= mostCounted(unit));
}

QString kindNeeded(Leaf const& leaf)
{
    QString const edges = leaf.needsEdges() ? QStringLiteral(" with edges") : QString();
    if (leaf.isNumber && leaf.func == FuncInRange)
        return QStringLiteral("a range unit");
    return leaf.isNumber ? QStringLiteral("an extended or range unit")
                         : QStringLiteral("a unit") + edges;
}

QString listed(QStringList const& words)
{
    if (words.size() < 2)
        return words.join(QString());
    return words.mid(0, words.size() - 1).join(QLatin1String(", ")) + QStringLiteral(" and ") +
           words.last();
}

QString portName(TriggerPort const& port)
{
    return QStringLiteral("trigger port %1").arg(port.index);
}

/// No port has what the leaf watches.
QString portMissing(Leaf const& leaf, SxCore const& core)
{
    QStringList const needed = neededNets(leaf);
    QStringList seen;
    QStringList ports;
    for (TriggerPort const* port : core.triggers) {
        QStringList const nets = netsOf(*port);
        seen += nets;
        if (std::any_of(needed.begin(), needed.end(),
                        [&](QString const& net) { return nets.contains(net); }))
            ports.append(QString::number(port->index));
    }
    QStringList unwatched;
    std::copy_if(needed.begin(), needed.end(), std::back_inserter(unwatched),
                 [&](QString const& net) { return !seen.contains(net); });
    if (!unwatched.isEmpty())
        return QStringLiteral("no trigger port watches %1").arg(listed(unwatched.mid(0, 3)));
    bool const isTogether =
        std::any_of(core.triggers.begin(), core.triggers.end(), [&](TriggerPort const* port) {
            Leaf bits = leaf;
            bits.isNumber = false;
            return sees(*port, bits);
        });
    if (isTogether)
        return QStringLiteral("needs a port of exactly these signals in this order; trigger port "
                              "%1 is another")
            .arg(listed(ports));
    return QStringLiteral(
               "one unit watches one port, and these signals lie on the trigger ports %1")
        .arg(listed(ports));
}

} // namespace

bool canTest(MatchUnit const& unit, Leaf const& leaf)
{
    return sees(*unit.trigger, leaf) && hasTypeFor(unit, leaf) && hasCounterFor(unit, leaf);
}

QString whatIsMissing(Leaf const& leaf, QList<MatchUnit*> const& units, SxCore const& core)
{
    bool const hasPort = std::any_of(core.triggers.begin(), core.triggers.end(),
                                     [&](TriggerPort const* port) { return sees(*port, leaf); });
    if (!hasPort)
        return portMissing(leaf, core);
    QStringList kinds;
    QList<QStringList> unitsOfKind;
    QStringList ports;
    for (TriggerPort const* port : core.triggers) {
        if (sees(*port, leaf))
            ports.append(portName(*port));
    }
    for (MatchUnit const* unit : units) {
        if (!sees(*unit->trigger, leaf))
            continue;
        QString const type = type2string(unit->matchType);
        QString counter;
        if (leaf.isCounted())
            counter = unit->counterEnable
                          ? QStringLiteral(", which counts to %1").arg(mostCounted(*unit))
                          : QStringLiteral(" without a counter");
        QString const kind =
            (type.isEmpty() ? QStringLiteral("of an unknown type") : type) + counter;
        if (!kinds.contains(kind)) {
            kinds.append(kind);
            unitsOfKind.append(QStringList());
        }
        unitsOfKind[kinds.indexOf(kind)].append(QStringLiteral("M%1").arg(unit->index));
    }
    QStringList there;
    for (int i = 0; i < kinds.size(); ++i)
        there.append(
            QStringLiteral("%1 there %2 %3")
                .arg(listed(unitsOfKind.at(i)),
                     unitsOfKind.at(i).size() > 1 ? QStringLiteral("are") : QStringLiteral("is"),
                     kinds.at(i)));
    QString const counter =
        leaf.isCounted() ? QStringLiteral(" with a counter to %1").arg(leaf.count) : QString();
    return QStringLiteral("needs %1%2 on %3; %4")
        .arg(kindNeeded(leaf), counter, ports.join(QLatin1String(" or ")),
             there.isEmpty() ? QStringLiteral("none that can be used is there") : listed(there));
}

namespace {

/// Gives demand `i` a unit, if need be by moving those that have theirs.
bool seat(int i, QVector<Demand> const& demands, QVector<int>& holders, QSet<int>& tried)
{
    for (int const unit : demands.at(i).candidates) {
        if (tried.contains(unit))
            continue;
        tried.insert(unit);
        if (holders.at(unit) < 0 || seat(holders.at(unit), demands, holders, tried)) {
            holders[unit] = i;
            return true;
        }
    }
    return false;
}

} // namespace

QVector<int> matching(QVector<Demand> const& demands)
{
    QVector<int> holders(CoreUnitCount, -1);
    for (int i = 0; i < demands.size(); ++i) {
        QSet<int> tried;
        if (!seat(i, demands, holders, tried))
            return {};
    }
    QVector<int> units(demands.size());
    for (int unit = 0; unit < holders.size(); ++unit) {
        if (holders.at(unit) >= 0)
            units[holders.at(unit)] = unit;
    }
    return units;
}

DemandSearch::DemandSearch(QVector<Leaf> const& leaves, QList<MatchUnit*> const& units)
    : m_leaves(leaves), m_units(units)
{}

bool DemandSearch::run(QVector<LeafGroup> const& groups, Accept const& accept)
{
    m_groups = groups;
    m_accept = accept;
    m_clusters.clear();
    return place(0, 0);
}

/// Able units stay free for who needs them, those with a counter for who counts.
QVector<int> DemandSearch::candidatesOf(Leaf const& leaf) const
{
    QList<MatchUnit*> able;
    for (MatchUnit* unit : m_units) {
        if (canTest(*unit, leaf))
            able.append(unit);
    }
    std::stable_sort(able.begin(), able.end(), [](MatchUnit const* a, MatchUnit const* b) {
        return std::make_pair(a->matchType, a->counterEnable) <
               std::make_pair(b->matchType, b->counterEnable);
    });
    QVector<int> candidates;
    for (MatchUnit const* unit : able)
        candidates.append(unit->index);
    return candidates;
}

bool DemandSearch::place(int group, int member)
{
    if (member == 0 && group > 0) { // a group is done: what stands now stays
        if (++m_effort > MaxEffort)
            return false;
        Demands const demands = demandsOf();
        if (!demands.demands.isEmpty() && matching(demands.demands).isEmpty())
            return false;
    }
    if (group == m_groups.size())
        return m_accept(demandsOf());
    LeafGroup const& now = m_groups.at(group);
    int const index = now.leaves.at(member);
    bool const isLast = member + 1 == now.leaves.size();
    auto const goOn = [&] { return isLast ? place(group + 1, 0) : place(group, member + 1); };
    bool const isAlone = now.leaves.size() == 1;
    Leaf const leaf = isAlone ? m_leaves.at(index) : memberOf(now, m_leaves.at(index));
    for (int i = 0; i < m_clusters.size(); ++i) {
        if (m_clusters.at(i).group != group)
            continue;
        Cluster const before = m_clusters.at(i);
        std::optional<Leaf> const both = merged(before.leaf, leaf);
        QVector<int> const candidates = both ? candidatesOf(*both) : QVector<int>();
        if (candidates.isEmpty())
            continue;
        m_clusters[i].leaf = *both;
        m_clusters[i].candidates = candidates;
        m_clusters[i].members.append(index);
        if (goOn())
            return true;
        m_clusters[i] = before;
        if (isGivenUp())
            return false;
    }
    m_clusters.append({leaf, candidatesOf(leaf), group, {index}});
    bool const isDone = goOn();
    m_clusters.removeLast();
    return isDone;
}

/// Equal clusters, and opposite ones, are one demand.
Demands DemandSearch::demandsOf() const
{
    Demands result;
    result.shares.resize(m_leaves.size());
    for (Cluster const& cluster : m_clusters) {
        LeafGroup const& group = m_groups.at(cluster.group);
        Leaf leaf = cluster.leaf;
        if (group.leaves.size() > 1 && group.kind == Formula::Or)
            complement(leaf);
        int at = 0;
        while (at < result.demands.size()) {
            Leaf const& other = result.demands.at(at).leaf;
            Leaf turned = leaf;
            if (!leaf.isCounted())
                complement(turned);
            if (isSameTest(other, leaf) || isSameTest(other, turned))
                break;
            ++at;
        }
        if (at == result.demands.size())
            result.demands.append({leaf, cluster.candidates});
        Leaf const& demand = result.demands.at(at).leaf;
        bool const isOpposite = demand.isNegated != leaf.isNegated || !isSameTest(demand, leaf);
        for (int const member : cluster.members)
            result.shares[member] = {at, isOpposite};
    }
    return result;
}

} // namespace VEK::Trigger
