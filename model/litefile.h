#pragma once

#include "model/capturecore.h"

#include <QDomDocument>
#include <QString>

/// The configuration file of lite cores: that of standard cores without triggers, match units and
/// expressions, and with a few attributes of its own.
namespace VEK {

/// The whole document, which says of itself that it is UTF-8: write it so.
QString writeVekConfigToString_Lite(QList<SXCore_Lite*> const& cores);

/// Writes the document in UTF-8; false when the file can't be opened.
bool writeVEKConfigToXml_Lite(QList<SXCore_Lite*> const& cores, QString const& path);

/// Reads a file in the encoding that it declares. `id` gets the identifier of a wrapped document,
/// else it stays; `ok` and `error` may be null. The caller owns the cores; on failure there are
/// none, `ok` is false and `error` tells why. An empty file is no error and has no cores.
QList<SXCore_Lite*> readVEKConfigFromXml_Lite(QString const& path, QString& id, bool* ok,
                                              QString* error);

/// The reader of the records. The caller owns the cores.
QList<SXCore_Lite*> readLiteCores(QDomDocument const& document, QString& id);

} // namespace VEK
