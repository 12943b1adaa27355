#pragma once

#include <QString>
#include <QStringList>

/// Trigger expressions as lists of tokens, the form in which a user builds them: M0 to M15, the
/// operators, and brackets. Evaluation has an implementation of its own, see truthtable.h.
namespace VEK {

inline const QString OP_OR = QStringLiteral("|");
inline const QString OP_XOR = QStringLiteral("^");
inline const QString OP_AND = QStringLiteral("&");
inline const QString OP_NOT = QStringLiteral("!");
inline const QString LEFT_BRACKET = QStringLiteral("(");
inline const QString RIGHT_BRACKET = QStringLiteral(")");

/// The tokens of a text. What is none comes as single characters, blanks left out.
QStringList tokensOf(QString const& expression);

/// 1 for or, 2 for exclusive or, 3 for and, 4 for not, 0 for anything else.
int priority(QString const& token);

/// True for an operand, which despite the name is a token that starts with M in either case.
bool isDigit(QString const& token);

/// True for a binary operator.
bool isOperator(QString const& token);

/// True for the not operator.
bool isNotUnaryOp(QString const& token);

/// The tokens in postfix order; empty, with a critical log line, on a bracket error.
QStringList convertRPN(QStringList const& tokens);

/// Whether the tokens make a valid expression. A double negation is none. As in its evaluation,
/// what is no token is skipped, such as a blank, but a capital letter that is no unit makes it
/// invalid.
bool isOk(QStringList const& tokens);

} // namespace VEK
