#include "analyzer/commandline.h"
#include "analyzer/batchrun.h"

#include <QTest>

using namespace VEK;

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void cableWords_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<int>("cable");
        QTest::addColumn<QString>("name");
        QString const ft2ch = "Kavro USB Cable(FT2CH)";
        QTest::newRow("none") << QStringList{} << 0 << "";
        QTest::newRow("ft2ch") << QStringList{"-cable", "ft2ch"} << 1 << ft2ch;
        QTest::newRow("channel 1 stays 0") << QStringList{"-cable", "FT2CH-channel1"} << 1 << ft2ch;
        QTest::newRow("lpt") << QStringList{"-cable", "myLPT1"} << 3 << "";
        QTest::newRow("ft2ch before lpt") << QStringList{"-cable", "LPT-ft2ch"} << 1 << ft2ch;
        QTest::newRow("tr7qz") << QStringList{"-cable", "lpt", "-cable", "tr7qz"} << 0 << "";
        QTest::newRow("mixed case is none") << QStringList{"-cable", "Lpt"} << 0 << "";
        QTest::newRow("name stays")
            << QStringList{"-cable", "FT2CH", "-cable", "LPT"} << 3 << ft2ch;
        QTest::newRow("unknown keeps") << QStringList{"-cable", "LPT", "-cable", "x"} << 3 << "";
    }

    void cableWords()
    {
        QFETCH(QStringList, words);
        QFETCH(int, cable);
        QFETCH(QString, name);
        CommandLine const line = parseCommandLine(QStringList{"veksh"} + words);
        QCOMPARE(int(line.cable), cable);
        QCOMPARE(line.cableName, name);
        QCOMPARE(int(line.channel), 0);
    }

    void valuesAreTheNextWord()
    {
        CommandLine line =
            parseCommandLine({"-vek", "-out", "-vek", "junk", "-vek", "a.vek", "-device", "TK-101",
                              "-vek", "b.vek", "-location", "7", "-Vek", "c.vek"});
        QCOMPARE(line.outputBase, QStringLiteral("-vek"));
        QCOMPARE(line.vekFile, QStringLiteral("b.vek"));
        QCOMPARE(line.device, QStringLiteral("TK-101"));
        QCOMPARE(line.location, QStringLiteral("7"));
        line = parseCommandLine({"veksh", "-out", "x", "-out"});
        QCOMPARE(line.outputBase, QString());
        QCOMPARE(parseCommandLine({}).vekFile, QString());
    }

    void prefixes_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("prefix");
        QTest::newRow("dots") << ""
                              << "/a/b/top.v2.vek"
                              << "top";
        QTest::newRow("no dot") << ""
                                << "dir/name"
                                << "name";
        QTest::newRow("no file") << ""
                                 << ""
                                 << "";
        QTest::newRow("base") << "/tmp/run.csv"
                              << "/a/top.vek"
                              << "/tmp/run.csv";
        QTest::newRow("place markers") << "%1%2"
                                       << ""
                                       << "%1%2";
    }

    void prefixes()
    {
        QFETCH(QString, base);
        QFETCH(QString, file);
        QTEST(outputPrefix(base, file), "prefix");
    }

    void endings()
    {
        QVERIFY(hasRunEnding("a.vek") && hasRunEnding("a.rsx"));
        QVERIFY(!hasRunEnding("a.VEK") && !hasRunEnding("a.vek ") && !hasRunEnding(""));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
