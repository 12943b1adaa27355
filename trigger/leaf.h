#pragma once

#include "trigger/syntax.h"

#include <QMap>
#include <QStringList>

#include <optional>

namespace VEK::Trigger {

/// What one match unit can test, free of any unit. Either a number is compared, or each bit has a
/// condition of its own, one of 0, 1, R, F, B and N as in a match value.
struct Leaf
{
    bool isNumber = false;
    QStringList nets;           ///< What it watches; of a number the highest first.
    QMap<QString, QChar> bits;  ///< The conditions by net; a net without one may be anything.
    MatchFunc func = FuncEqual; ///< Of a number: greater, less, in range.
    QString value0;             ///< Of a number, a bit each net.
    QString value1;             ///< The upper bound of a range.
    bool isNegated = false;
    int count = 1;
    bool inRow = false;
    TriggerPlace place;

    bool isCounted() const { return count > 1; }
    bool needsEdges() const;
    /// Always true, or, negated, never.
    bool isConstant() const;
    /// The function that a unit gets for it, or for its opposite.
    MatchFunc unitFunc(bool opposite = false) const;
};

/// The same test, or of uncounted ones the opposite.
bool isSameTest(Leaf const& a, Leaf const& b);

/// Turns it into its opposite. It must not be counted.
void complement(Leaf& leaf);

/// One test for both at once, if one value can say it. Both must be uncounted, bit by bit and not
/// negated.
std::optional<Leaf> merged(Leaf const& a, Leaf const& b);

/// The leaf of a test whose names gave these nets. Throws a SyntaxFailure.
Leaf leafOf(TriggerTest const& test, QStringList const& nets, TriggerPlace place);

} // namespace VEK::Trigger
