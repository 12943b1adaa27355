#include "analyzer/batchrun.h"
#include "analyzer/commandline.h"

#include <QTest>

using namespace VEK;

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void cableWords()
    {
        struct Row
        {
            QStringList words;
            int cable;
            char const* name;
        };
        char const* const ft2ch = "Kavro USB Cable(FT2CH)";
        for (Row const& row : {Row{{}, 0, ""},
                               {{"-cable", "FT2CH-channel1"}, 1, ft2ch},
                               {{"-cable", "LPT-ft2ch"}, 1, ft2ch},
                               {{"-cable", "lpt", "-cable", "tr7qz"}, 0, ""},
                               {{"-cable", "Lpt"}, 0, ""},
                               {{"-cable", "FT2CH", "-cable", "LPT"}, 3, ft2ch}, // The name stays.
                               {{"-cable", "LPT", "-cable", "x"}, 3, ""}}) {
            CommandLine const line = parseCommandLine(QStringList{"veksh"} + row.words);
            QCOMPARE(int(line.cable), row.cable);
            QCOMPARE(line.cableName, row.name);
            QCOMPARE(int(line.channel), 0);
        }
    }

    void valuesAreTheNextWord()
    {
        CommandLine const line =
            parseCommandLine({"-vek", "-out", "-vek", "junk", "-vek", "a.vek", "-device", "TK-101",
                              "-vek", "b.vek", "-location", "7", "-Vek", "c.vek"});
        QCOMPARE((QStringList{line.outputBase, line.vekFile, line.device, line.location}),
                 (QStringList{"-vek", "b.vek", "TK-101", "7"}));
        QCOMPARE(parseCommandLine({"veksh", "-out", "x", "-out"}).outputBase, "");
        QCOMPARE(outputPrefix("", "dir.d/name"), "name");
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
