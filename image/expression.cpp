#include "image/expression.h"

#include <QRegularExpression>

#include <algorithm>

namespace VEK {
namespace {

bool mayFollow(QString const& previous, QString const& token)
{
    if (isDigit(token))
        return !isDigit(previous);
    if (isOperator(token))
        return !isOperator(previous) && previous != LEFT_BRACKET && !isNotUnaryOp(previous);
    if (token == RIGHT_BRACKET)
        return previous != LEFT_BRACKET && !isNotUnaryOp(previous);
    return true;
}

bool isToken(QString const& text)
{
    return isDigit(text) || isOperator(text) || isNotUnaryOp(text) || text == LEFT_BRACKET ||
           text == RIGHT_BRACKET;
}

bool hasCapitalLetter(QString const& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar character) {
        return character >= QLatin1Char('A') && character <= QLatin1Char('Z');
    });
}

/// Whether a postfix list leaves exactly one value.
bool leavesOneValue(QStringList const& postfix)
{
    int count = 0;
    for (QString const& token : postfix) {
        if (isDigit(token)) {
            ++count;
        } else if (isNotUnaryOp(token)) {
            if (count < 1)
                return false;
        } else if (isOperator(token)) {
            if (count < 2)
                return false;
            --count;
        }
    }
    return count == 1;
}

} // namespace

QStringList tokensOf(QString const& expression)
{
    static QRegularExpression const token(QStringLiteral("M\\d+|\\S"));
    QStringList tokens;
    for (auto found = token.globalMatch(expression); found.hasNext();)
        tokens << found.next().captured();
    return tokens;
}

int priority(QString const& token)
{
    if (token == OP_NOT)
        return 4;
    if (token == OP_AND)
        return 3;
    if (token == OP_XOR)
        return 2;
    return token == OP_OR ? 1 : 0;
}

bool isDigit(QString const& token)
{
    return token.startsWith(QLatin1Char('M'), Qt::CaseInsensitive);
}

bool isOperator(QString const& token)
{
    return token == OP_AND || token == OP_OR || token == OP_XOR;
}

bool isNotUnaryOp(QString const& token)
{
    return token == OP_NOT;
}

QStringList convertRPN(QStringList const& tokens)
{
    QStringList output;
    QStringList stack;
    for (QString const& token : tokens) {
        if (isDigit(token)) {
            output.append(token);
        } else if (token == LEFT_BRACKET) {
            stack.append(token);
        } else if (token == RIGHT_BRACKET) {
            while (!stack.isEmpty() && stack.last() != LEFT_BRACKET)
                output.append(stack.takeLast());
            if (stack.isEmpty()) {
                qCritical("bracket unmatched");
                return {};
            }
            stack.removeLast();
        } else {
            while (!stack.isEmpty() && stack.last() != LEFT_BRACKET &&
                   priority(token) <= priority(stack.last()))
                output.append(stack.takeLast());
            stack.append(token);
        }
    }
    while (!stack.isEmpty())
        output.append(stack.takeLast());
    if (output.contains(LEFT_BRACKET)) {
        qCritical(" bracket unmatched"); // the blank in front tells the two apart
        return {};
    }
    return output;
}

bool isOk(QStringList const& allTokens)
{
    QStringList tokens;
    for (QString const& token : allTokens) {
        if (isToken(token))
            tokens.append(token);
        else if (hasCapitalLetter(token))
            return false; // no unit
    }
    if (tokens.isEmpty() || isOperator(tokens.last()) || isNotUnaryOp(tokens.last()))
        return false;
    for (int i = 1; i < tokens.size(); ++i) {
        if (!mayFollow(tokens.at(i - 1), tokens.at(i)))
            return false;
    }
    QStringList const postfix = convertRPN(tokens);
    return !postfix.isEmpty() && leavesOneValue(postfix);
}

} // namespace VEK
