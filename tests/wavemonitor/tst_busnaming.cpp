#include "wavemonitor/tree/busnaming.h"

#include <QtTest>

using namespace WaveMonitor;

class tst_BusNaming : public QObject
{
    Q_OBJECT

private slots:
    void vectors()
    {
        std::pair<QString, QString> const cases[] = {
            {"t/d[2] t/d[1] t/d[0]", "t/d[2:0]"},
            {"d[9] d[10]", "d[9:10]"},
            {"m[1][3] m[1][2]", "m[1][3:2]"},
            {"%1[1] %1[0]", "%1[1:0]"},
            {"a[0] a[2]", ""}, // from here on no vectors
            {"a[1] a[0] a[1]", ""},
            {"a[1] a[1]", ""},
            {"a[1] b[2]", ""},
            {"a[1] a", ""},
            {"a[03] a[02]", ""},
            {"[1] [0]", ""},
            {"a[0]", ""},
            {"a[99999999999] a[99999999998]", ""},
            {"", ""},
        };
        for (auto const& [signalNames, name] : cases)
            QCOMPARE(vectorName(signalNames.split(' ', Qt::SkipEmptyParts)), name);
    }

    void groups()
    {
        std::pair<QString, QString> const cases[] = {
            {"", "group_0"},
            {"group_2[1:0] group_0[3:0]", "group_1"}, // a gap
            {"group_1[1:0] group_0[3:0]", "group_2"},
            {"group_x[1:0] group_0 group_00[1:0] agroup_0[1:0]", "group_0"}, // the user's names
            {"group_0[1:0] group_99999999999[1:0]", "group_1"},
        };
        for (auto const& [busNames, name] : cases)
            QCOMPARE(freeGroupName(busNames.split(' ', Qt::SkipEmptyParts)), name);
    }
};

QTEST_APPLESS_MAIN(tst_BusNaming)
#include "tst_busnaming.moc"
