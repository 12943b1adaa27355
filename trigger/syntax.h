#pragma once

#include "model/capturecore.h"

#include <QList>
#include <QString>

#include <vector>

/// The text of a trigger as a tree. It knows no core: what the names stand for, and whether a core
/// can do it, is the compiler's business (trigger.h).
namespace VEK {

/// A part of a text, in characters of the QString.
struct TriggerPlace
{
    int position = 0;
    int length = 0;
};

/// What is wrong with a text, and where.
struct TriggerError
{
    int position = 0;
    int length = 0;
    QString message;
};

/// A name, with the bits that it picks: addr, addr[3], addr[7:4].
struct TriggerName
{
    static constexpr int NoIndex = -1;

    QString text;        ///< Without index and quotes.
    int first = NoIndex; ///< The number of the first bit; NoIndex: all of them.
    int last = NoIndex;  ///< The same as `first` for one bit.
    TriggerPlace place;
};

/// A number: its digits in a radix of 2, 10 or 16. Those of radix 2 may hold X for any.
struct TriggerValue
{
    QString digits;
    int radix = 10;
    TriggerPlace place;
};

enum class TriggerTestKind { Compare, High, Rises, Falls, Changes };

/// One comparison of what its names give, the first bit of the first name being the highest.
struct TriggerTest
{
    QList<TriggerName> names;
    TriggerTestKind kind = TriggerTestKind::High;
    MatchFunc func = FuncEqual; ///< Of Compare.
    TriggerValue value0;        ///< Of Compare.
    TriggerValue value1;        ///< The upper bound of a range.
};

struct TriggerNode
{
    enum Kind { Test, Not, And, Xor, Or, Counted, Always, Never };

    Kind kind = Test;
    TriggerPlace place;
    TriggerTest test;
    std::vector<TriggerNode> children; ///< One of Not and Counted, two and more of the operators.
    int count = 1;                     ///< Of Counted.
    bool inRow = false;                ///< Of Counted.
};

struct TriggerSyntax
{
    std::vector<TriggerNode> steps; ///< In the order in which they fire; empty on an error.
    QList<TriggerError> errors;

    bool isOk() const { return errors.isEmpty(); }
};

/// Reads the text of a trigger; stops at the first error.
TriggerSyntax parseTrigger(QString const& text);

} // namespace VEK
