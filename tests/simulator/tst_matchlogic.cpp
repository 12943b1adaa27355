#include "simulator/truthtable.h"

#include <QtTest>

using namespace VEK::Simulator;

class TestMatchLogic : public QObject
{
    Q_OBJECT

private slots:
    void expressions()
    {
        struct
        {
            char const* text;
            unsigned units;
            char const* expected; // combinations 0 to 7 of M0, M1, M2
        } const rows[] = {{"M0|M1&M2", 7, "01010111"},      {"M0^M1&M2", 7, "01010110"},
                          {"M0|M1^M2", 7, "01111101"},      {"(M0|M1)&M2", 7, "00000111"},
                          {"!M0&!(M1|M2)", 7, "10000000"},  {"!!M2", 4, "00001111"},
                          {" M0 &\tm~1M2 ", 5, "00000101"}, {"M0|M15&M10", 0x8401, "01010101"},
                          {"!M6&M0", 0x41, "01010101"},     {"M16&M00", 3, "00010001"}};
        for (auto const& row : rows) {
            TruthTable table;
            unsigned units = 0;
            QString error;
            QVERIFY2(compileExpression(row.text, table, units, error), qPrintable(error));
            QCOMPARE(units, row.units);
            QByteArray values;
            for (unsigned i = 0; i < 8; ++i)
                values += table.at(i) ? '1' : '0';
            QCOMPARE(values, QByteArray(row.expected));
            QCOMPARE(table.at(0x8400), strstr(row.text, "M15") || table.at(0));
        }
    }

    void badExpressions()
    {
        QStringList rows = QString(",&M0,M0&,M0 M1,M0!,(M0,M0),(),M,N0,M0&N").split(',');
        rows << QString("M0|").repeated(5000) + "M0" << QString(4095, '(');
        for (QString const& text : rows) {
            TruthTable table;
            unsigned units = 0;
            QString error;
            QVERIFY2(!compileExpression(text, table, units, error), qPrintable(text));
            QVERIFY(!error.isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestMatchLogic)
#include "tst_matchlogic.moc"
