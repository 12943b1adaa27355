#include "cli/expressiongap.h"

#include <map>

namespace VEK::Cli {

using Simulator::TruthTable;

namespace {

constexpr unsigned Combinations = 1u << TruthTable::Units;

/// The next smaller subset of `units`; 0 comes last.
unsigned nextSubset(unsigned subset, unsigned units)
{
    return (subset - 1) & units;
}

unsigned unitsOf(TruthTable const& table, unsigned units)
{
    unsigned found = 0;
    for (unsigned subset = units;; subset = nextSubset(subset, units)) {
        for (unsigned rest = subset & ~found; rest; rest &= rest - 1) {
            unsigned const bit = rest & ~(rest - 1);
            if (table.at(subset) != table.at(subset ^ bit))
                found |= bit;
        }
        if (subset == 0)
            return found;
    }
}

/// For each combination of the units the nearest one that makes the table true.
class NearestTrue
{
public:
    NearestTrue(TruthTable const& table, unsigned units) : m_origin(Combinations, None)
    {
        std::vector<unsigned> reached;
        for (unsigned subset = units;; subset = nextSubset(subset, units)) {
            if (table.at(subset)) {
                m_origin[subset] = int(subset);
                reached.push_back(subset);
            }
            if (subset == 0)
                break;
        }
        for (std::size_t i = 0; i < reached.size(); ++i) { // grows on the way
            for (unsigned rest = units; rest; rest &= rest - 1) {
                unsigned const next = reached[i] ^ (rest & ~(rest - 1));
                if (m_origin[next] != None)
                    continue;
                m_origin[next] = m_origin[reached[i]];
                reached.push_back(next);
            }
        }
    }

    bool isAnywhere() const { return m_origin[0] != None; }
    unsigned missing(unsigned combination) const
    {
        return unsigned(m_origin[combination]) ^ combination;
    }

private:
    static constexpr int None = -1;
    std::vector<int> m_origin;
};

} // namespace

ExpressionGap gapOf(TruthTable const& table, unsigned units, CombinationCounts const& outputs)
{
    ExpressionGap gap;
    gap.units = unitsOf(table, units);
    gap.alone.resize(TruthTable::Units);
    NearestTrue const nearest(table, gap.units);
    gap.canBeTrue = nearest.isAnywhere();
    std::map<unsigned, Sighting> seen; // by the outputs of the units that count
    for (unsigned const combination : outputs.combinations()) {
        if (gap.canBeTrue && !table.at(combination))
            seen[combination & gap.units].add(outputs.seen(combination));
    }
    int fewest = TruthTable::Units + 1;
    for (auto const& [combination, sighting] : seen) {
        for (int bit = 0; bit < TruthTable::Units; ++bit) {
            if ((gap.units >> bit & 1) && table.at(combination ^ (1u << bit)))
                gap.alone[std::size_t(bit)].add(sighting);
        }
        unsigned const missing = nearest.missing(combination);
        int const count = int(qPopulationCount(missing));
        if (count > fewest || (count == fewest && sighting.count <= gap.seen.count))
            continue;
        fewest = count;
        gap.nearest = combination;
        gap.missing = missing;
        gap.seen = sighting;
    }
    return gap;
}

} // namespace VEK::Cli
