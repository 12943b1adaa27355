#include "model/vekfile.h"

#include <QFile>
#include <QStringList>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>
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

// The DOM is built with this parser, so what it meets here is what the DOM will be made of.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

/// Refuses, ahead of the DOM, elements that are nested so deeply that building or destroying them
/// would exhaust the stack.
class Gatekeeper : public QXmlDefaultHandler
{
public:
    /// Reads through the whole source; false when it is refused or malformed.
    bool lets(QXmlInputSource const& source)
    {
        QXmlSimpleReader reader;
        // as the DOM sets it up without namespaces
        reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
        reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
        reader.setContentHandler(this);
        reader.setErrorHandler(this);
        return reader.parse(source);
    }

    bool startElement(QString const&, QString const&, QString const&,
                      QXmlAttributes const&) override
    {
        return ++m_depth <= MaxNesting;
    }

    bool endElement(QString const&, QString const&, QString const&) override
    {
        --m_depth;
        return true;
    }

    QString errorString() const override { return QStringLiteral("elements nested too deeply"); }

    bool fatalError(QXmlParseException const& exception) override
    {
        m_error = parseError(exception.message(), exception.lineNumber(), exception.columnNumber());
        return false;
    }

    /// "message at line:column", null when nothing was wrong.
    QString error() const { return m_error; }

private:
    int m_depth = 0;
    QString m_error;
};

/// The place of the declarations inside a document type, -1 when there are none. No configuration
/// has any; the parser recurses into content models, and entities hide elements and cost a lot.
int declarationsAt(QString const& text)
{
    QString const head = QStringLiteral("<!DOCTYPE");
    for (int at = text.indexOf(head); at >= 0; at = text.indexOf(head, at)) {
        QChar quote;
        for (at += head.size(); at < text.size(); ++at) {
            QChar const c = text.at(at);
            if (!quote.isNull())
                quote = c == quote ? QChar() : quote;
            else if (c == QLatin1Char('"') || c == QLatin1Char('\''))
                quote = c;
            else if (c == QLatin1Char('['))
                return at;
            else if (c == QLatin1Char('>'))
                break;
        }
    }
    return -1;
}

QString declarationsError(QString const& text, int at)
{
    QString const before = text.left(at + 1);
    return parseError(QStringLiteral("declarations in the document type are not allowed"),
                      before.count(QLatin1Char('\n')) + 1,
                      at - before.lastIndexOf(QLatin1Char('\n')));
}

template <typename Text>
ParsedDocument parse(Text const& text)
{
    ParsedDocument parsed;
    QXmlInputSource source;
    source.setData(text);
    Gatekeeper gatekeeper;
    QString message;
    int line = 0;
    int column = 0;
    int const declarations = declarationsAt(source.data());
    if (declarations >= 0)
        parsed.error = declarationsError(source.data(), declarations);
    else if (!gatekeeper.lets(source))
        parsed.error = gatekeeper.error();
    else if (!parsed.document.setContent(text, &message, &line, &column))
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

void reportFailure(QString const& message, bool* ok, QString* error)
{
    if (ok)
        *ok = false;
    if (error)
        *error = message;
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
