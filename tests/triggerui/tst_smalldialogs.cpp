#include "model/alert.h"
#include "tests/support/widgettools.h"
#include "triggerui/muexpressiondialog.h"
#include "widgets/realdialog.h"
#include "widgets/reloadbanner.h"
#include "widgets/waitingtip.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QRadioButton>
#include <QSignalSpy>

using namespace VEK;
using namespace widgettools;

namespace {

template <typename Widget>
Widget* child(QWidget& widget, char const* name)
{
    return widget.findChild<Widget*>(QLatin1String(name));
}

/// The only tip of the process.
WaitingTip* tip()
{
    for (QWidget* const widget : QApplication::topLevelWidgets())
        if (auto* const candidate = qobject_cast<WaitingTip*>(widget))
            return candidate;
    return nullptr;
}

} // namespace

class SmallDialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void realDialogShowsAndTakes()
    {
        struct
        {
            RealType given;
            QString checked;
            RealType taken;
        } const cases[] = {
            {{0, 2, 7, 8, 24}, "Signed", {0, 2, 7, 8, 24}},
            {{0, 3, 99, 1, 2}, "Unsigned", {0, 3, 80, 8, 24}}, // the point held in range
            {{1, 0, -3, 0, 0}, "SinglePrecision", {1, 0, 0, 8, 24}},
            {{1, 1, 0, 8, 24}, "DoublePrecision", {1, 1, 0, 11, 53}},
            {{1, 9, 0, 0, 0}, "Signed", {0, 2, 0, 8, 24}}, // no such type
        };
        for (auto const& [given, checked, taken] : cases) {
            RealDialog dialog(given, nullptr);
            dialog.show();
            QVERIFY(dialog.findChild<QRadioButton*>(checked)->isChecked());
            QCOMPARE(child<QGroupBox>(dialog, "FixedPoint")->isVisible(), taken.kind == 0);
            QCOMPARE(child<QGroupBox>(dialog, "FloatingPoint")->isVisible(), taken.kind == 1);
            QVERIFY(!dialog.confirmed);

            press(dialog, {"OK"});
            QCOMPARE(dialog.result(), int(QDialog::Accepted));
            QVERIFY(dialog.confirmed);
            QVERIFY(dialog.realType.equal(taken));
            QCOMPARE(dialog.realType.binaryPoint, taken.binaryPoint);
            QCOMPARE(dialog.realType.exponentWidth, taken.exponentWidth);
            QCOMPARE(dialog.realType.fractionWidth, taken.fractionWidth);
        }
    }

    void applyKeepsRealDialogOpen()
    {
        RealDialog dialog(RealType(), nullptr);
        QSignalSpy applied(&dialog, &RealDialog::clickApply);
        dialog.show();
        child<QRadioButton>(dialog, "DoublePrecision")->setChecked(true);
        QTest::keyClick(child<QComboBox>(dialog, "comboBox"), Qt::Key_Down);
        QCOMPARE(child<QLineEdit>(dialog, "ExponentWidthValue")->text(), QString("11"));
        QCOMPARE(child<QLineEdit>(dialog, "FractionWidthValue")->text(), QString("53"));
        QTest::mouseClick(child<QRadioButton>(dialog, "SinglePrecision"), Qt::LeftButton);
        QCOMPARE(child<QLineEdit>(dialog, "FractionWidthValue")->text(), QString("24"));

        press(dialog, {"Apply"});
        QCOMPARE(applied.count(), 1);
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.realType.type, int(FloatingSingle));
        QTest::mouseClick(child<QRadioButton>(dialog, "DoublePrecision"), Qt::LeftButton);
        press(dialog, {"Cancel"});
        QVERIFY(!dialog.isVisible());
        QVERIFY(dialog.confirmed);
        QCOMPARE(dialog.realType.type, int(FloatingSingle));
    }

    void expressionPadComposesTokens()
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

    void refusedExpressionStaysOpen()
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

    void expressionIsAskedFor()
    {
        QList<bool> enabled{true, false, false, true};
        auto const run = [&](QStringList const& captions) {
            inDialog([captions](QWidget* dialog) { press(*dialog, captions); });
            return MuExpressionDialog::getExpression(enabled, nullptr);
        };
        QCOMPARE(run({"M0", "M1", "|", "M2", "M3", "OK"}), QString("M0|M3"));
        QVERIFY(run({"M0", "Cancel"}).isNull());
    }

    void bannerTellsAndAsks()
    {
        ReloadBanner changed(ReloadBanner::Changed, "/a/<b>%1.vek", nullptr);
        ReloadBanner removed(ReloadBanner::Removed, "x.vek", nullptr);
        QCOMPARE(child<QLabel>(changed, "labelFile")->text(),
                 QString("Vek file '/a/<b>%1.vek' has been changed on disk."));
        QCOMPARE(child<QLabel>(removed, "labelFile")->text(),
                 QString("Vek file 'x.vek' has been removed on disk."));
        QVERIFY(!child<QLabel>(changed, "label")->pixmap(Qt::ReturnByValue).isNull());

        ReloadBanner longer(ReloadBanner::Changed, '/' + QString(500, 'x') + "/end.vek", nullptr);
        QVERIFY(longer.minimumSizeHint().width() <= removed.sizeHint().width());
        longer.resize(400, 40);
        longer.show();
        QRect const button = child<QPushButton>(longer, "btnA")->geometry();
        QVERIFY(longer.rect().contains(button));
        QVERIFY(!button.intersects(child<QLabel>(longer, "labelFile")->geometry()));

        QSignalSpy reloaded(&changed, &ReloadBanner::reload);
        QSignalSpy closed(&removed, &ReloadBanner::closeIt);
        press(changed, {"Reload"});
        press(removed, {"Close"});
        QCOMPARE(reloaded.count(), 1);
        QCOMPARE(closed.count(), 1);
    }

    void oneTipAtATime()
    {
        QWidget window;
        WaitingTip::showWaiting(&window);
        WaitingTip* const first = tip();
        QVERIFY(first && first->isVisible());
        QCOMPARE(int(first->windowFlags() & Qt::WindowType_Mask), 15);
        QCOMPARE(first->width(), 200);
        auto* const bar = first->findChild<QProgressBar*>();
        QCOMPARE(bar->maximum(), 0);
        QVERIFY(bar->height() <= 15);
        WaitingTip::showWaiting(nullptr);
        QCOMPARE(tip(), first);

        QStringList keys;
        connect(first, &WaitingTip::KeyPress, this, [&](QString const& key) {
            keys << key;
            if (key == "F4")
                WaitingTip::hideWaiting();
        });
        QTest::keyClick(first, Qt::Key_F3);
        QTest::keyClick(first, Qt::Key_A);
        QTest::keyClick(first, Qt::Key_F4); // ends the tip from its own key event
        QCOMPARE(keys, (QStringList{"F3", "F4"}));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!tip());

        WaitingTip::showWaiting(std::make_unique<QWidget>().get()); // goes with its parent
        QVERIFY(!tip());
        WaitingTip::showWaiting(nullptr);
        QVERIFY(tip());
        WaitingTip::hideWaiting();
        WaitingTip::hideWaiting();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Nothing here installs the box: the library did when the application began.
    void alertIsAMessageBox()
    {
        for (bool const parentGoes : {false, true}) {
            auto* window = new QWidget;
            window->show();
            window->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(window));
            QStringList said;
            inDialog<QMessageBox>([&](QMessageBox* box) {
                said << box->windowTitle() << box->text();
                QCOMPARE(box->icon(), QMessageBox::Critical);
                QCOMPARE(box->standardButtons(), QMessageBox::Ok);
                QCOMPARE(box->parentWidget(), window);
                if (parentGoes)
                    delete std::exchange(window, nullptr);
                else
                    QTest::keyClick(box, Qt::Key_Return);
            });
            showAlert({AlertKind::Critical, "Title", "<b>text"});
            QCOMPARE(said, (QStringList{"Title", "<b>text"}));
            delete window;
        }
    }
};

QTEST_MAIN(SmallDialogsTest)
#include "tst_smalldialogs.moc"
