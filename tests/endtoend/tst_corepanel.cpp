#include "desk.h"
#include "setup.h"

#include "model/standardfile.h"
#include "triggerui/dynamicconfigwidget.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

using namespace VEK;

namespace {

void doubleClick(QAbstractItemView* view, QModelIndex const& index)
{
    QPoint const at = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
}

/// Runs once the next dialog is open.
void inDialog(std::function<void(QWidget*)> const& action)
{
    QTimer::singleShot(0, [action] { action(QApplication::activeModalWidget()); });
}

void press(QWidget* dialog, QString const& caption)
{
    for (auto* const button : dialog->findChildren<QPushButton*>())
        if (button->text() == caption)
            return QTest::mouseClick(button, Qt::LeftButton);
    QFAIL(qPrintable(caption));
}

/// Types a hexadecimal value into the first row of the unit dialog.
void setUnit(QWidget* dialog, QString const& digits)
{
    QVERIFY(QTest::qWaitForWindowActive(dialog));
    auto* const hex = dialog->findChild<QRadioButton*>("rbtnHex");
    QTest::mouseClick(hex, Qt::LeftButton, Qt::NoModifier, QPoint(8, hex->height() / 2));
    auto* const tree = dialog->findChild<QTreeWidget*>("treeSignals0");
    auto* const edit = qobject_cast<QLineEdit*>(tree->itemWidget(tree->topLevelItem(0), 1));
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_Home);
    QTest::keyClicks(edit, digits);
    QTest::keyClick(edit, Qt::Key_Tab);
    auto* const buttons = dialog->findChild<QDialogButtonBox*>("buttonBox");
    QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
}

} // namespace

/// What a user sets in the core panel is what the chip captures.
class TestCorePanel : public QObject
{
    Q_OBJECT

private slots:
    void editAndCapture()
    {
        Waves waves = Stimulus::counter("count", 12, 1500);
        for (int i = 0; i < 1500; ++i)
            waves["flag"] += i % 400 == 277 ? '1' : '0';
        QString const count = Setup::entry("count", 12);
        QString const flag = Setup::entry("flag");
        Setup::Core core;
        core.position = 100;
        core.dynamic = true;
        core.entries = count + flag;
        core.ports = {{0, count}, {3, flag}};
        core.units = Setup::unit(0, 0, "000000000001") + Setup::unit(5, 3, "1");
        core.expressions = QStringList{"M0"};
        Desk desk;
        QVERIFY(desk.lay(Setup::vek({core}), waves));

        QString id;
        bool ok = false;
        QString error;
        QString const file = desk.program("run/setup.vek");
        QList<SxCore*> const cores = readVEKConfigFromXml(file, id, &ok, &error);
        QVERIFY2(ok && cores.size() == 1, qPrintable(error));
        edit(cores.first());
        QVERIFY(writeVEKConfigToXml(cores, file));
        qDeleteAll(cores);

        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        auto const captures = expectedCaptures(written.readAll(), {{"clk", waves}});
        QCOMPARE(captures.size(), 2);
        QCOMPARE(captures.at(0).trigger, 277);
        QCOMPARE(desk.problem({"-vek", "setup.vek"}, captured(captures, "setup")), QString());
    }

private:
    void edit(SxCore* core)
    {
        DynamicConfigWidget panel;
        panel.setEnabled(true);
        panel.setSxCore(core);
        panel.show();

        auto* const list = panel.findChild<QListWidget*>("listExpressions");
        inDialog([](QWidget* dialog) {
            for (char const* caption : {"M0", "|", "M5", "OK"})
                press(dialog, caption);
        });
        doubleClick(list, list->model()->index(0, 0));
        auto* const units = panel.findChild<QTableView*>("tableUnit");
        inDialog([](QWidget* dialog) { setUnit(dialog, "5DC"); }); // beyond the stimulus
        doubleClick(units, units->model()->index(0, 1));

        panel.findChild<QComboBox*>("comboBoxWindow")->setCurrentText("2");
        panel.findChild<QComboBox*>("comboBoxAmount")->setCurrentText("64");
        panel.findChild<QSpinBox*>("spinBoxTrPos")->setValue(10);
        panel.save();
        QCOMPARE(core->matchUnit(0)->value0, QString("010111011100"));
        QCOMPARE(core->expressions, QStringList{"M0|M5"});
    }
};

QTEST_MAIN(TestCorePanel)
#include "tst_corepanel.moc"
