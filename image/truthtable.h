#pragma once

#include <QString>

/// Evaluation of trigger expressions on plain character strings, in which each match unit has
/// become one capital letter. All `char` strings end in a NUL.
namespace VEK {

/// The text with its units replaced by capital letters: the highest unit becomes A, the next B and
/// so on, without gaps.
QString changeExpItem(QString text);

/// 4 for `!`, 3 for `&`, 2 for `^`, 1 for `|`, 0 for anything else.
int priority(char character);

/// Turns infix into postfix, which never gets longer. Anything that is neither a capital letter, an
/// operator nor a bracket is skipped, such as a blank. `postfix` takes as many characters as
/// `infix` has and the NUL.
void translet(char const* infix, char* postfix);

/// The capital letters of a text, each once, in the order of their first appearance. `out` takes
/// up to 26 characters and the NUL.
void getOperand(char const* text, char* out);

/// Sorts the characters, ascending, in place.
void sort(char* text);

/// The number as text, with the digits 0 to 9 and A to F and a minus sign in base 10 only. `out`
/// takes up to 33 characters and the NUL; a base out of 2 to 16 gives an empty text.
void itoa(int value, char* out, int base);

/// The value of a postfix text, in which letter L stands for `values[L - 'A']`: `0`, `1`, or `x`
/// when it has none.
char calcuate(char const* postfix, char const* letters, char const* values);

/// The most entries that a table has: 16 match units.
constexpr int MaxTruthTable = 65536;

/// The truth table of an expression, one character an entry as `calcuate` gives it. Bit 0 of the
/// index is the lowest-numbered unit of the expression. With a capital letter that is part of no
/// unit all entries are `x`. No core looks beyond `MaxTruthTable`
/// entries, so a text with more letters than there are units gives no more.
QString logicTruthTable(QString const& expression);

} // namespace VEK
