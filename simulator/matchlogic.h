#pragma once

#include "dump/sampletable.h"
#include "simulator/design.h"

#include <QBitArray>

#include <vector>

namespace VEK::Simulator {

/// Gathers the signals of one trigger port out of sample rows, as words whose first signal is the
/// highest bit of word 0.
class PortWires
{
public:
    PortWires() = default;
    explicit PortWires(BuiltPort const& port);

    /// Takes in the next row; the one that was `now()` becomes `before()`.
    void sample(quint64 const* row);

    int width() const { return m_width; }
    quint64 const* now() const { return m_now.data(); }
    quint64 const* before() const { return m_before.data(); }

private:
    /// A run of neighbouring signals that lie side by side in the row as well.
    struct Move
    {
        int from = 0;
        int to = 0;
        int shift = 0; ///< To the right; negative: to the left.
        quint64 mask = 0;
    };

    int m_width = 0;
    std::vector<Move> m_moves;
    std::vector<quint64> m_now;
    std::vector<quint64> m_before;
};

/// One match unit with its counter, as its registers set it up.
class MatchLogic
{
public:
    struct Registers
    {
        QBitArray a, b, c, control, counter;
    };

    /// `counter` counts only when the unit was built with one.
    MatchLogic(Registers const& registers, int portWidth, bool hasCounter);

    /// Loads the counter.
    void reload() { m_count = m_reload; }
    /// Whether the unit fires on a sample; counts.
    bool fires(PortWires const& port);

private:
    bool matches(PortWires const& port) const;
    bool allPositionsMatch(PortWires const& port) const;
    static int compare(quint64 const* x, std::vector<quint64> const& bound);

    std::vector<quint64> m_a, m_b, m_c;
    std::vector<quint64> m_used; ///< A one for each position of the port.
    unsigned m_func = 0;
    bool m_isContinuous = false;
    bool m_hasCounter = false;
    quint32 m_reload = 0;
    quint32 m_count = 0;
};

} // namespace VEK::Simulator
