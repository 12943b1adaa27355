#include "trigger/lexer.h"

#include <QRegularExpression>

namespace VEK::Trigger {
namespace {

QString const Words[] = {
    QStringLiteral("in"),      QStringLiteral("not"),    QStringLiteral("rises"),
    QStringLiteral("falls"),   QStringLiteral("then"),   QStringLiteral("times"),
    QStringLiteral("changes"), QStringLiteral("always"), QStringLiteral("never")};

/// What other languages write, and what it is here.
struct Spelling
{
    char const* foreign;
    char const* ours;
};

constexpr Spelling Spellings[] = {{"&&", "&"},  {"||", "|"},   {"~", "!"},     {"=<", "<="},
                                  {"=>", ">="}, {"<>", "!="},  {"===", "=="},  {"!==", "!="},
                                  {"=", "=="},  {"...", ".."}, {"->", "then"}, {";", "then"}};

bool isWordCharacter(QChar character)
{
    return character.isLetterOrNumber() || character == QLatin1Char('_') ||
           character == QLatin1Char('$');
}

class Lexer
{
public:
    explicit Lexer(QString const& text) : m_text(text) {}

    QList<Token> run()
    {
        QList<Token> tokens;
        do
            tokens.append(next());
        while (tokens.last().kind != TokenKind::End);
        return tokens;
    }

private:
    QChar at(int position) const
    {
        return position < m_text.size() ? m_text.at(position) : QChar();
    }

    Token next()
    {
        while (at(m_position).isSpace())
            ++m_position;
        m_start = m_position;
        QChar const first = at(m_position);
        if (m_position >= m_text.size())
            return token(TokenKind::End);
        if (first.isLetter() || first == QLatin1Char('_') || first == QLatin1Char('$'))
            return nameOrWord();
        if (first.isDigit())
            return number();
        if (first == QLatin1Char('\''))
            return letter();
        if (first == QLatin1Char('"'))
            return quotedName();
        return operatorToken();
    }

    TriggerPlace place() const { return {m_start, m_position - m_start}; }

    Token token(TokenKind kind) const
    {
        Token made;
        made.kind = kind;
        made.place = place();
        made.text = m_text.mid(m_start, m_position - m_start);
        return made;
    }

    void skipWord()
    {
        while (isWordCharacter(at(m_position)))
            ++m_position;
    }

    /// A path goes on behind one point or stroke; two points are those of a range.
    bool pathGoesOn() const
    {
        QChar const sign = at(m_position);
        QChar const following = at(m_position + 1);
        return (sign == QLatin1Char('.') || sign == QLatin1Char('/')) && isWordCharacter(following);
    }

    Token nameOrWord()
    {
        skipWord();
        Token made = token(TokenKind::Word);
        if (isWord(made.text) && !pathGoesOn() && at(m_position) != QLatin1Char('['))
            return made;
        int index = m_position;
        for (;;) {
            index = m_position;
            while (at(m_position) == QLatin1Char('[')) { // of a path's part, or the last: of bits
                index = m_position;
                skipIndex();
            }
            if (!pathGoesOn())
                break;
            ++m_position;
            skipWord();
        }
        made = token(TokenKind::Name);
        setName(made, m_text.mid(m_start, index - m_start), index);
        return made;
    }

    static bool isWord(QString const& text)
    {
        return std::find(std::begin(Words), std::end(Words), text) != std::end(Words);
    }

    void skipIndex()
    {
        int const end = m_text.indexOf(QLatin1Char(']'), m_position);
        if (end < 0)
            failAt({m_position, 1}, QStringLiteral("this \"[\" has no \"]\""));
        m_position = end + 1;
    }

    void setName(Token& made, QString const& base, int index) const
    {
        static QRegularExpression const form(
            QStringLiteral("\\A\\[\\s*(\\d{1,6})\\s*(?::\\s*(\\d{1,6})\\s*)?\\]\\z"));
        made.name.text = base;
        made.name.place = made.place;
        if (index == m_position)
            return;
        QString const text = m_text.mid(index, m_position - index);
        QRegularExpressionMatch const parts = form.match(text);
        if (!parts.hasMatch())
            failAt({index, text.size()},
                   QStringLiteral("\"%1\" picks no bits: write [3] for one of them, or [7:4]")
                       .arg(text));
        made.name.first = parts.capturedRef(1).toInt();
        made.name.last =
            parts.captured(2).isEmpty() ? made.name.first : parts.capturedRef(2).toInt();
    }

    Token quotedName()
    {
        QString base;
        for (++m_position;; ++m_position) {
            if (m_position >= m_text.size())
                failAt({m_start, 1}, QStringLiteral("this quote is not closed"));
            if (at(m_position) != QLatin1Char('"')) {
                base += at(m_position);
            } else if (at(m_position + 1) == QLatin1Char('"')) {
                base += at(++m_position);
            } else {
                break;
            }
        }
        int const index = ++m_position;
        if (base.isEmpty())
            failAt(place(), QStringLiteral("a name has at least one letter"));
        if (at(m_position) == QLatin1Char('['))
            skipIndex();
        Token made = token(TokenKind::Name);
        setName(made, base, index);
        return made;
    }

    Token number()
    {
        static QRegularExpression const form(
            QStringLiteral("\\A(?:0[xX]([0-9a-fA-F]+)|0[bB]([01xX]+)|([0-9]+))\\z"));
        skipWord();
        Token made = token(TokenKind::Value);
        QRegularExpressionMatch const parts = form.match(made.text);
        if (!parts.hasMatch())
            failAt(made.place,
                   QStringLiteral("\"%1\" is no number: write 12, 0x5A or 0b1x0x").arg(made.text));
        int const radixes[] = {16, 2, 10};
        for (int i = 0; i < 3; ++i) {
            if (parts.capturedLength(i + 1) > 0) {
                made.value.digits = parts.captured(i + 1).toUpper();
                made.value.radix = radixes[i];
            }
        }
        made.value.place = made.place;
        return made;
    }

    /// The number of a letter, as `12` is a number.
    Token letter()
    {
        int const end = m_position + 2;
        ushort const code = at(m_position + 1).unicode();
        if (at(end) != QLatin1Char('\'') || code < 32 || code > 255)
            failAt({m_start, 1}, QStringLiteral("a letter stands between two of these: 'A'"));
        m_position = end + 1;
        Token made = token(TokenKind::Value);
        made.value.digits = QString::number(code);
        made.value.place = made.place;
        return made;
    }

    Token operatorToken()
    {
        static QString const signs[] = {QStringLiteral("=="), QStringLiteral("!="),
                                        QStringLiteral("<="), QStringLiteral(">="),
                                        QStringLiteral("..")};
        Spelling const* wrong = nullptr;
        for (Spelling const& spelling : Spellings) {
            QLatin1String const foreign(spelling.foreign);
            if (m_text.midRef(m_start).startsWith(foreign) &&
                (!wrong || foreign.size() > QLatin1String(wrong->foreign).size()))
                wrong = &spelling;
        }
        bool const isLonger = wrong && QLatin1String(wrong->foreign).size() > 2;
        for (QString const& sign : signs) {
            if (!isLonger && m_text.midRef(m_start).startsWith(sign)) {
                m_position += 2;
                return token(TokenKind::Operator);
            }
        }
        if (wrong)
            failAt({m_start, QLatin1String(wrong->foreign).size()},
                   QStringLiteral("\"%1\" is written %2 here")
                       .arg(QLatin1String(wrong->foreign), QLatin1String(wrong->ours)));
        m_position += at(m_start).isHighSurrogate() && m_start + 1 < m_text.size() ? 2 : 1;
        Token const made = token(TokenKind::Operator);
        if (!QStringLiteral("<>!&^|(){},").contains(made.text))
            failAt(made.place,
                   QStringLiteral("\"%1\" means nothing here; a name that holds it stands in "
                                  "double quotes")
                       .arg(made.text));
        return made;
    }

    QString const& m_text;
    int m_position = 0;
    int m_start = 0;
};

} // namespace

void failAt(TriggerPlace place, QString const& message)
{
    throw SyntaxFailure{{place.position, place.length, message}};
}

QList<Token> tokensOf(QString const& text)
{
    return Lexer(text).run();
}

bool isPlainName(QString const& text)
{
    try {
        QList<Token> const tokens = tokensOf(text);
        return tokens.size() == 2 && tokens.first().kind == TokenKind::Name &&
               tokens.first().place.length == text.size() && !text.startsWith(QLatin1Char('"'));
    } catch (SyntaxFailure const&) {
        return false;
    }
}

QString writtenName(QString const& text)
{
    if (isPlainName(text))
        return text;
    QString inner = text;
    return QLatin1Char('"') + inner.replace(QLatin1Char('"'), QStringLiteral("\"\"")) +
           QLatin1Char('"');
}

} // namespace VEK::Trigger
