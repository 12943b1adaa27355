#include "results/csvexport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"

#include "windows.h"

#include <QDir>
#include <QtTest>

using namespace VEK;

namespace {

/// A locale with digits of its own, which must not show. Qt asks for it once, before main goes on.
bool const isForeign = qputenv("LC_ALL", "fa_IR.UTF-8");

/// The file that an element of a case asks for: `Csv`, `Prn` with a `mode` or a `selection`, or
/// `Vcd`, which is given without its date.
QString goldenExport(QDomElement const& choice, QDomElement const& window)
{
    QString const step = choice.attribute("step", "1");
    QString const unit = choice.attribute("unit", "us");
    QList<int> selection;
    for (QString const& number : choice.attribute("selection").split(' ', Qt::SkipEmptyParts))
        selection.append(number.toInt());
    QString text = exported([&](QString const& path) {
        if (choice.tagName() == "Csv")
            return exportCSV(path, unit, step.toInt(), window);
        if (choice.tagName() == "Vcd")
            return exportVCD(path, "top", "tækt", choice.attribute("level", "1") == "1", "ns",
                             step.toULongLong(), choice.attribute("trigger", "-1").toInt(), window);
        return choice.hasAttribute("mode")
                   ? exportPRN(path, unit, step.toUInt(), window, choice.attribute("mode").toInt())
                   : exportPRN(path, unit, step.toUInt(), window, selection);
    });
    QRegularExpression const date("  \\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d\n");
    return text.replace(date, "DATE\n");
}

/// What follows the definitions, with step 2 and without a trigger.
QString dump(QString const& signalElements)
{
    Window const window(windowXml(signalElements, ""));
    return exported([&](QString const& path) {
               return exportVCD(path, "top", "clk", true, "ns", 2, -1, window.element);
           })
        .section("$enddefinitions\n$end\n", 1);
}

/// The same, looked at one sample at a time.
QString plainDump(QStringList const& columns)
{
    int const count = columns.first().size();
    QString text = "#0|$dumpvars|1!|X'|X#|X$|$end|";
    for (int i = 0; i < count; ++i) {
        text += QString("#%1|").arg(2 * i + 1);
        text += i == 0 ? "$comment Sample 0 (Start) $end|" : "";
        text += i == count - 1 ? QString("$comment Sample %1 (End) $end|").arg(count) : "";
        text += "0!|";
        for (int k = 0; k < columns.size(); ++k) {
            QStringRef const samples = columns.at(k).midRef(0, i + 1);
            if (samples.size() > i && (i == 0 || samples.at(i) != samples.at(i - 1)))
                text += QString(samples.at(i)) + "'#$"[k] + '|';
        }
        text += QString("#%1|1!||").arg(2 * i + 2);
    }
    text += QString("#%1|").arg(2 * count + 2);
    return text.replace('|', '\n').replace('\'', '"');
}

} // namespace

class TestExports : public QObject
{
    Q_OBJECT

private slots:
    /// Each folder of `golden` holds a window in its `case.xml`, and the files expected of it.
    void golden_data()
    {
        addTextColumns();
        QDir const cases(QStringLiteral(VEK_SOURCE_ROOT "/tests/results/golden"));
        for (QFileInfo const& folder : cases.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QDomDocument document;
            QVERIFY(document.setContent(TempFolder::content(folder.filePath() + "/case.xml")));
            QDomElement const window = document.documentElement().firstChildElement("Window");
            QDomElement choice = document.documentElement().firstChildElement();
            for (int i = 1; choice != window; choice = choice.nextSiblingElement(), ++i) {
                QString const file = choice.attribute("expected");
                row(qPrintable(QString("%1 %2 %3").arg(folder.fileName()).arg(i).arg(file)),
                    goldenExport(choice, window),
                    TempFolder::content(folder.filePath() + '/' + file));
            }
        }
    }

    void golden() { compareTexts(); }
    /// The export looks at samples in blocks: changes within, at and across the borders.
    void dumpsOfManySamples()
    {
        std::mt19937 random{1};
        for (int round = 0; round < 40; ++round) {
            QString samples(130, '0');
            for (int at : {0, 62, 64, 127, 129})
                samples[round ? int(random() % 130) : at] = round % 2 ? 'x' : '1';
            QStringList const columns{samples, samples + "1010", samples.left(128)};
            QString signalElements;
            for (QString const& column : columns)
                signalElements += signalXml("0", "s", "", column);
            QCOMPARE(dump(signalElements), plainDump(columns));
        }
    }

    void codes()
    {
        QMap<int, QString> const codes{{0, "!"},    {1, "\""},    {93, "~"},
                                       {94, "\"!"}, {95, "\"\""}, {187, "\"~"},
                                       {188, "#!"}, {8835, "~~"}, {8836, "\x7f!"}};
        for (int value : codes.keys())
            QCOMPARE(VCD::vcdIDForSignalAtIndex(value), codes[value]);

        for (int count : {93, 94, 95}) {
            QString const text = dump(signalXml("0", "s", "", QString(100, '1')).repeated(count));
            QVERIFY(text.contains("X" + codes[count] + "\n$end\n#1\n"));
            QVERIFY(text.contains("\n1" + codes[count] + "\n#2\n1!\n\n#3\n0!\n#4\n"));
        }
    }
};

QTEST_GUILESS_MAIN(TestExports)
#include "tst_exports.moc"
