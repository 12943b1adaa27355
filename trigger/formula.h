#pragma once

#include <QBitArray>
#include <QString>
#include <QVector>

#include <functional>
#include <optional>
#include <vector>

/// Boolean formulas over numbered variables: match units, or the tests of a text.
namespace VEK::Trigger {

struct Formula
{
    enum Kind { False, True, Variable, Not, And, Xor, Or };

    Kind kind = False;
    int variable = 0;
    std::vector<Formula> children; ///< One of Not, any number of the operators.

    static Formula of(int variable);
    static Formula constant(bool value) { return {value ? True : False, 0, {}}; }
    /// An operator over `children`: those of the same kind are taken in, constants are folded.
    static Formula join(Kind kind, std::vector<Formula> children);
    /// The opposite, with the negations moved down to the variables.
    Formula negated() const;
};

/// The variables, ascending.
QVector<int> variablesOf(Formula const& formula);

/// The value for given values of the variables.
bool evaluate(Formula const& formula, std::function<bool(int)> const& valueOf);

/// The value for all combinations of `variables`, which are at most 16: bit i of an index is
/// `variables[i]`.
QBitArray tableOf(Formula const& formula, QVector<int> const& variables);

/// A sum of products for a table over `variables`, without terms that it could do without.
Formula sumOfProducts(QBitArray const& table, QVector<int> const& variables);

/// What stands for a variable, and how strongly it binds: as a formula of that kind.
struct Operand
{
    QString text;
    Formula::Kind kind = Formula::Variable;
};
using OperandText = std::function<Operand(int variable, bool isNegated)>;

/// How the text is put together.
struct Style
{
    QString space;              ///< Around the binary operators.
    bool isNestedRight = false; ///< a|(b|(c|d)): all operators stand behind all operands then.
    bool isSorted = false;      ///< The operands with & and ! first.
};

/// The formula as text, with no more brackets than it needs.
QString textOf(Formula const& formula, OperandText const& operand, Style const& style);

/// An expression of a core: M0 to M15, ! & ^ | and brackets, anything else but letters skipped. No
/// value for one that is not valid.
std::optional<Formula> parseUnits(QString const& expression);

/// The units that an expression names, ascending, valid or not.
QVector<int> unitsOf(QString const& expression);

/// The table that a core gets for an expression, over `units`, which hold at least its own.
QBitArray coreTable(QString const& expression, QVector<int> const& units);

/// An expression over units of which the core gets the table of `formula`; empty if none is found:
/// the core's evaluation of texts ends early in long ones.
QString expressionFor(Formula const& formula);

} // namespace VEK::Trigger
