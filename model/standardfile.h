#pragma once

#include "model/capturecore.h"

#include <QDomDocument>
#include <QString>

/// The configuration file of standard cores: XML, one `SxCore` element a core.
namespace VEK {

/// The whole document.
QString writeVekConfigToString(QList<SxCore*> const& cores);

/// Writes the document in Latin-1; false when the file can't be opened.
bool writeVEKConfigToXml(QList<SxCore*> const& cores, QString const& path);

/// Reads a document. `id` gets the identifier of a wrapped document, else it stays; `ok` and
/// `error` may be null. The caller owns the cores; on failure there are none, `ok` is false and
/// `error` tells why. Nothing in the records of a core is validated.
QList<SxCore*> readVEKConfigFromString(QString const& text, QString& id, bool* ok, QString* error);

/// The same from a file in Latin-1. An empty file is no error and has no cores.
QList<SxCore*> readVEKConfigFromXml(QString const& path, QString& id, bool* ok, QString* error);

/// The reader of the records, of all versions. The caller owns the cores.
QList<SxCore*> read_VER_2000(QDomDocument const& document, QString& id);

} // namespace VEK
