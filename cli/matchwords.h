#pragma once

#include "cli/portgroups.h"
#include "simulator/matchlogic.h"

namespace VEK::Cli {

/// A part of what an "equal" unit asks for: the value of a group, or the edge of one signal. All
/// must hold at once.
struct MatchTerm
{
    std::size_t word = 0;
    quint64 mask = 0;      ///< The signals that it looks at, in that word.
    std::size_t group = 0; ///< Place of their group.
    bool isEdge = false;
    QString label;   ///< Of the group or the signal.
    QString present; ///< "valid rises", "address == 0x50".
    QString past;    ///< "valid rose", "address was 0x50".
    QString never;   ///< "valid never rose", "address was never 0x50".
};

/// What a match unit compares as its registers say it, in words.
class MatchWords
{
public:
    /// `groups` are those of a port with `width` signals.
    MatchWords(Simulator::MatchLogic const& logic, std::vector<PortGroup> groups, int width);

    std::vector<PortGroup> const& groups() const { return m_groups; }
    int width() const { return m_width; }
    /// Of the functions "equal" and "not equal"; none when every signal is "don't care".
    std::vector<MatchTerm> const& terms() const { return m_terms; }
    /// "address in 0x50..0x57".
    QString const& present() const { return m_present; }
    /// "address was 0x50 to 0x57".
    QString const& past() const { return m_past; }
    /// "address was never 0x50 to 0x57"; of "equal" and "not equal" without use.
    QString const& never() const { return m_never; }
    /// The whole port: its group's label, or "{valid, address}".
    QString const& label() const { return m_label; }

private:
    void addTerms(Simulator::MatchLogic const& logic);
    void addLevel(Simulator::MatchLogic const& logic, std::size_t group);
    void addEdge(Simulator::MatchLogic const& logic, std::size_t group, int position);
    void describeEqual(bool isNegated);
    void describeNumber(Simulator::MatchLogic const& logic);

    std::vector<PortGroup> m_groups;
    int m_width;
    std::vector<MatchTerm> m_terms;
    QString m_label;
    QString m_present;
    QString m_past;
    QString m_never;
};

/// "a, b and c".
QString joined(QStringList const& texts);

/// "once", "twice", "12 times".
QString timesText(qint64 count);

} // namespace VEK::Cli
