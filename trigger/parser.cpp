#include "trigger/lexer.h"

namespace VEK {
namespace {

using namespace Trigger;

/// Deeper than anyone writes, and far from the end of the stack.
constexpr int MaxDepth = 200;
constexpr int MaxTokens = 10000;

struct Comparison
{
    char const* sign;
    MatchFunc func;
};

constexpr Comparison Comparisons[] = {{"==", FuncEqual},     {"!=", FuncNotEqual},
                                      {"<=", FuncLessEqual}, {">=", FuncGreaterEqual},
                                      {"<", FuncLess},       {">", FuncGreater}};

struct Edge
{
    char const* word;
    TriggerTestKind kind;
};

constexpr Edge Edges[] = {{"rises", TriggerTestKind::Rises},
                          {"falls", TriggerTestKind::Falls},
                          {"changes", TriggerTestKind::Changes}};

class Parser
{
public:
    explicit Parser(QString const& text) : m_tokens(tokensOf(text))
    {
        if (m_tokens.size() > MaxTokens)
            failAt({0, text.size()}, QStringLiteral("the text is too long for any core"));
    }

    std::vector<TriggerNode> run()
    {
        if (now().kind == TokenKind::End)
            failAt(now().place, QStringLiteral("the trigger is empty: write a test such as "
                                               "\"addr == 0x5A\", or always"));
        std::vector<TriggerNode> steps;
        do
            steps.push_back(operation(TriggerNode::Or));
        while (take("then"));
        if (now().kind != TokenKind::End)
            failBehindTerm();
        return steps;
    }

private:
    Token const& now() const { return m_tokens.at(m_at); }
    Token const& following() const { return m_tokens.at(std::min(m_at + 1, m_tokens.size() - 1)); }

    bool is(char const* text) const
    {
        bool const isSign = now().kind == TokenKind::Word || now().kind == TokenKind::Operator;
        return isSign && now().text == QLatin1String(text);
    }

    bool take(char const* text)
    {
        if (!is(text))
            return false;
        ++m_at;
        return true;
    }

    QString shown() const
    {
        return now().kind == TokenKind::End ? QStringLiteral("the end of the text")
                                            : QStringLiteral("\"%1\"").arg(now().text);
    }

    TriggerPlace since(int start) const
    {
        TriggerPlace const last = m_tokens.at(std::max(m_at - 1, 0)).place;
        return {start, last.position + last.length - start};
    }

    [[noreturn]] void failBehindTerm() const
    {
        QString what =
            QStringLiteral("%1 can't follow here: an operator (& ^ |) or then is missing");
        if (now().text == QLatin1String(")"))
            what = QStringLiteral("%1 closes no bracket");
        else if (now().kind == TokenKind::Value && following().text == QLatin1String("times"))
            what = QStringLiteral("%1 times counts what stands in brackets: (valid) 8 times");
        else if (now().kind == TokenKind::Name && isForeignWord())
            what = QStringLiteral("%1 is no word of the language; its operators are ! & ^ |");
        failAt(now().place, what.arg(shown()));
    }

    bool isForeignWord() const
    {
        QString const word = now().text.toLower();
        return word == QLatin1String("and") || word == QLatin1String("or") ||
               word == QLatin1String("xor");
    }

    /// The operators from the weakest: | ^ &. They are their own neighbours in `Kind`.
    TriggerNode operation(TriggerNode::Kind kind)
    {
        char const* const sign = kind == TriggerNode::Or    ? "|"
                                 : kind == TriggerNode::Xor ? "^"
                                                            : "&";
        int const start = now().place.position;
        std::vector<TriggerNode> operands;
        do
            operands.push_back(kind == TriggerNode::And ? unary()
                                                        : operation(TriggerNode::Kind(kind - 1)));
        while (take(sign));
        if (operands.size() == 1)
            return std::move(operands.front());
        TriggerNode node;
        node.kind = kind;
        node.children = std::move(operands);
        node.place = since(start);
        return node;
    }

    TriggerNode unary()
    {
        if (++m_depth > MaxDepth)
            failAt(now().place, QStringLiteral("the brackets are nested too deeply"));
        int const start = now().place.position;
        TriggerNode node;
        if (take("!")) {
            node.kind = TriggerNode::Not;
            node.children.push_back(unary());
        } else if (take("(")) {
            node = bracket(m_tokens.at(m_at - 1).place);
        } else if (is("always") || is("never")) {
            node.kind = is("always") ? TriggerNode::Always : TriggerNode::Never;
            ++m_at;
        } else {
            node.test = test();
        }
        node.place = since(start);
        --m_depth;
        return node;
    }

    TriggerNode bracket(TriggerPlace open)
    {
        TriggerNode inner = operation(TriggerNode::Or);
        if (is("then"))
            failAt(now().place, QStringLiteral("then stands between whole steps, not in brackets"));
        if (!take(")")) {
            if (now().kind == TokenKind::End)
                failAt(open, QStringLiteral("this bracket is not closed"));
            failBehindTerm();
        }
        if (now().kind != TokenKind::Value)
            return inner;
        TriggerNode counted;
        counted.kind = TriggerNode::Counted;
        counted.children.push_back(std::move(inner));
        counted.count = count();
        if (take("in"))
            takeRow(counted);
        return counted;
    }

    int count()
    {
        Token const number = now();
        ++m_at;
        if (!take("times"))
            failAt(number.place,
                   QStringLiteral("\"%1\" behind a bracket is a count: write %1 times")
                       .arg(number.text));
        bool ok = false;
        int const count = number.value.digits.toInt(&ok, number.value.radix);
        if (!ok || count < 1)
            failAt(number.place,
                   QStringLiteral("\"%1\" is no count: no counter gets there").arg(number.text));
        return count;
    }

    /// "a" and "row" are words behind "times in" only: they are good names of signals.
    void takeRow(TriggerNode& counted)
    {
        for (char const* const word : {"a", "row"}) {
            if (now().kind != TokenKind::Name || now().text != QLatin1String(word))
                failAt(now().place,
                       QStringLiteral("%1 can't follow here: write 8 times in a row").arg(shown()));
            ++m_at;
        }
        counted.inRow = true;
    }

    TriggerTest test()
    {
        TriggerTest made;
        made.names = names();
        for (Comparison const& comparison : Comparisons) {
            if (!take(comparison.sign))
                continue;
            made.kind = TriggerTestKind::Compare;
            made.func = comparison.func;
            made.value0 = value();
            return made;
        }
        for (Edge const& edge : Edges) {
            if (take(edge.word)) {
                made.kind = edge.kind;
                return made;
            }
        }
        bool const isOut = take("not");
        if (isOut && !is("in"))
            failAt(now().place, QStringLiteral("%1 can't follow \"not\": write not in 1..5, and ! "
                                               "in front of a test")
                                    .arg(shown()));
        if (take("in")) {
            made.kind = TriggerTestKind::Compare;
            made.func = isOut ? FuncNotInRange : FuncInRange;
            made.value0 = value();
            if (!take(".."))
                failAt(now().place, QStringLiteral("a range has two bounds: in 0x50..0x57"));
            made.value1 = value();
        }
        return made;
    }

    QList<TriggerName> names()
    {
        QList<TriggerName> list;
        TriggerPlace const open = now().place;
        if (!take("{")) {
            list.append(name());
            return list;
        }
        do
            list.append(name());
        while (take(","));
        if (!take("}"))
            failAt(now().kind == TokenKind::End ? open : now().place,
                   QStringLiteral("names in {} end with }, with commas between them"));
        return list;
    }

    TriggerName name()
    {
        if (now().kind != TokenKind::Name)
            failForName();
        return m_tokens.at(m_at++).name;
    }

    [[noreturn]] void failForName() const
    {
        QString what = QStringLiteral("%1 stands where a name should be");
        if (now().kind == TokenKind::Word)
            what += QStringLiteral("; a signal of that name stands in double quotes");
        else if (now().kind == TokenKind::Value)
            what += QStringLiteral(": a test begins with its name");
        else if (now().text == QLatin1String("&") || now().text == QLatin1String("|") ||
                 now().text == QLatin1String("^"))
            what += QStringLiteral(": an operator stands between two tests");
        failAt(now().place, what.arg(shown()));
    }

    TriggerValue value()
    {
        if (now().kind != TokenKind::Value)
            failAt(now().place,
                   QStringLiteral("%1 stands where a value should be: 12, 0x5A, 0b1x0x or 'A'%2")
                       .arg(shown(), now().kind == TokenKind::Name
                                         ? QStringLiteral(" (units compare with numbers only)")
                                         : QString()));
        return m_tokens.at(m_at++).value;
    }

    QList<Token> m_tokens;
    int m_at = 0;
    int m_depth = 0;
};

} // namespace

TriggerSyntax parseTrigger(QString const& text)
{
    TriggerSyntax syntax;
    try {
        syntax.steps = Parser(text).run();
    } catch (SyntaxFailure const& failure) {
        syntax.errors.append(failure.error);
    }
    return syntax;
}

} // namespace VEK
