#include "simulator/truthtable.h"

namespace VEK::Simulator {
namespace {

/// Bounds the operand stack, whatever the nesting.
constexpr int MaxExpression = 4096;

int priority(QChar c)
{
    switch (c.unicode()) {
    case '!':
        return 4;
    case '&':
        return 3;
    case '^':
        return 2;
    case '|':
        return 1;
    default:
        return 0;
    }
}

/// One walk over the text, with a stack of operators and a stack of operand tables.
class Compiler
{
public:
    explicit Compiler(QString const& text) : m_text(text) {}

    bool run(TruthTable& table, unsigned& units, QString& error)
    {
        for (m_at = 0; m_at < m_text.size() && m_error.isEmpty(); ++m_at) {
            if (isMeant(m_text.at(m_at)))
                m_expectsOperand ? operand() : afterOperand();
        }
        if (m_error.isEmpty() && m_expectsOperand)
            m_error = QStringLiteral("an operand is missing at its end");
        while (m_error.isEmpty() && !m_operators.isEmpty())
            apply();
        error = m_error;
        if (!m_error.isEmpty())
            return false;
        table = m_operands.back();
        units = m_units;
        return true;
    }

private:
    /// Anything but these is skipped, as the host does in the tables that it sends.
    static bool isMeant(QChar c)
    {
        return (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) || priority(c) > 0 ||
               c == QLatin1Char('(') || c == QLatin1Char(')');
    }

    /// The value of the digit at a place, -1 for none.
    int digit(int at) const
    {
        int const value = at < m_text.size() ? m_text.at(at).unicode() - '0' : -1;
        return value >= 0 && value <= 9 ? value : -1;
    }

    void operand()
    {
        QChar const c = m_text.at(m_at);
        if (c == QLatin1Char('!') || c == QLatin1Char('('))
            m_operators.append(c);
        else if (c == QLatin1Char('M'))
            unit();
        else
            fail();
    }

    void unit()
    {
        int number = digit(m_at + 1);
        if (number < 0)
            return fail();
        int const both = number * 10 + digit(m_at + 2);
        bool const hasTwo = number > 0 && digit(m_at + 2) >= 0 && both < TruthTable::Units;
        m_at += hasTwo ? 2 : 1; // a further digit is no part of it
        number = hasTwo ? both : number;
        m_units |= 1u << number;
        m_operands.push_back(TruthTable::ofUnit(number));
        m_expectsOperand = false;
    }

    void afterOperand()
    {
        QChar const c = m_text.at(m_at);
        if (c == QLatin1Char(')')) {
            while (m_error.isEmpty() && !m_operators.endsWith(QLatin1Char('(')))
                apply();
            m_operators.chop(1);
        } else if (priority(c) > 0 && c != QLatin1Char('!')) {
            while (!m_operators.isEmpty() && priority(m_operators.back()) >= priority(c))
                apply();
            m_operators.append(c);
            m_expectsOperand = true;
        } else {
            fail();
        }
    }

    void apply()
    {
        QChar const op = m_operators.isEmpty() ? QChar(QLatin1Char('('))
                                               : m_operators.at(m_operators.size() - 1);
        if (op == QLatin1Char('(')) {
            m_error = QStringLiteral("its brackets do not match");
            return;
        }
        m_operators.chop(1);
        if (op == QLatin1Char('!')) {
            m_operands.back().invert();
            return;
        }
        TruthTable const right = m_operands.back();
        m_operands.pop_back();
        if (op == QLatin1Char('&'))
            m_operands.back() &= right;
        else if (op == QLatin1Char('|'))
            m_operands.back() |= right;
        else
            m_operands.back() ^= right;
    }

    void fail() { m_error = QStringLiteral("character %1 does not fit").arg(m_at + 1); }

    QString const& m_text;
    int m_at = 0;
    bool m_expectsOperand = true;
    QString m_operators;
    std::vector<TruthTable> m_operands;
    unsigned m_units = 0;
    QString m_error;
};

} // namespace

TruthTable TruthTable::ofUnit(int unit)
{
    static constexpr quint64 Low[] = {0xAAAAAAAAAAAAAAAAu, 0xCCCCCCCCCCCCCCCCu,
                                      0xF0F0F0F0F0F0F0F0u, 0xFF00FF00FF00FF00u,
                                      0xFFFF0000FFFF0000u, 0xFFFFFFFF00000000u};
    TruthTable table;
    for (unsigned i = 0; i < WordCount; ++i) {
        if (unit < 6)
            table.m_words[i] = Low[unit];
        else if (i >> (unit - 6) & 1)
            table.m_words[i] = ~quint64(0);
    }
    return table;
}

void TruthTable::set(unsigned combination, bool value)
{
    quint64& word = m_words[combination >> 6 & (WordCount - 1)];
    quint64 const bit = quint64(1) << (combination & 63);
    word = value ? word | bit : word & ~bit;
}

void TruthTable::invert()
{
    for (quint64& word : m_words)
        word = ~word;
}

TruthTable& TruthTable::operator&=(TruthTable const& other)
{
    for (unsigned i = 0; i < WordCount; ++i)
        m_words[i] &= other.m_words[i];
    return *this;
}

TruthTable& TruthTable::operator|=(TruthTable const& other)
{
    for (unsigned i = 0; i < WordCount; ++i)
        m_words[i] |= other.m_words[i];
    return *this;
}

TruthTable& TruthTable::operator^=(TruthTable const& other)
{
    for (unsigned i = 0; i < WordCount; ++i)
        m_words[i] ^= other.m_words[i];
    return *this;
}

bool compileExpression(QString const& text, TruthTable& table, unsigned& units, QString& error)
{
    if (text.size() > MaxExpression) {
        error = QStringLiteral("it is longer than %1 characters").arg(MaxExpression);
        return false;
    }
    return Compiler(text).run(table, units, error);
}

} // namespace VEK::Simulator
