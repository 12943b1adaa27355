#include "setup.h"

namespace Setup {

QString entry(QString const& name, int width, QString const& attributes)
{
    if (width == 0)
        return QString("<Signal %1>%2</Signal>\n").arg(attributes, name);
    QString text = QString("<Bus restorename='%1' %2>").arg(name, attributes);
    for (int bit = width - 1; bit >= 0; --bit)
        text += QString("<Signal>%1[%2]</Signal>").arg(name).arg(bit);
    return text + "</Bus>\n";
}

QString unit(int index, int port, QString const& value, QString const& more)
{
    return QString("<MatchUnit enabled='1' index='%1' trigger='%2' value0='%3' %4/>\n")
        .arg(QString::number(index), QString::number(port), value, more);
}

QByteArray vek(QVector<Core> const& cores)
{
    QString text = "<VEK_CONFIG><Version>3.0</Version><Mode>Standard</Mode>\n";
    int index = 0;
    for (Core const& core : cores) {
        text += QString("<SxCore sample_clock='clk' storage_depth='1024' index='%1' "
                        "capture_amount='%2' trigger_pos='%3' window_num='%4' "
                        "capture_init_data_enabled='%5'>\n<SignalList>%6</SignalList>\n<Triggers>")
                    .arg(index++)
                    .arg(core.amount)
                    .arg(core.position)
                    .arg(core.windows)
                    .arg(core.initial ? "true" : "false", core.entries);
        for (int port : core.ports.keys())
            text += QString("<Trigger index='%1'><SignalList>%2</SignalList></Trigger>\n")
                        .arg(QString::number(port), core.ports[port]);
        text += "</Triggers>\n<MatchUnits>" + core.units + "</MatchUnits>\n<Expressions type='" +
                (core.dynamic ? "Dynamic" : "Static") + "'>";
        for (QString const& expression : core.expressions)
            text += "<Expression>" + expression.toHtmlEscaped() + "</Expression>";
        text += "</Expressions></SxCore>\n";
    }
    return (text + "</VEK_CONFIG>\n").toLatin1();
}

} // namespace Setup
