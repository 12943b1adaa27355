#pragma once

#include <QList>
#include <QString>

namespace VEK {

class SxCore;

/// The cores that a chain can tell apart.
constexpr int CoreSelects = 16;

/// What a core will not do as its configuration says.
struct LimitProblem
{
    QString attribute; ///< Of the core in a file.
    QString message;
    bool isError = false; ///< The capture is not the one that was asked for.
};

/// Looks at the index, the amount and the trigger position of a core. The amount and the number of
/// windows must be 1 at least.
QList<LimitProblem> limitProblems(SxCore const& core);

} // namespace VEK
