#include "tests/support/widgettools.h"
#include "triggerui/muexpressiondialog.h"

#include <QLineEdit>

using namespace VEK;
using namespace widgettools;

class MuExpressionDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void padComposesTokens()
    {
        MuExpressionDialog dialog;
        dialog.show();
        press(dialog, {"!", "(", "M0", "&&", "M12", "|", "M3", ")", "^", "M15"});
        QCOMPARE(dialog.currentExpression(), QString("!(M0&M12|M3)^M15"));
        QVERIFY(dialog.isOk());

        QString const back(QChar(0x2190));
        press(dialog, {back});
        QCOMPARE(dialog.currentExpression(), QString("!(M0&M12|M3)^"));
        QVERIFY(!dialog.isOk());
        press(dialog, {"C", back});
        QCOMPARE(dialog.currentExpression(), QString());

        auto* const line = dialog.findChild<QLineEdit*>();
        QTest::keyClicks(line, "M1");
        QCOMPARE(line->text(), QString());
        QCOMPARE(button(dialog, "M0")->font().weight(), 75);
    }

    void refusedStaysOpen()
    {
        MuExpressionDialog dialog;
        dialog.show();
        press(dialog, {"M1", "&&"});
        QStringList said;
        answerBox(said);
        dialog.accept();
        QCOMPARE(said, (QStringList{"Error", "Please input the right expression"}));
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.currentExpression(), QString("M1&"));
        press(dialog, {"M2", "OK"});
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void runModally()
    {
        QList<bool> enabled{true, false, false, true};
        auto const run = [&](QStringList const& captions) {
            inDialog([captions](QWidget* dialog) { press(*dialog, captions); });
            return MuExpressionDialog::getExpression(enabled, nullptr);
        };
        QCOMPARE(run({"M0", "M1", "|", "M2", "M3", "OK"}), QString("M0|M3"));
        QVERIFY(run({"M0", "Cancel"}).isNull());
    }
};

QTEST_MAIN(MuExpressionDialogTest)
#include "tst_muexpressiondialog.moc"
