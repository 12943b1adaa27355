#pragma once

#include <QDomElement>
#include <QString>

/// The "Window" element of a result file that veksh left, made in the document but not placed in
/// it. A CSV file does not tell the trigger's sample: -1 leaves it out. Null if the file can't be
/// read.
QDomElement windowFromCsv(QString const& path, int trigger, QDomDocument& document);
