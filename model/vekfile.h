#pragma once

#include "model/capturecore.h"

#include <QDomDocument>
#include <QIODevice>
#include <QString>
#include <QStringList>

class QFile;
class QXmlStreamWriter;

/// What the two forms of the configuration file share.
///
/// A document is either a plain `VEK_CONFIG` element or one wrapped in a `KVX` root, which is read
/// and never written.
namespace VEK {

/// Version that is written, and the highest that is read.
inline const QString LATEST_VERSION = QStringLiteral("3.0");

/// Flags of `compareVersion`; callers test with a mask, such as Lower | Equal.
enum VersionOrder : int { VersionLower = 1, VersionEqual = 2, VersionHigher = 4 };

/// Compares versions such as 2.10 part by part as numbers, a missing part counting as 0. Gives the
/// VersionOrder of `a` against `b`. Throws CompareException when a part is no integer.
int compareVersion(QString const& a, QString const& b);

/// The kind of a configuration file. A file without a mode is Standard; one that can't be opened
/// or parsed, or has another mode, is unknown.
VekMode vekModeFromVekConfigFile(QString const& path);

/// Writes a legal file without cores; does nothing when the path can't be opened. No mode is
/// written for anything but Standard and Lite.
void fillInfoForEmptyVekConfig(QString const& path, VekMode mode);

/// Starts a document on `writer` down to the version and the mode, formatted as all files are.
void startVekDocument(QXmlStreamWriter& writer, QString const& mode);

/// A parsed document, or the parser's message as "message at line:column".
struct ParsedDocument
{
    QDomDocument document;
    QString error; ///< Null when the document was parsed.

    bool isOk() const { return error.isNull(); }
    /// The element that holds the version, the mode and the cores.
    QDomElement config() const;
};

/// Opens a configuration file; false when it can't be, and without a word of Qt's for an empty
/// path.
bool openVekFile(QFile& file, QIODevice::OpenMode mode);

/// Fills in what a reader reports on failure; both may be null.
void reportFailure(QString const& message, bool* ok, QString* error);

/// Whether the cores of a document may be read, which `ok` and `error` tell too: it was parsed and
/// its version is at or below one of `limits`, with which it is compared in turn. `noVersion` is
/// the error of one that has none.
bool acceptDocument(ParsedDocument const& parsed, QStringList const& limits,
                    QString const& noVersion, bool* ok, QString* error);

/// A decimal attribute; a missing one, and one that is no number, gives 0.
int number(QDomElement const& element, QString const& attribute);
void writeNumber(QXmlStreamWriter& writer, QString const& attribute, int number);

/// Parses text, or bytes in the encoding that they declare. Refuses what no configuration has and
/// hostile documents use: elements nested very deeply and document type declarations.
ParsedDocument parseVekDocument(QString const& text);
ParsedDocument parseVekDocument(QByteArray const& bytes);

} // namespace VEK
