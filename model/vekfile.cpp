#include "model/vekfile.h"

#include <QFile>
#include <QStringList>
#include <QXmlStreamWriter>

#include <algorithm>

namespace VEK {
namespace {

constexpr int MaxNesting = 256;

/// A linear walk over XML text that only follows how deep elements are nested.
template <typename Text>
class NestingScanner
{
public:
    explicit NestingScanner(Text const& text) : m_text(text) {}

    /// True when an element lies deeper than MaxNesting; `line` and `column` then tell where.
    bool tooDeep(int& line, int& column)
    {
        int depth = 0;
        for (int c = next(); c >= 0; c = next()) {
            if (c != '<')
                continue;
            c = next();
            if (c == '/')
                --depth;
            else if (c == '!')
                skipDeclaration();
            else if (c == '?')
                isEmptyElement(c);
            else if (!isEmptyElement(c) && ++depth > MaxNesting)
                return tell(line, column);
        }
        return false;
    }

private:
    static int code(QChar c) { return c.unicode(); }
    static int code(char c) { return static_cast<unsigned char>(c); }

    /// The next character, -1 at the end. NULs are passed over, so that the ASCII of a UTF-16
    /// file reads like any other.
    int next()
    {
        while (m_at < m_text.size()) {
            int const c = code(m_text.at(m_at++));
            if (c)
                return c;
        }
        return -1;
    }

    /// Reads past the three characters of `end`.
    void skipPast(char const (&end)[4])
    {
        int last[3] = {};
        while (last[0] != end[0] || last[1] != end[1] || last[2] != end[2]) {
            last[0] = last[1];
            last[1] = last[2];
            last[2] = next();
            if (last[2] < 0)
                return;
        }
    }

    void skipDeclaration()
    {
        int const c = next();
        if (c == '-')
            skipPast("-->");
        else if (c == '[')
            skipPast("]]>");
    }

    /// Reads to the end of a start tag whose first character is `c`.
    bool isEmptyElement(int c)
    {
        int quote = 0;
        int last = 0;
        for (; c >= 0; last = c, c = next()) {
            if (quote)
                quote = c == quote ? 0 : quote;
            else if (c == '"' || c == '\'')
                quote = c;
            else if (c == '>')
                return last == '/';
        }
        return true;
    }

    bool tell(int& line, int& column) const
    {
        line = 1;
        column = 0;
        for (int i = 0; i < m_at; ++i) {
            bool const lineEnd = code(m_text.at(i)) == '\n';
            line += lineEnd;
            column = lineEnd ? 0 : column + 1;
        }
        return true;
    }

    Text const& m_text;
    int m_at = 0;
};

QString parseError(QString const& message, int line, int column)
{
    return QStringLiteral("%1 at %2:%3").arg(message).arg(line).arg(column);
}

template <typename Text>
ParsedDocument parse(Text const& text)
{
    ParsedDocument parsed;
    QString message;
    int line = 0;
    int column = 0;
    if (NestingScanner<Text>(text).tooDeep(line, column))
        parsed.error = parseError(QStringLiteral("elements nested too deeply"), line, column);
    else if (!parsed.document.setContent(text, &message, &line, &column))
        parsed.error = parseError(message, line, column);
    return parsed;
}

QStringList versionParts(QString const& version)
{
    return version.split(QLatin1Char('.'), Qt::SkipEmptyParts);
}

int versionNumber(QStringList const& parts, int i)
{
    if (i >= parts.size())
        return 0;
    bool ok = false;
    int const number = parts.at(i).toInt(&ok);
    if (!ok)
        throw CompareException(QStringLiteral("Invalid Vek config file."));
    return number;
}

QString modeText(VekMode mode)
{
    if (mode == VekModeStandard)
        return QStringLiteral("Standard");
    return mode == VekModeLite ? QStringLiteral("Lite") : QString();
}

} // namespace

int compareVersion(QString const& a, QString const& b)
{
    QStringList const left = versionParts(a);
    QStringList const right = versionParts(b);
    int const count = std::max(left.size(), right.size());
    for (int i = 0; i < count; ++i) {
        int const x = versionNumber(left, i);
        int const y = versionNumber(right, i);
        if (x != y)
            return x < y ? VersionLower : VersionHigher;
    }
    return VersionEqual;
}

QDomElement ParsedDocument::config() const
{
    QDomElement const root = document.documentElement();
    if (root.nodeName() == QLatin1String("KVX"))
        return root.firstChildElement(QStringLiteral("VEK_CONFIG"));
    return root;
}

ParsedDocument parseVekDocument(QString const& text)
{
    return parse(text);
}

ParsedDocument parseVekDocument(QByteArray const& bytes)
{
    return parse(bytes);
}

VekMode vekModeFromVekConfigFile(QString const& path)
{
    QFile file(path);
    // an empty path would draw a warning from Qt
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return VekModeUnknown;
    ParsedDocument const parsed = parseVekDocument(file.readAll());
    if (!parsed.isOk())
        return VekModeUnknown;
    QDomElement const mode = parsed.config().firstChildElement(QStringLiteral("Mode"));
    if (mode.isNull() || mode.text() == modeText(VekModeStandard))
        return VekModeStandard;
    return mode.text() == modeText(VekModeLite) ? VekModeLite : VekModeUnknown;
}

void startVekDocument(QXmlStreamWriter& writer, QString const& mode)
{
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(4);
    // "1" and not "1.0" is the form that all our files carry
    writer.writeStartDocument(QStringLiteral("1"));
    writer.writeStartElement(QStringLiteral("VEK_CONFIG"));
    writer.writeTextElement(QStringLiteral("Version"), LATEST_VERSION);
    if (!mode.isEmpty())
        writer.writeTextElement(QStringLiteral("Mode"), mode);
}

void fillInfoForEmptyVekConfig(QString const& path, VekMode mode)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return;
    QXmlStreamWriter writer(&file);
    startVekDocument(writer, modeText(mode));
    writer.writeEndDocument();
}

} // namespace VEK
