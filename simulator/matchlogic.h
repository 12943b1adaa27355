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
    /// Whether what the unit compares holds on a sample.
    bool matches(PortWires const& port) const;
    /// Counts a sample that matched or did not; true when the unit fires on it.
    bool count(bool isMatch);

    /// As the control register numbers them.
    enum Function : unsigned {
        Equal,
        NotEqual,
        Greater,
        Less,
        GreaterEqual,
        LessEqual,
        InRange,
        NotInRange
    };
    Function function() const { return m_func; }
    /// The values of the positions in words as `PortWires` has them, zeros behind the last one.
    std::vector<quint64> const& a() const { return m_a; }
    std::vector<quint64> const& b() const { return m_b; }
    std::vector<quint64> const& c() const { return m_c; }
    /// The positions in word `i` that are not as "equal" asks for.
    quint64 failures(PortWires const& port, std::size_t i) const
    {
        quint64 const x = port.now()[i];
        quint64 const before = port.before()[i];
        quint64 const a = m_a[i];
        quint64 const b = m_b[i];
        quint64 const rises = ~before & x;
        quint64 const falls = before & ~x;
        quint64 const either = before ^ x;
        quint64 const level = ~b | ~(x ^ a);
        quint64 const edge =
            (~a & ~b & rises) | (a & ~b & falls) | (~a & b & either) | (a & b & ~either);
        return ~((~m_c[i] & level) | (m_c[i] & edge)) & m_used[i];
    }
    /// Negative, 0 or positive, as the number in `x` is below, equal to or above the bound.
    static int compare(quint64 const* x, std::vector<quint64> const& bound);

    bool hasCounter() const { return m_hasCounter; }
    bool isContinuous() const { return m_isContinuous; }
    /// Matches that the counter takes to fire, and how many it has so far.
    quint64 needed() const { return quint64(m_reload) + 1; }
    quint64 counted() const { return m_reload - m_count; }

private:
    bool allPositionsMatch(PortWires const& port) const;

    std::vector<quint64> m_a, m_b, m_c;
    std::vector<quint64> m_used; ///< A one for each position of the port.
    Function m_func = Equal;
    bool m_isContinuous = false;
    bool m_hasCounter = false;
    quint32 m_reload = 0;
    quint32 m_count = 0;
};

} // namespace VEK::Simulator
