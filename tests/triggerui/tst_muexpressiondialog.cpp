#include "triggerui/muexpressiondialog.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace VEK;

namespace {

QString const Clear = QStringLiteral("C");

/// The button with that caption.
QPushButton* button(QWidget& dialog, QString const& caption)
{
    for (auto* const candidate : dialog.findChildren<QPushButton*>())
        if (candidate->text() == caption)
            return candidate;
    return nullptr;
}

void press(QWidget& dialog, QStringList const& captions)
{
    for (QString const& caption : captions) {
        QVERIFY2(button(dialog, caption), qPrintable(caption));
        QTest::mouseClick(button(dialog, caption), Qt::LeftButton);
    }
}

} // namespace

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
        press(dialog, {Clear, back});
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
        QTimer::singleShot(0, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            said << box->windowTitle() << box->text();
            box->accept();
        });
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
            QTimer::singleShot(0,
                               [captions] { press(*QApplication::activeModalWidget(), captions); });
            return MuExpressionDialog::getExpression(enabled, nullptr);
        };
        QCOMPARE(run({"M0", "M1", "|", "M2", "M3", "OK"}), QString("M0|M3"));
        QVERIFY(run({"M0", "Cancel"}).isNull());
    }
};

QTEST_MAIN(MuExpressionDialogTest)
#include "tst_muexpressiondialog.moc"
