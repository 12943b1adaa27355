#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace VEK {

/// The cables of a report, each as a row of texts: the type's number (a `CABLE`), the cable's name,
/// its location and its serial text. Parts that announce no cable, or say too little of it, give no
/// row.
QList<QStringList> cableRows(QStringList const& parts);

} // namespace VEK
