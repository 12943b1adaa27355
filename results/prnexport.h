#pragma once

#include <QDomElement>
#include <QList>
#include <QString>

class QIODevice;

namespace VEK {

/// Which columns a PRN file gets.
enum PrnMode : int {
    PrnAllColumns = 0,    ///< Buses, each followed by its members, and plain signals.
    PrnWithoutMembers = 1 ///< Buses and plain signals. Any other mode gives no columns.
};

/// Writes one `Window` element as a tab-separated table in UTF-8: a title line, in which "/" stands
/// in front of every column that is no bus, and one row a sample from time 0 on. The device must be
/// open for writing. False once it has refused bytes, as on a full disk; it holds what went before.
bool exportPRN(QIODevice& device, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, int mode);

/// The same with the buses whose numbers stand in `selection`, counted in the order of
/// `getBusNames`. The selection must be ascending: a number after a greater one is never met.
bool exportPRN(QIODevice& device, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, QList<int> const& selection);

/// The same into a file. False only if it could not be opened; what happens to it later is not
/// reported.
bool exportPRN(QString const& path, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, int mode);
bool exportPRN(QString const& path, QString const& timeUnit, unsigned int timeStep,
               QDomElement const& window, QList<int> const& selection);

} // namespace VEK
