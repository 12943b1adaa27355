#include "model/vekfile.h"

#include <QFile>
#include <QXmlInputSource>
#include <QXmlStreamWriter>

#include <algorithm>

namespace VEK {
namespace {

constexpr int MaxNesting = 256;

QString parseError(QString const& message, int line, int column)
{
    // all at once: the message may quote the document
    return QStringLiteral("%1 at %2:%3")
        .arg(message, QString::number(line), QString::number(column));
}

/// Looks through the markup ahead of the parser for what would exhaust the stack or the time:
/// parser and DOM recurse into nested elements, and so does the parser into declarations, whose
/// entities hide elements besides. Goes along with the parser up to the first mistake in the
/// document, where the parser ends.
class MarkupScan
{
public:
    explicit MarkupScan(QString const& text) : m_text(text) {}

    /// "message at line:column", null when there is nothing to refuse.
    QString refusal() const
    {
        int depth = 0;
        for (int at = find('<', 0); at < m_text.size(); at = find('<', at)) {
            int const start = at;
            if (skips(at, "<!--", "-->") || skips(at, "<![CDATA[", "]]>") || skips(at, "<?", "?>"))
                continue;
            if (skips(at, "</", ">")) {
                --depth;
                continue;
            }
            bool const isDocumentType = stands("<!DOCTYPE", at);
            at = tagEnd(at);
            if (isDocumentType && charAt(at) == '[')
                return refusalOf("declarations in the document type are not allowed", at);
            if (isDocumentType)
                continue;
            if (depth == MaxNesting)
                return refusalOf("elements nested too deeply", start);
            depth += charAt(at - 1) != '/';
        }
        return QString();
    }

private:
    ushort charAt(int at) const { return at < m_text.size() ? m_text.at(at).unicode() : 0; }

    int find(char character, int from) const
    {
        int const at = m_text.indexOf(QLatin1Char(character), from);
        return at < 0 ? m_text.size() : at;
    }

    bool stands(char const* head, int at) const
    {
        return m_text.midRef(at).startsWith(QLatin1String(head));
    }

    /// Moves behind what begins with `head` and goes to the next `tail`, if it stands here.
    bool skips(int& at, char const* head, char const* tail) const
    {
        if (!stands(head, at))
            return false;
        int const end = m_text.indexOf(QLatin1String(tail), at + int(qstrlen(head)));
        at = end < 0 ? m_text.size() : end + int(qstrlen(tail));
        return true;
    }

    /// The end of a tag, or where the declarations of a document type begin. Neither stands in
    /// quotes.
    int tagEnd(int at) const
    {
        for (; at < m_text.size(); ++at) {
            ushort const character = m_text.at(at).unicode();
            if (character == '"' || character == '\'')
                at = find(char(character), at + 1);
            else if (character == '>' || character == '[')
                return at;
        }
        return m_text.size();
    }

    QString refusalOf(char const* what, int at) const
    {
        QStringRef const before = m_text.leftRef(at);
        return parseError(QLatin1String(what), before.count(QLatin1Char('\n')) + 1,
                          at - before.lastIndexOf(QLatin1Char('\n')));
    }

    QString const& m_text;
};

// QXmlInputSource: the DOM of Qt 5 is built on it
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

template <typename Text>
ParsedDocument parse(Text const& text)
{
    QXmlInputSource source; // reads bytes in the encoding that they declare
    source.setData(text);
    QString const decoded = source.data();
    ParsedDocument parsed;
    parsed.error = MarkupScan(decoded).refusal();
    if (!parsed.isOk())
        return parsed;
    QString message;
    int line = 0;
    int column = 0;
    if (!parsed.document.setContent(decoded, &message, &line, &column))
        parsed.error = parseError(message, line, column);
    return parsed;
}

QT_WARNING_POP

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

/// An empty text when the version can be read, else the error.
QString versionError(QDomElement const& version, QStringList const& limits,
                     QString const& noVersion)
{
    if (version.isNull())
        return noVersion;
    try {
        for (QString const& limit : limits) {
            if (compareVersion(version.text(), limit) & (VersionLower | VersionEqual))
                return QString();
        }
    } catch (CompareException const& exception) {
        return exception.message;
    }
    return QStringLiteral("The version of Vek config file is too high.");
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

bool openVekFile(QFile& file, QIODevice::OpenMode mode)
{
    return !file.fileName().isEmpty() && file.open(mode | QIODevice::Text);
}

void reportFailure(QString const& message, bool* ok, QString* error)
{
    if (ok)
        *ok = false;
    if (error)
        *error = message;
}

bool acceptDocument(ParsedDocument const& parsed, QStringList const& limits,
                    QString const& noVersion, bool* ok, QString* error)
{
    QString const message =
        parsed.isOk() ? versionError(parsed.config().firstChildElement(QStringLiteral("Version")),
                                     limits, noVersion)
                      : parsed.error;
    if (!message.isEmpty())
        reportFailure(message, ok, error);
    else if (ok)
        *ok = true;
    return message.isEmpty();
}

int number(QDomElement const& element, QString const& attribute)
{
    return element.attribute(attribute).toInt();
}

void writeNumber(QXmlStreamWriter& writer, QString const& attribute, int number)
{
    writer.writeAttribute(attribute, QString::number(number));
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
    if (!openVekFile(file, QIODevice::ReadOnly))
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
    if (!openVekFile(file, QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    QXmlStreamWriter writer(&file);
    startVekDocument(writer, modeText(mode));
    writer.writeEndDocument();
}

} // namespace VEK
