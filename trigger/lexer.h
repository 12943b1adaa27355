#pragma once

#include "trigger/syntax.h"

namespace VEK::Trigger {

enum class TokenKind { Name, Word, Value, Operator, End };

struct Token
{
    TokenKind kind = TokenKind::End;
    QString text; ///< As it stands in the trigger's text.
    TriggerPlace place;
    TriggerName name;   ///< Of a name.
    TriggerValue value; ///< Of a value.
};

/// Ends the reading of a text.
struct SyntaxFailure
{
    TriggerError error;
};

[[noreturn]] void failAt(TriggerPlace place, QString const& message);

/// The tokens of a text, `End` last. Throws a SyntaxFailure.
QList<Token> tokensOf(QString const& text);

/// Whether a name can stand without quotes.
bool isPlainName(QString const& text);

/// A name as it is written: as it is, else in quotes.
QString writtenName(QString const& text);

} // namespace VEK::Trigger
