#include "wavemonitor/busnaming.h"

#include <QtTest>

using namespace WaveMonitor;

class tst_BusNaming : public QObject
{
    Q_OBJECT

private slots:
    void vectors_data()
    {
        QTest::addColumn<QString>("signalNames");
        QTest::addColumn<QString>("name");
        QTest::newRow("falls") << "t/d[2] t/d[1] t/d[0]"
                               << "t/d[2:0]";
        QTest::newRow("rises") << "d[9] d[10]"
                               << "d[9:10]";
        QTest::newRow("two dimensions") << "m[1][3] m[1][2]"
                                        << "m[1][3:2]";
        QTest::newRow("percent") << "%1[1] %1[0]"
                                 << "%1[1:0]";
        QTest::newRow("step of 2") << "a[0] a[2]"
                                   << "";
        QTest::newRow("turns") << "a[1] a[0] a[1]"
                               << "";
        QTest::newRow("twice the same") << "a[1] a[1]"
                                        << "";
        QTest::newRow("other stem") << "a[1] b[2]"
                                    << "";
        QTest::newRow("no index") << "a[1] a"
                                  << "";
        QTest::newRow("leading zero") << "a[03] a[02]"
                                      << "";
        QTest::newRow("no stem") << "[1] [0]"
                                 << "";
        QTest::newRow("single") << "a[0]"
                                << "";
        QTest::newRow("no int") << "a[99999999999] a[99999999998]"
                                << "";
        QTest::newRow("none") << ""
                              << "";
    }

    void vectors()
    {
        QFETCH(QString, signalNames);
        QTEST(vectorName(signalNames.split(' ', Qt::SkipEmptyParts)), "name");
    }

    void groups_data()
    {
        QTest::addColumn<QString>("busNames");
        QTest::addColumn<QString>("name");
        QTest::newRow("no bus") << ""
                                << "group_0";
        QTest::newRow("gap") << "group_2[1:0] group_0[3:0]"
                             << "group_1";
        QTest::newRow("next") << "group_1[1:0] group_0[3:0]"
                              << "group_2";
        QTest::newRow("user's names") << "group_x[1:0] group_0 group_00[1:0] agroup_0[1:0]"
                                      << "group_0";
        QTest::newRow("no int") << "group_0[1:0] group_99999999999[1:0]"
                                << "group_1";
    }

    void groups()
    {
        QFETCH(QString, busNames);
        QTEST(freeGroupName(busNames.split(' ', Qt::SkipEmptyParts)), "name");
    }
};

QTEST_APPLESS_MAIN(tst_BusNaming)
#include "tst_busnaming.moc"
