#include "dump/vcdreader.h"

#include "dump/vcdvalue.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <tuple>

namespace VEK::Dump {
namespace {

constexpr int MaxScopePath = 64 * 1024;
constexpr int MaxSectionText = 256; // for the visitor
constexpr char ByteOrderMark[] = "\xEF\xBB\xBF";

QByteArray toBytes(std::string_view text)
{
    return QByteArray(text.data(), int(text.size()));
}

/// A piece of a word for a message.
QString shown(QByteArray const& text)
{
    return QString::fromUtf8(text.left(60));
}

bool areDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool parseTime(std::string_view digits, quint64& time)
{
    char const* const stop = digits.data() + digits.size();
    auto const [end, error] = std::from_chars(digits.data(), stop, time);
    return error == std::errc() && end == stop;
}

QString timeText(quint64 whole, std::string_view fraction)
{
    QString const text = QString::number(whole);
    return fraction.empty() ? text : text + QLatin1Char('.') + shown(toBytes(fraction));
}

/// What a character of a dump means.
class Characters
{
public:
    constexpr Characters()
    {
        for (char const c : std::string_view("01xXzZuUwWlLhH-"))
            m_isValue[static_cast<unsigned char>(c)] = true;
    }

    constexpr bool isValue(char c) const { return m_isValue[static_cast<unsigned char>(c)]; }

private:
    bool m_isValue[256] = {};
};

constexpr Characters characters;

/// What stands behind the "b"; some tools repeat it as "0b".
std::string_view vectorDigits(std::string_view word)
{
    bool const isTwice = word.size() > 2 && word[1] == '0' && (word[2] == 'b' || word[2] == 'B');
    return word.substr(isTwice ? 3 : 1);
}

bool areBits(std::string_view digits)
{
    bool areAll = !digits.empty();
    for (; digits.size() >= 8 && areZerosAndOnes(digits.data()); digits.remove_prefix(8))
        ;
    for (char const c : digits)
        areAll &= characters.isValue(c);
    return areAll;
}

QByteArray pathComponent(QByteArray name)
{
    if (name.startsWith('\\'))
        name.remove(0, 1);
    return name.replace('/', '.');
}

QByteArray joined(std::vector<QByteArray> const& words, std::size_t from,
                  char const* separator = "")
{
    QByteArray text;
    for (std::size_t i = from; i < words.size(); ++i)
        text += (i > from ? separator : "") + words[i];
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
    for (bool isFirst = true;; isFirst = false) {
        if (!nextWord(QStringLiteral("its declarations")))
            return false;
        QByteArray word = toBytes(m_words.word());
        if (isFirst && word.startsWith(ByteOrderMark))
            word.remove(0, int(sizeof(ByteOrderMark)) - 1);
        if (word.isEmpty()) // a mark with a blank behind it
            continue;
        bool ok = true;
        if (word == "$enddefinitions")
            return skipSection(QStringLiteral("$enddefinitions"));
        if (word == "$var")
            ok = readVariable(visit);
        else if (word == "$scope")
            ok = readScope();
        else if (word == "$upscope")
            ok = readUpscope();
        else if (word.startsWith('$') && word != "$end")
            ok = skipSection(shown(word));
        else
            ok = fail(QStringLiteral("\"%1\" is no declaration").arg(shown(word)));
        if (!ok)
            return false;
    }
}

/// The time of nearly all lines: whole units, not before the last one, and not at the file's end.
inline bool VcdReader::readUsualTime(std::string_view text, bool& isNew)
{
    constexpr std::size_t mostDigits = 18; // whatever they are, they fit
    if (text.empty() || text.size() > mostDigits || m_words.touchesEnd() || !m_fraction.empty())
        return false;
    quint64 time = 0;
    for (char const c : text) {
        if (c < '0' || c > '9')
            return false;
        time = 10 * time + quint64(c - '0');
    }
    if (m_hasTime && time < m_time)
        return false;
    isNew = !m_hasTime || time != m_time;
    m_time = time;
    m_hasTime = true;
    m_inDump = false; // some tools leave its $end out
    return true;
}

/// A change: the value and, in the same word or the next one, the identifier code. Values of other
/// variables than those of bits are skipped, whatever they look like.
inline bool VcdReader::readValue(std::string_view word)
{
    m_kind = word[0];
    std::size_t codeStart = 1; // in its word
    if (characters.isValue(m_kind))
        m_value = {&m_kind, 1};
    else if (!readLongValue(word))
        return false;
    if (word.size() == 1 || m_value.data() != &m_kind) {
        codeStart = 0;
        if (!nextCode())
            return false;
    }
    std::size_t const size = m_words.word().size() - codeStart;
    m_code = size <= VcdCodes::MaxPacked ? m_codes.findPacked(m_words.packed(codeStart))
                                         : m_codes.find(toBytes(m_words.word().substr(codeStart)));
    if (m_code < 0 || m_words.touchesEnd())
        return isCodeFine(m_words.word().substr(codeStart)) && isValueFine();
    return m_value.data() == &m_kind || isValueFine();
}

VcdReader::Event VcdReader::next()
{
    while (!m_hasFailed && m_words.next()) {
        std::string_view const word = m_words.word();
        if (m_words.tooLong()) {
            fail(QStringLiteral("a word is longer than %1 bytes").arg(VcdTokens::MaxWord));
            break;
        }
        if (word[0] == '#') {
            bool isNew = false;
            std::string_view const digits = word.substr(1);
            if ((readUsualTime(digits, isNew) || readTime(digits, isNew)) && isNew)
                return Event::Time;
        } else if (word[0] == '$') {
            Event event = Event::End;
            if (readKeyword(toBytes(word), event) && event != Event::End)
                return event;
        } else if (readValue(word) && m_isBits[std::size_t(m_code)]) {
            return Event::Change;
        }
    }
    if (!m_hasFailed && (m_inDump || m_words.failed()))
        failAtEnd(QStringLiteral("a dump of values"));
    if (!m_hasFailed)
        return Event::End;
    return m_isCut ? Event::Cut : Event::Error;
}

bool VcdReader::fail(QString const& what)
{
    if (!m_hasFailed)
        m_error = QStringLiteral("line %1: %2").arg(m_words.line()).arg(what);
    m_hasFailed = true;
    return false;
}

/// The words came to their end too early: what was simulated up to there is good.
bool VcdReader::failAtEnd(QString const& where)
{
    if (m_words.failed())
        return fail(QStringLiteral("the file can't be read further"));
    m_isCut = true;
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
    QByteArray text;
    while (m_words.next()) {
        if (m_words.word() != "$end") {
            if (m_visitSection && text.size() < MaxSectionText)
                text += (text.isEmpty() ? "" : " ") + toBytes(m_words.word().substr(0, 256));
            continue;
        }
        if (m_visitSection)
            m_visitSection(name.toUtf8(), text);
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

bool VcdReader::readVariable(std::function<void(VcdVariable const&)> const& visit)
{
    std::vector<QByteArray> words;
    VcdVariable variable;
    variable.line = m_words.line();
    if (!sectionWords(QStringLiteral("$var"), words))
        return false;
    if (words.size() < 4)
        return fail(QStringLiteral("a $var needs a type, a width, an identifier code and a name"));
    bool ok = false;
    variable.width = words[1].toInt(&ok);
    if (!ok || variable.width < 0)
        return fail(QStringLiteral("\"%1\" is no width").arg(shown(words[1])));
    variable.isBits = variable.width > 0 && !words[0].startsWith("real") && words[0] != "string";
    variable.code = addCode(words[2], variable.isBits);
    QByteArray name = joined(words, 3);
    takeRange(name, variable);
    variable.scope = m_scope;
    variable.name = joined(words, 3, " ");
    variable.path = m_scope + pathComponent(name);
    visit(variable);
    return true;
}

int VcdReader::addCode(QByteArray const& text, bool isBits)
{
    int code = m_codes.find(text);
    if (code < 0) {
        code = codeCount();
        m_isBits.push_back(false);
        m_codes.insert(text, code);
    }
    if (isBits)
        m_isBits[std::size_t(code)] = true;
    return code;
}

/// Whether the file may have been cut within this code: it ends here, and a code begins so.
bool VcdReader::isCutCode(std::string_view text) const
{
    return m_words.touchesEnd() && m_codes.hasLonger(toBytes(text));
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

/// Whole units, or with a fraction. `isNew`: later than the time before, or the first one.
bool VcdReader::readTime(std::string_view text, bool& isNew)
{
    std::size_t const point = text.find('.');
    std::string_view const whole = text.substr(0, point);
    std::string_view fraction = point < text.size() ? text.substr(point + 1) : std::string_view();
    while (!fraction.empty() && fraction.back() == '0')
        fraction.remove_suffix(1);
    quint64 time = 0;
    bool const ok = areDigits(fraction) && parseTime(whole, time);
    bool const goesBack =
        ok && m_hasTime && std::tie(time, fraction) < std::tie(m_time, m_fraction);
    if ((whole.empty() || goesBack) && m_words.touchesEnd()) {
        failAtEnd(QStringLiteral("a time"));
        isNew = true; // whatever it was to be: the time before is whole
        return true;
    }
    if (!ok)
        return fail(QStringLiteral("\"#%1\" is no time").arg(shown(toBytes(text))));
    if (goesBack)
        return fail(QStringLiteral("time goes back from %1 to %2")
                        .arg(timeText(m_time, m_fraction), timeText(time, fraction)));
    isNew = !m_hasTime || time != m_time || fraction != m_fraction;
    m_time = time;
    m_fraction = fraction;
    m_hasTime = true;
    m_inDump = false; // some tools leave its $end out
    return true;
}

/// The value of a vector, a real or a string.
bool VcdReader::readLongValue(std::string_view word)
{
    bool const isVector = m_kind == 'b' || m_kind == 'B';
    if (!isVector && std::string_view("rRsS").find(m_kind) == std::string_view::npos)
        return fail(
            QStringLiteral("\"%1\" is neither a time nor a value").arg(shown(toBytes(word))));
    m_value = isVector ? vectorDigits(word) : word.substr(1);
    return true;
}

bool VcdReader::isCodeFine(std::string_view code)
{
    if (isCutCode(code))
        return failAtEnd(QStringLiteral("a value"));
    return m_code >= 0 ||
           fail(QStringLiteral("no variable has the code \"%1\"").arg(shown(toBytes(code))));
}

bool VcdReader::isValueFine()
{
    bool const isVector = m_kind == 'b' || m_kind == 'B';
    if (isVector && m_isBits[std::size_t(m_code)] && !areBits(m_value))
        return fail(
            QStringLiteral("\"%1\" is no value of bits").arg(shown(m_kind + toBytes(m_value))));
    if (!isVector && !characters.isValue(m_kind))
        m_value = {}; // reads as 0 where a variable of bits is meant
    return true;
}

/// The word behind a value, which stays.
bool VcdReader::nextCode()
{
    if (!m_words.nextKeeping(m_value))
        return failAtEnd(QStringLiteral("a value"));
    if (m_words.tooLong())
        return fail(QStringLiteral("a word is longer than %1 bytes").arg(VcdTokens::MaxWord));
    return true;
}

} // namespace VEK::Dump
