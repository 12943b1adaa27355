#include "cli/matchwords.h"

#include <utility>

namespace VEK::Cli {

using Simulator::MatchLogic;

namespace {

quint64 bitAt(int position)
{
    return quint64(1) << (63 - position % 64);
}

QString labelOfSignal(PortGroup const& group, int position)
{
    if (group.width == 1)
        return group.label;
    // a vector's label ends with its range, a bus has its lowest bit last
    int const colon = group.label.lastIndexOf(QLatin1Char(':'));
    int const bracket = group.label.lastIndexOf(QLatin1Char('['));
    if (group.label.endsWith(QLatin1Char(']')) && bracket > 0 && colon > bracket) {
        int const first = group.label.mid(bracket + 1, colon - bracket - 1).toInt();
        int const last = group.label.mid(colon + 1).chopped(1).toInt();
        int const index = first + (first > last ? -1 : 1) * (position - group.from);
        return QStringLiteral("%1[%2]").arg(group.label.left(bracket)).arg(index);
    }
    return QStringLiteral("%1[%2]").arg(group.label).arg(group.width - 1 - position + group.from);
}

} // namespace

QString joined(QStringList const& texts)
{
    if (texts.size() < 2)
        return texts.join(QString());
    return texts.mid(0, texts.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" and ") +
           texts.last();
}

QString timesText(qint64 count)
{
    if (count == 1)
        return QStringLiteral("once");
    if (count == 2)
        return QStringLiteral("twice");
    return QStringLiteral("%1 times").arg(count);
}

MatchWords::MatchWords(MatchLogic const& logic, std::vector<PortGroup> groups, int width)
    : m_groups(std::move(groups)), m_width(width)
{
    QStringList labels;
    for (PortGroup const& group : m_groups)
        labels << group.label;
    m_label = labels.size() == 1
                  ? labels.first()
                  : QLatin1Char('{') + labels.join(QStringLiteral(", ")) + QLatin1Char('}');
    if (logic.function() == MatchLogic::Equal || logic.function() == MatchLogic::NotEqual) {
        addTerms(logic);
        describeEqual(logic.function() == MatchLogic::NotEqual);
    } else {
        describeNumber(logic);
    }
}

void MatchWords::addTerms(MatchLogic const& logic)
{
    for (std::size_t i = 0; i < m_groups.size(); ++i) {
        PortGroup const& group = m_groups[i];
        addLevel(logic, i);
        for (int position = group.from; position < group.from + group.width; ++position)
            if (logic.c()[group.word()] & bitAt(position))
                addEdge(logic, i, position);
    }
}

/// In hexadecimal when every bit counts, else bit by bit.
void MatchWords::addLevel(MatchLogic const& logic, std::size_t place)
{
    PortGroup const& group = m_groups[place];
    quint64 const compared = logic.b()[group.word()] & ~logic.c()[group.word()] & group.mask();
    if (compared == 0)
        return;
    QString value;
    if (compared == group.mask()) {
        value = numberText(group.value(logic.a().data()), group.width);
    } else {
        value = QStringLiteral("0b");
        for (int position = group.from; position < group.from + group.width; ++position) {
            bool const isOne = logic.a()[group.word()] & bitAt(position);
            value += QLatin1Char(!(compared & bitAt(position)) ? 'x' : isOne ? '1' : '0');
        }
    }
    m_terms.push_back({group.word(), compared, place, false, group.label,
                       QStringLiteral("%1 == %2").arg(group.label, value),
                       QStringLiteral("%1 was %2").arg(group.label, value),
                       QStringLiteral("%1 was never %2").arg(group.label, value)});
}

void MatchWords::addEdge(MatchLogic const& logic, std::size_t place, int position)
{
    static char const* const present[] = {"rises", "changes", "falls", "does not change"};
    static char const* const past[] = {"rose", "changed", "fell", "did not change"};
    static char const* const never[] = {"never rose", "never changed", "never fell",
                                        "never kept its value"};
    PortGroup const& group = m_groups[place];
    bool const a = logic.a()[group.word()] & bitAt(position);
    bool const b = logic.b()[group.word()] & bitAt(position);
    std::size_t const kind = std::size_t(a * 2 + b);
    QString const label = labelOfSignal(group, position);
    m_terms.push_back({group.word(), bitAt(position), place, true, label,
                       label + QLatin1Char(' ') + QLatin1String(present[kind]),
                       label + QLatin1Char(' ') + QLatin1String(past[kind]),
                       label + QLatin1Char(' ') + QLatin1String(never[kind])});
}

void MatchWords::describeEqual(bool isNegated)
{
    QStringList presents;
    QStringList pasts;
    for (MatchTerm const& term : m_terms) {
        presents << term.present;
        pasts << term.past;
    }
    m_present =
        presents.isEmpty() ? QStringLiteral("any value") : presents.join(QStringLiteral(" and "));
    m_past = pasts.isEmpty() ? m_label + QStringLiteral(" had any value") : joined(pasts);
    if (!isNegated)
        return;
    m_present = QStringLiteral("not (%1)").arg(m_present);
    m_past = QStringLiteral("it was not so that %1").arg(m_past);
    if (m_terms.size() == 1 && !m_terms.front().isEdge) {
        m_present = presents.first().replace(QLatin1String(" == "), QLatin1String(" != "));
        m_past = pasts.first().replace(QLatin1String(" was "), QLatin1String(" was other than "));
    }
}

void MatchWords::describeNumber(MatchLogic const& logic)
{
    QString const a = numberText(logic.a().data(), m_width);
    QString const b = numberText(logic.b().data(), m_width);
    auto const set = [this](QString const& present, QString const& past) {
        m_present = m_label + QLatin1Char(' ') + present;
        m_past = m_label + QStringLiteral(" was ") + past;
        m_never = m_label + QStringLiteral(" was never ") + past;
    };
    switch (logic.function()) {
    case MatchLogic::Greater:
        return set(QStringLiteral("> ") + a, QStringLiteral("above ") + a);
    case MatchLogic::GreaterEqual:
        return set(QStringLiteral(">= ") + a, QStringLiteral("at least ") + a);
    case MatchLogic::Less:
        return set(QStringLiteral("< ") + b, QStringLiteral("below ") + b);
    case MatchLogic::LessEqual:
        return set(QStringLiteral("<= ") + b, QStringLiteral("at most ") + b);
    case MatchLogic::InRange:
        return set(QStringLiteral("in %1..%2").arg(a, b), QStringLiteral("%1 to %2").arg(a, b));
    default:
        return set(QStringLiteral("not in %1..%2").arg(a, b),
                   QStringLiteral("outside of %1 to %2").arg(a, b));
    }
}

} // namespace VEK::Cli
