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
        text += QString::asprintf(
            "<SxCore sample_clock='clk' storage_depth='1024' index='%d' capture_amount='%d' "
            "trigger_pos='%d' window_num='%d' capture_init_data_enabled='%s'>\n",
            index++, core.amount, core.position, core.windows, core.initial ? "true" : "false");
        text += "<SignalList>" + core.entries + "</SignalList>\n<Triggers>";
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

QByteArray twoCores()
{
    QString const count = entry("count", 10);
    QString const pattern = unit(0, 0, "XXX1000000");
    return vek({{256, 20, 2, false, false, count, {{0, count}}, pattern},
                {256, 20, 1, true, false, count, {{0, count}}, pattern}});
}

QByteArray lite(int amount, int implemention, bool initial, QString const& entries)
{
    QString const core = "<SxCore_Lite index='0' sample_clock='clk' capture_amount='%1' "
                         "implemention='%2' capture_init_data_enabled='%3'><SignalList>%4"
                         "</SignalList></SxCore_Lite>";
    return ("<VEK_CONFIG><Version>3.0</Version><Mode>Lite</Mode>" +
            core.arg(amount).arg(implemention).arg(initial).arg(entries) + "</VEK_CONFIG>")
        .toLatin1();
}

} // namespace Setup
