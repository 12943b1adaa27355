#pragma once

#include "trigger/formula.h"
#include "trigger/leaf.h"

namespace VEK::Trigger {

/// A text whose names stand for nets: a formula for each step, whose variables number the leaves.
/// Negations are in the leaves, but for counted ones.
struct BoundTrigger
{
    QVector<Leaf> leaves;
    std::vector<Formula> steps;
    QVector<TriggerPlace> places; ///< Of the steps.
    QList<TriggerError> errors;
};

/// Binds a text that was parsed without an error to the signals of a core.
BoundTrigger bindTrigger(TriggerSyntax const& syntax, SxCore const& core);

/// Which leaves one unit may test together: the operands of one & that look at bits, and those of
/// one |, which is the opposite of an & of opposites.
struct LeafGroup
{
    Formula::Kind kind = Formula::And;
    QVector<int> leaves;
};

/// All leaves of a formula, each in one group; one that can't be joined has a group of its own.
QVector<LeafGroup> groupsOf(Formula const& formula, QVector<Leaf> const& leaves);

/// The leaf as a part of its group: of | its opposite.
Leaf memberOf(LeafGroup const& group, Leaf leaf);

} // namespace VEK::Trigger
