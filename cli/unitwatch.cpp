#include "cli/unitwatch.h"

#include <algorithm>
#include <cstring>

namespace VEK::Cli {

using Simulator::MatchLogic;
using Simulator::PortWires;

namespace {

/// Different sets of terms that are told of one unit.
constexpr std::size_t MaxMisses = 8;

/// Terms that are told apart; a port of more has the rest in the last one.
constexpr std::size_t MaxTerms = 64;

int countOnes(quint64 word)
{
    return int(qPopulationCount(word));
}

} // namespace

void Sighting::add(Sighting const& other)
{
    if (other.count == 0)
        return;
    first = count ? std::min(first, other.first) : other.first;
    last = std::max(last, other.last);
    count += other.count;
}

void ValueSet::add(quint64 value)
{
    if (value == m_last && !m_values.empty())
        return;
    m_last = value;
    m_lowest = std::min(m_lowest, value);
    m_highest = std::max(m_highest, value);
    if (m_hasMore || std::find(m_values.begin(), m_values.end(), value) != m_values.end())
        return;
    m_hasMore = m_values.size() == MaxValues;
    if (!m_hasMore)
        m_values.push_back(value);
}

std::vector<quint64> ValueSet::values() const
{
    std::vector<quint64> values = m_hasMore ? std::vector<quint64>() : m_values;
    std::sort(values.begin(), values.end());
    return values;
}

QString ValueSet::text(int width) const
{
    if (m_hasMore)
        return QStringLiteral("more than %1 values from %2 to %3")
            .arg(MaxValues)
            .arg(numberText(m_lowest, width), numberText(m_highest, width));
    QStringList texts;
    for (quint64 const value : values())
        texts << numberText(value, width);
    return joined(texts);
}

UnitWatch::UnitWatch(MatchWords const& text)
    : m_text(text), m_held(std::min(text.terms().size(), MaxTerms)),
      m_wrong(std::size_t((text.width() + 63) / 64)), m_fewest(int(MaxTerms) + 1),
      m_values(text.groups().size())
{}

void UnitWatch::take(qint64 sample, MatchLogic const& logic, PortWires const& port)
{
    bool isNew = m_seen.empty();
    for (std::size_t i = 0; i < m_seen.size(); ++i) // a word as a rule
        isNew |= m_seen[i] != port.now()[i];
    if (isNew) { // most samples leave a port as it was
        m_seen.assign(port.now(), port.now() + m_wrong.size());
        for (std::size_t i = 0; i < m_values.size(); ++i)
            m_values[i].add(m_text.groups()[i].value(port.now()));
    }
    if (logic.function() == MatchLogic::Equal)
        takeEqual(sample, logic, port);
    else if (isNew && logic.function() != MatchLogic::NotEqual &&
             logic.function() != MatchLogic::NotInRange)
        takeNumber(sample, logic, port);
}

void UnitWatch::takeEqual(qint64 sample, MatchLogic const& logic, PortWires const& port)
{
    for (std::size_t i = 0; i < m_wrong.size(); ++i)
        m_wrong[i] = logic.failures(port, i);
    std::vector<MatchTerm> const& terms = m_text.terms();
    quint64 failing = 0;
    for (std::size_t i = 0; i < terms.size(); ++i) {
        bool const fails = m_wrong[terms[i].word] & terms[i].mask;
        failing |= quint64(fails) << std::min(i, MaxTerms - 1);
        if (i < m_held.size())
            m_held[i] += !fails;
    }
    int const count = countOnes(failing);
    if (count > m_fewest)
        return;
    if (count < m_fewest)
        m_misses.clear();
    m_fewest = count;
    takeMiss(sample, failing, port);
}

void UnitWatch::takeMiss(qint64 sample, quint64 failing, PortWires const& port)
{
    auto miss = std::find_if(m_misses.begin(), m_misses.end(),
                             [failing](Miss const& m) { return m.terms == failing; });
    if (miss == m_misses.end()) {
        if (m_misses.size() == MaxMisses)
            return;
        miss = m_misses.insert(m_misses.end(), Miss());
        miss->terms = failing;
    }
    miss->seen.add(sample);
    int bits = 0;
    for (quint64 const word : m_wrong)
        bits += countOnes(word);
    if (miss->sample >= 0 && bits >= miss->bits)
        return;
    miss->bits = bits;
    miss->sample = sample;
    miss->wrong = m_wrong;
    miss->now.assign(port.now(), port.now() + m_wrong.size());
    miss->before.assign(port.before(), port.before() + m_wrong.size());
}

/// The greatest value that was too low, the least one that was too high.
void UnitWatch::takeNumber(qint64 sample, MatchLogic const& logic, PortWires const& port)
{
    MatchLogic::Function const function = logic.function();
    quint64 const* const x = port.now();
    bool const hasLow = function != MatchLogic::Less && function != MatchLogic::LessEqual;
    bool const isLow = function == MatchLogic::Greater || function == MatchLogic::GreaterEqual ||
                       (hasLow && MatchLogic::compare(x, logic.a()) < 0);
    Extreme& extreme = isLow ? m_below : m_above;
    int const order = extreme.sample < 0 ? 1 : MatchLogic::compare(x, extreme.value);
    if (extreme.sample >= 0 && (isLow ? order <= 0 : order >= 0))
        return;
    extreme.sample = sample;
    extreme.value.assign(x, x + m_wrong.size());
}

std::vector<UnitWatch::Miss> UnitWatch::misses() const
{
    std::vector<Miss> misses = m_misses;
    std::stable_sort(misses.begin(), misses.end(),
                     [](Miss const& a, Miss const& b) { return a.seen.count > b.seen.count; });
    return misses;
}

} // namespace VEK::Cli
