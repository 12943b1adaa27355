#pragma once

#include <QString>

/// Match values as texts. A value has one character for each bit, the highest first; an editor
/// shows it in a radix, which is 2, 8, 10 or 16. Values have any width and are always exact.
namespace VEK {

/// The number of digits that a value of `width` bits has in a radix; 0 for another radix.
int digitCount(int width, int radix);

/// The letters beside 0 and 1 that a value may hold: in radix 2 and for the functions == and != X,
/// and with a match type that has edges also R, F, B and N. Empty otherwise.
QString lettersAllowed(int radix, int func, int matchType);

/// The regular expression of what an editor accepts.
QString valuePattern(int radix, int func, int matchType);

/// The text holds any of X, R, F, B and N. Of digits of another radix than 2 this says nothing.
bool holdsLetters(QString const& text);

/// The rightmost `n` characters, with "0" in front up to `n`; empty for an `n` below 1.
QString BitWidthAdjust(QString const& text, int n);

/// True when `n` is at least the length of the text.
bool checkExcessBitWidth(QString const& text, int n);

/// The number that `text` is in radix `from`, written in radix `to` without leading zeros and in
/// capitals. A text that is no number there, an empty one too, or a radix other than the four give
/// `width` zeros.
QString changeRadix(QString const& text, int from, int to, int width);

/// The `width` bits behind a row's text in a radix; digits that exceed them are cut. A text of
/// radix 2 keeps its letters, elsewhere text that is no number is zeros.
QString bitsOfText(QString const& text, int radix, int width);

/// The way back, with as many digits as the width has. Bits with letters are zeros outside of
/// radix 2.
QString textOfBits(QString const& bits, int radix);

/// 2 to the power of a counter's width, held within an int. A negative width counts as 0.
int counterLimit(int counterWidth);

} // namespace VEK
