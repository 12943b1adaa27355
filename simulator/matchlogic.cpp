#include "simulator/matchlogic.h"

#include "simulator/bitfield.h"

namespace VEK::Simulator {
namespace {

constexpr int ControlBits = 4;

} // namespace

PortWires::PortWires(BuiltPort const& port)
    : m_width(int(port.positions.size())), m_now(std::size_t(Dump::SampleTable::wordsFor(m_width))),
      m_before(m_now)
{
    for (int to = 0; to < m_width; ++to) {
        int const from = port.positions[std::size_t(to)];
        Move move{from / 64, to / 64, to % 64 - from % 64, Dump::SampleTable::bitOf(from)};
        bool const joins = !m_moves.empty() && m_moves.back().from == move.from &&
                           m_moves.back().to == move.to && m_moves.back().shift == move.shift;
        if (joins)
            m_moves.back().mask |= move.mask;
        else
            m_moves.push_back(move);
    }
}

void PortWires::sample(quint64 const* row)
{
    m_now.swap(m_before);
    std::fill(m_now.begin(), m_now.end(), 0);
    for (Move const& move : m_moves) {
        quint64 const bits = row[move.from] & move.mask;
        m_now[std::size_t(move.to)] |= move.shift >= 0 ? bits >> move.shift : bits << -move.shift;
    }
}

MatchLogic::MatchLogic(Registers const& registers, int portWidth, bool hasCounter)
    : m_a(lastPositions(registers.a, portWidth)), m_b(lastPositions(registers.b, portWidth)),
      m_c(lastPositions(registers.c, portWidth)),
      m_used(lastPositions(QBitArray(portWidth, true), portWidth)), m_hasCounter(hasCounter),
      m_reload(registerNumber(registers.counter))
{
    unsigned const control = registerNumber(registers.control) & ((1u << ControlBits) - 1);
    m_isContinuous = control & 8;
    m_func = Function(control & 7);
    reload();
}

bool MatchLogic::count(bool isMatch)
{
    if (!m_hasCounter)
        return isMatch;
    if (isMatch && m_count == 0) {
        reload();
        return true;
    }
    if (isMatch)
        --m_count;
    else if (m_isContinuous)
        reload();
    return false;
}

bool MatchLogic::matches(PortWires const& port) const
{
    quint64 const* x = port.now();
    switch (m_func) {
    case Equal:
        return allPositionsMatch(port);
    case NotEqual:
        return !allPositionsMatch(port);
    case Greater:
        return compare(x, m_a) > 0;
    case GreaterEqual:
        return compare(x, m_a) >= 0;
    case Less:
        return compare(x, m_b) < 0;
    case LessEqual:
        return compare(x, m_b) <= 0;
    case InRange:
        return compare(x, m_a) >= 0 && compare(x, m_b) <= 0;
    default: // NotInRange
        return compare(x, m_a) < 0 || compare(x, m_b) > 0;
    }
}

bool MatchLogic::allPositionsMatch(PortWires const& port) const
{
    for (std::size_t i = 0; i < m_used.size(); ++i) {
        if (failures(port, i))
            return false;
    }
    return true;
}

int MatchLogic::compare(quint64 const* x, std::vector<quint64> const& bound)
{
    for (std::size_t i = 0; i < bound.size(); ++i) {
        if (x[i] != bound[i])
            return x[i] < bound[i] ? -1 : 1;
    }
    return 0;
}

} // namespace VEK::Simulator
