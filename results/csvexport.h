#pragma once

#include <QDomElement>
#include <QString>

namespace VEK {

/// Writes one `Window` element as a text table in UTF-8: the bus groups, a title line, a row of
/// unknown values at time 0, and one row a sample from time `timeStep` on. A comma follows each
/// value. False if the file could not be opened; what happens to it later, as on a full disk, is
/// not reported. Values and names are written as they stand, without quotes.
bool exportCSV(QString const& path, QString const& timeUnit, int timeStep,
               QDomElement const& window);

} // namespace VEK
