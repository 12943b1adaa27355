#pragma once

#include <QDomElement>
#include <QString>

class QIODevice;

namespace VEK {

/// Writes one `Window` element as a text table in UTF-8: the bus groups, a title line, a row of
/// unknown values at time 0, and one row a sample from time `timeStep` on. A comma follows each
/// value. Values and names are written as they stand, without quotes. The device must be open for
/// writing. False once it has refused bytes, as on a full disk; it holds what went before.
bool exportCSV(QIODevice& device, QString const& timeUnit, int timeStep, QDomElement const& window);

/// The same into a file. False only if it could not be opened; what happens to it later is not
/// reported.
bool exportCSV(QString const& path, QString const& timeUnit, int timeStep,
               QDomElement const& window);

} // namespace VEK
