#include "jtag/alert.h"
#include "triggerui/realdialog.h"
#include "triggerui/reloadbanner.h"
#include "triggerui/waitingtip.h"

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

Q_DECLARE_METATYPE(VEK::RealType)

using namespace VEK;

namespace {

template <typename Widget>
Widget* child(QWidget& widget, char const* name)
{
    return widget.findChild<Widget*>(QLatin1String(name));
}

QPushButton* button(QWidget& widget, QString const& caption)
{
    for (auto* const candidate : widget.findChildren<QPushButton*>())
        if (candidate->text() == caption)
            return candidate;
    return nullptr;
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
    void realDialogShowsAndTakes_data()
    {
        QTest::addColumn<RealType>("given");
        QTest::addColumn<QString>("checked");
        QTest::addColumn<RealType>("taken");
        QTest::newRow("signed") << RealType{0, 2, 7, 8, 24} << "Signed" << RealType{0, 2, 7, 8, 24};
        QTest::newRow("unsigned, far point")
            << RealType{0, 3, 99, 1, 2} << "Unsigned" << RealType{0, 3, 80, 8, 24};
        QTest::newRow("single") << RealType{1, 0, -3, 0, 0} << "SinglePrecision"
                                << RealType{1, 0, 0, 8, 24};
        QTest::newRow("double") << RealType{1, 1, 0, 8, 24} << "DoublePrecision"
                                << RealType{1, 1, 0, 11, 53};
        QTest::newRow("unknown") << RealType{1, 9, 0, 0, 0} << "Signed" << RealType{0, 2, 0, 8, 24};
    }
    void realDialogShowsAndTakes()
    {
        QFETCH(RealType, given);
        QFETCH(QString, checked);
        QFETCH(RealType, taken);
        RealDialog dialog(given, nullptr);
        dialog.show();
        QVERIFY(dialog.findChild<QRadioButton*>(checked)->isChecked());
        QCOMPARE(child<QGroupBox>(dialog, "FixedPoint")->isVisible(), taken.kind == 0);
        QCOMPARE(child<QGroupBox>(dialog, "FloatingPoint")->isVisible(), taken.kind == 1);
        QVERIFY(!dialog.confirmed);

        QTest::mouseClick(button(dialog, "OK"), Qt::LeftButton);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(dialog.confirmed);
        QVERIFY(dialog.realType.equal(taken));
        QCOMPARE(dialog.realType.binaryPoint, taken.binaryPoint);
        QCOMPARE(dialog.realType.exponentWidth, taken.exponentWidth);
        QCOMPARE(dialog.realType.fractionWidth, taken.fractionWidth);
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

        QTest::mouseClick(button(dialog, "Apply"), Qt::LeftButton);
        QCOMPARE(applied.count(), 1);
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.realType.type, int(FloatingSingle));
        QTest::mouseClick(child<QRadioButton>(dialog, "DoublePrecision"), Qt::LeftButton);
        QTest::mouseClick(button(dialog, "Cancel"), Qt::LeftButton);
        QVERIFY(!dialog.isVisible());
        QVERIFY(dialog.confirmed);
        QCOMPARE(dialog.realType.type, int(FloatingSingle));
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

        QSignalSpy reloaded(&changed, &ReloadBanner::reload);
        QSignalSpy closed(&removed, &ReloadBanner::closeIt);
        QTest::mouseClick(button(changed, "Reload"), Qt::LeftButton);
        QTest::mouseClick(button(removed, "Close"), Qt::LeftButton);
        QCOMPARE(reloaded.count(), 1);
        QCOMPARE(closed.count(), 1);
    }

    void oneTipAtATime()
    {
        WaitingTip::hideWaiting();
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
        WaitingTip::hideWaiting();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!tip());
    }

    void tipGoesWithItsParent()
    {
        {
            QWidget window;
            WaitingTip::showWaiting(&window);
        }
        QVERIFY(!tip());
        WaitingTip::showWaiting(nullptr);
        QVERIFY(tip());
        WaitingTip::hideWaiting();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Nothing here installs the box: the library did when the application began.
    void alertIsAMessageBox_data()
    {
        QTest::addColumn<bool>("parentGoes");
        QTest::newRow("answered") << false;
        QTest::newRow("its window goes first") << true;
    }
    void alertIsAMessageBox()
    {
        QFETCH(bool, parentGoes);
        auto* window = new QWidget;
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        QStringList said;
        QTimer::singleShot(0, this, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
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
};

QTEST_MAIN(SmallDialogsTest)
#include "tst_smalldialogs.moc"
