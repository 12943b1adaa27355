#include "dump/vcdreader.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace VEK::Simulator {
namespace {

constexpr int MaxScopePath = 64 * 1024;
constexpr int MaxShortCode = 8;

QByteArray toBytes(std::string_view text)
{
    return QByteArray(text.data(), int(text.size()));
}

/// A piece of a word for a message.
QString shown(QByteArray const& text)
{
    return QString::fromUtf8(text.left(60));
}

/// Identifier codes have a few characters, none of them zero: they pack into a number.
quint64 packedCode(std::string_view text)
{
    quint64 packed = 0;
    for (char const c : text)
        packed = packed << 8 | static_cast<unsigned char>(c);
    return packed;
}

bool isValueCharacter(char c)
{
    return std::string_view("01xXzZuUwWlLhH-").find(c) != std::string_view::npos;
}

QByteArray pathComponent(QByteArray name)
{
    if (name.startsWith('\\'))
        name.remove(0, 1);
    return name.replace('/', '.');
}

QByteArray joined(std::vector<QByteArray> const& words, std::size_t from)
{
    QByteArray text;
    for (std::size_t i = from; i < words.size(); ++i)
        text += words[i];
    return text;
}

/// Takes "[msb:lsb]", or the "[index]" of a single bit, off the end of a variable's name. Other
/// brackets belong to the name: they tell elements of an array apart.
void takeRange(QByteArray& name, VcdVariable& variable)
{
    static QRegularExpression const range(
        QStringLiteral(R"(\A(.+)\[(-?\d{1,9})(?::(-?\d{1,9}))?\]\z)"),
        QRegularExpression::DotMatchesEverythingOption);
    variable.msb = variable.width - 1;
    variable.lsb = 0;
    if (!name.endsWith(']'))
        return;
    QRegularExpressionMatch const match = range.match(QString::fromLatin1(name));
    if (!match.hasMatch())
        return;
    int const msb = match.captured(2).toInt();
    bool const single = match.capturedLength(3) <= 0;
    int const lsb = single ? msb : match.captured(3).toInt();
    if (single && variable.width != 1)
        return;
    name = match.captured(1).toLatin1();
    if (qAbs(qint64(msb) - lsb) + 1 != variable.width)
        return;
    variable.msb = msb;
    variable.lsb = lsb;
    variable.hasRange = true;
}

} // namespace

bool VcdReader::readHeader(std::function<void(VcdVariable const&)> const& visit)
{
    for (;;) {
        if (!nextWord(QStringLiteral("its declarations")))
            return false;
        QByteArray const word = toBytes(m_words.word());
        bool ok = true;
        if (word == "$enddefinitions")
            return skipSection(QStringLiteral("$enddefinitions"));
        if (word == "$var")
            ok = readVariable(visit);
        else if (word == "$scope")
            ok = readScope();
        else if (word == "$upscope")
            ok = readUpscope();
        else if (word == "$timescale")
            ok = readTimescale();
        else if (word.startsWith('$') && word != "$end")
            ok = skipSection(shown(word));
        else
            ok = fail(QStringLiteral("\"%1\" is no declaration").arg(shown(word)));
        if (!ok)
            return false;
    }
}

VcdReader::Event VcdReader::next()
{
    while (m_error.isEmpty() && m_words.next()) {
        std::string_view const word = m_words.word();
        if (m_words.tooLong()) {
            fail(QStringLiteral("a word is longer than %1 bytes").arg(VcdTokens::MaxWord));
            break;
        }
        if (word[0] == '#') {
            quint64 const before = m_time;
            bool const first = !m_hasTime;
            if (readTime(word.substr(1)) && (first || m_time != before))
                return Event::Time;
        } else if (word[0] == '$') {
            Event event = Event::End;
            if (readKeyword(toBytes(word), event) && event != Event::End)
                return event;
        } else if (readValue(word) && m_isBits[std::size_t(m_code)]) {
            return Event::Change;
        }
    }
    if (m_error.isEmpty() && m_inDump)
        failAtEnd(QStringLiteral("a dump of values"));
    if (m_error.isEmpty() && m_words.failed())
        fail(QStringLiteral("the file can't be read further"));
    return m_error.isEmpty() ? Event::End : Event::Error;
}

bool VcdReader::fail(QString const& what)
{
    if (m_error.isEmpty())
        m_error = QStringLiteral("line %1: %2").arg(m_words.line()).arg(what);
    return false;
}

bool VcdReader::failAtEnd(QString const& where)
{
    return fail(QStringLiteral("the file ends within %1").arg(where));
}

bool VcdReader::nextWord(QString const& where)
{
    if (!m_words.next())
        return failAtEnd(where);
    if (m_words.tooLong())
        return fail(QStringLiteral("a word is longer than %1 bytes").arg(VcdTokens::MaxWord));
    return true;
}

bool VcdReader::skipSection(QString const& name)
{
    while (m_words.next()) {
        if (m_words.word() == "$end")
            return true;
    }
    return failAtEnd(name);
}

/// The words up to $end, for sections that hold but a few.
bool VcdReader::sectionWords(QString const& name, std::vector<QByteArray>& words)
{
    constexpr std::size_t MaxWords = 64;
    for (;;) {
        if (!nextWord(name))
            return false;
        if (m_words.word() == "$end")
            return true;
        if (words.size() == MaxWords)
            return fail(QStringLiteral("%1 has no $end").arg(name));
        words.push_back(toBytes(m_words.word()));
    }
}

bool VcdReader::readScope()
{
    std::vector<QByteArray> words;
    if (!sectionWords(QStringLiteral("$scope"), words))
        return false;
    m_scopeStarts.push_back(m_scope.size());
    QByteArray const name = pathComponent(joined(words, 1));
    if (!name.isEmpty()) // scopes without a name do occur
        m_scope += name + '.';
    if (m_scope.size() > MaxScopePath || m_scopeStarts.size() > std::size_t(MaxScopePath))
        return fail(QStringLiteral("the scopes are nested too deep"));
    return true;
}

bool VcdReader::readUpscope()
{
    if (m_scopeStarts.empty())
        return fail(QStringLiteral("$upscope without a $scope"));
    m_scope.truncate(m_scopeStarts.back());
    m_scopeStarts.pop_back();
    return skipSection(QStringLiteral("$upscope"));
}

bool VcdReader::readTimescale()
{
    static QRegularExpression const legal(QStringLiteral(R"(\A(1|10|100)(s|ms|us|ns|ps|fs)\z)"));
    std::vector<QByteArray> words;
    if (!sectionWords(QStringLiteral("$timescale"), words))
        return false;
    QByteArray const scale = joined(words, 0);
    if (!legal.match(QString::fromLatin1(scale)).hasMatch())
        return fail(QStringLiteral("\"%1\" is no time scale").arg(shown(scale)));
    return true;
}

bool VcdReader::readVariable(std::function<void(VcdVariable const&)> const& visit)
{
    std::vector<QByteArray> words;
    if (!sectionWords(QStringLiteral("$var"), words))
        return false;
    if (words.size() < 4)
        return fail(QStringLiteral("a $var needs a type, a width, an identifier code and a name"));
    bool ok = false;
    VcdVariable variable;
    variable.width = words[1].toInt(&ok);
    if (!ok || variable.width < 0)
        return fail(QStringLiteral("\"%1\" is no width").arg(shown(words[1])));
    variable.isBits = !words[0].startsWith("real") && words[0] != "string";
    variable.code = addCode(words[2], variable.isBits);
    QByteArray name = joined(words, 3);
    takeRange(name, variable);
    variable.path = m_scope + pathComponent(name);
    visit(variable);
    return true;
}

int VcdReader::addCode(QByteArray const& text, bool isBits)
{
    int code = findCode(std::string_view(text.constData(), std::size_t(text.size())));
    if (code < 0) {
        code = codeCount();
        m_isBits.push_back(false);
        if (text.size() <= MaxShortCode)
            m_shortCodes.insert(packedCode({text.constData(), std::size_t(text.size())}), code);
        else
            m_longCodes.insert(text, code);
    }
    if (isBits)
        m_isBits[std::size_t(code)] = true;
    return code;
}

int VcdReader::findCode(std::string_view text) const
{
    if (text.size() <= MaxShortCode)
        return m_shortCodes.value(packedCode(text), -1);
    return m_longCodes.value(toBytes(text), -1);
}

/// `event` is set for keywords that concern the caller.
bool VcdReader::readKeyword(QByteArray const& word, Event& event)
{
    if (word == "$end") {
        if (!m_inDump)
            return fail(QStringLiteral("$end without a section"));
        m_inDump = false;
    } else if (word == "$dumpvars" || word == "$dumpall") {
        m_inDump = true;
    } else if (word == "$dumpoff" || word == "$dumpon") {
        m_inDump = true;
        event = word == "$dumpoff" ? Event::DumpOff : Event::DumpOn;
    } else {
        return skipSection(shown(word));
    }
    return true;
}

bool VcdReader::readTime(std::string_view digits)
{
    bool ok = false;
    bool const plain =
        std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
    quint64 const time = plain ? toBytes(digits).toULongLong(&ok) : 0;
    if (!ok)
        return fail(QStringLiteral("\"#%1\" is no time").arg(shown(toBytes(digits))));
    if (m_hasTime && time < m_time)
        return fail(QStringLiteral("time goes back from %1 to %2").arg(m_time).arg(time));
    m_time = time;
    m_hasTime = true;
    m_inDump = false; // some tools leave its $end out
    return true;
}

/// A change: the value and, in the same word or the next one, the identifier code.
bool VcdReader::readValue(std::string_view word)
{
    char const kind = word[0];
    std::string_view code;
    if (isValueCharacter(kind)) {
        m_value.assign(1, kind);
        code = word.substr(1);
    } else if (std::string_view("bBrRsS").find(kind) != std::string_view::npos) {
        m_value.assign(word.substr(1));
    } else {
        return fail(
            QStringLiteral("\"%1\" is neither a time nor a value").arg(shown(toBytes(word))));
    }
    bool const isVector = kind == 'b' || kind == 'B';
    if (isVector &&
        (m_value.empty() || !std::all_of(m_value.begin(), m_value.end(), isValueCharacter)))
        return fail(QStringLiteral("\"%1\" is no value of bits").arg(shown(toBytes(word))));
    if (code.empty()) {
        if (!nextWord(QStringLiteral("a value")))
            return false;
        code = m_words.word();
    }
    m_code = findCode(code);
    if (m_code < 0)
        return fail(QStringLiteral("no variable has the code \"%1\"").arg(shown(toBytes(code))));
    if (kind == 'r' || kind == 'R' || kind == 's' || kind == 'S')
        m_value.clear(); // reads as 0 where a variable of bits is meant
    return true;
}

} // namespace VEK::Simulator
