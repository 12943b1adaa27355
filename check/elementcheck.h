#pragma once

#include "check/finding.h"

#include <QDomElement>
#include <QStringList>

#include <limits>
#include <optional>

namespace VEK {

/// The findings of a document, as they are told element by element.
class FindingList
{
public:
    void error(QDomElement const& element, QString const& attribute, QString const& message);
    void warn(QDomElement const& element, QString const& attribute, QString const& message);

    /// In the order of the document.
    QList<Finding> findings() const;

private:
    void add(Severity severity, QDomElement const& element, QString const& attribute,
             QString const& message);

    QList<Finding> m_findings;
};

/// What an element may hold.
struct ElementForm
{
    QStringList attributes; ///< Those that readers look at, and that should be there.
    QStringList optional;   ///< Those that may be missing.
    QStringList children;   ///< Tags of the elements in it.
    QStringList single;     ///< Of these only the first one counts.
};

/// Tells attributes and child elements that are unknown, doubled or missing. An attribute that is
/// read as a number, see `numberOf`, is not told as missing here.
void checkForm(QDomElement const& element, ElementForm const& form, FindingList& list);

/// The numbers that an attribute may hold.
struct NumberRange
{
    int lowest = 0;
    int highest = std::numeric_limits<int>::max();
};

/// The number of an attribute as the readers take it, where it is one and in range; else it is
/// told. A missing one reads as 0.
std::optional<int> numberOf(QDomElement const& element, QString const& attribute,
                            NumberRange const& range, FindingList& list);

/// The same for a flag of 0 or 1.
inline std::optional<int> flagOf(QDomElement const& element, QString const& attribute,
                                 FindingList& list)
{
    return numberOf(element, attribute, {0, 1}, list);
}

/// What is wrong with the text of a flag that is "true" or "false"; `otherwise` says what other
/// texts count as.
void checkTrueOrFalse(QDomElement const& element, QString const& attribute,
                      QString const& otherwise, FindingList& list);

/// Tells each index that an earlier element of the list has.
void checkIndexesDiffer(QList<QDomElement> const& elements, QString const& what, FindingList& list);

} // namespace VEK
