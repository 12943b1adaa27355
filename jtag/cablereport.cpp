#include "jtag/cablereport.h"

namespace VEK {

namespace {

/// The type number, as text, of the first field of a reported cable.
QString cableType(QString const& field)
{
    if (field.contains(QStringLiteral("FT2CH")) || field.contains(QStringLiteral("Debugger")))
        return QStringLiteral("1");
    if (field.contains(QStringLiteral("TR7QZ")))
        return QStringLiteral("0");
    if (field.contains(QStringLiteral("LPT")))
        return QStringLiteral("3");
    if (field.contains(QStringLiteral("WINUSB")))
        return QStringLiteral("2");
    return QStringLiteral("0");
}

} // namespace

QList<QStringList> cableRows(QStringList const& parts)
{
    QList<QStringList> rows;
    for (QString const& part : parts) {
        if (!part.contains(QStringLiteral("Cable found:")))
            continue;
        QString const cable = part.split(QLatin1Char(':')).at(1).simplified();
        QStringList const fields = cable.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        if (fields.size() > 3)
            rows.append({cableType(fields.at(0)), fields.at(1), fields.at(2),
                         fields.at(3).section(QLatin1Char('('), 0, 0).simplified()});
    }
    return rows;
}

} // namespace VEK
