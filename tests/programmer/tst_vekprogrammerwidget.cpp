#include "programmer/deviceconfigurationdlg.h"
#include "programmer/vekprogrammermodel.h"
#include "programmer/vekprogrammerwidget.h"
#include "programmerdesk.h"
#include "tests/support/widgettools.h"

#include <QFileDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>
#include <QTextBlock>
#include <QTextEdit>

using namespace VEK;
using namespace widgettools;

namespace {

struct Panel : VekProgrammerWidget
{
    Panel()
    {
        updateCable(1);
        updateChannel(7);
        resize(1000, 500);
        show();
    }

    QPushButton* button(char const* name) const { return findChild<QPushButton*>(name); }
    void click(char const* name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    QModelIndex index(int row, int column) const { return model()->index(row, column); }
    /// Lines of the output pane without their times.
    QStringList output() const
    {
        static QRegularExpression const time("^\\[\\d\\d:\\d\\d:\\d\\d\\]");
        QStringList lines = pane->toPlainText().split('\n');
        for (QString& line : lines)
            line = time.match(line).hasMatch() ? line.mid(10) : "no time: " + line;
        return lines;
    }
    QColor colorOfLine(int number) const
    {
        QTextBlock const block = pane->document()->findBlockByNumber(number);
        return block.begin().fragment().charFormat().foreground().color();
    }
    void tick(int row)
    {
        QRect const cell = table->visualRect(index(row, 0));
        for (int x = cell.left() + 2; x < cell.right() && !model()->devices().at(row)->enable;
             x += 4)
            QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                              QPoint(x, cell.center().y()));
    }
    QWidget* editor() const
    {
        QWidget* newest = nullptr; // earlier ones wait for their deletion
        for (QWidget* const child :
             table->viewport()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
            newest = child->isVisible() ? child : newest;
        return newest;
    }
    QWidget* edit(int row, int column)
    {
        if (editor())
            QTest::keyClick(editor(), Qt::Key_Escape);
        table->edit(index(row, column));
        return editor();
    }

    /// What the cell's editor offers.
    QStringList choices(int row, int column)
    {
        return items(qobject_cast<QComboBox*>(edit(row, column)));
    }
    /// Waits for the end of a run.
    bool isFree()
    {
        return QTest::qWaitFor([this] { return button("downLoad")->isEnabled(); });
    }

    QTableView* const table = findChild<QTableView*>("tableView");
    QTextEdit* const pane = findChild<QTextEdit*>("textEdit");
    QComboBox* const frequency = findChild<QComboBox*>("comboBoxFrequency");
};

} // namespace

class VekProgrammerWidgetTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ProgrammerDesk> m_desk;

private slots:
    void init() { m_desk = std::make_unique<ProgrammerDesk>(); }
    void cleanup() { m_desk.reset(); }

    void fromSearchToReady()
    {
        m_desk->layAll("{'device': 'x', 'programmer': {'log': 'log', 'chain': ["
                       "{'family': 'TK-100', 'name': 'TK-104', 'id': '10068001'},"
                       "{'family': 'TK-100', 'name': 'TK-105', 'id': '10069001'}]}}");
        Panel panel;
        QSignalSpy status(&panel, &VekProgrammerWidget::programStatusChanged);
        panel.click("searchDevice");
        QVERIFY(!panel.button("downLoad")->isEnabled() && !panel.button("moveUp")->isEnabled());
        QVERIFY(panel.isFree());
        QCOMPARE(panel.output(), (QStringList{"Info: Scanning!", "Info: 2 device(s) found!"}));
        QVERIFY(status.isEmpty()); // idle as before

        panel.tick(0);
        panel.tick(1);
        QStringList said;
        answerBox(said);
        panel.click("downLoad");
        QCOMPARE(said, (QStringList{"Error", "Only one device can be set as target device."}));
        QVERIFY(panel.button("downLoad")->isEnabled());
        panel.model()->setData(panel.index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
        QString const file = m_desk->writeFs("TK-105-Q48");
        panel.model()->setData(panel.index(1, 5), file);
        QCOMPARE(panel.frequency->count(), 13);
        panel.frequency->setCurrentText("2MHz");
        panel.click("downLoad");
        QVERIFY(panel.isFree());
        QCOMPARE(m_desk->log().last(), "--device TK-105 --fsFile " + file +
                                           " --operation_index 2 --cable-index 1 --location 7"
                                           " --frequency 2MHz --chain_size 2 --chain_index 1"
                                           " --chain_ir 8,8");
        QCOMPARE(status.count(), 2);
        QCOMPARE(status.at(0), (QVariantList{false, " Waiting download "}));
        QCOMPARE(status.at(1), (QVariantList{true, " Ready to acquire "}));
        QCOMPARE(panel.model()->activeDevice()->status, ProgrammerDownloaded);

        m_desk->lay("'output': '<b>error</b> Error: no'");
        panel.click("downLoad");
        QVERIFY(panel.isFree());
        QCOMPARE(status.last(), (QVariantList{false, " Please program the device first "}));
        QVERIFY(panel.output().contains("<b>error</b> Error: no"));

        m_desk->lay("'exit_code': 1");
        panel.click("searchDevice");
        QVERIFY(panel.isFree());
        QCOMPARE(status.last(), (QVariantList{false, " No device detected "}));
    }

    void output()
    {
        Panel panel;
        panel.createProgrammerOutput(QStringList{"Warn: a", "x Error: b <i>", "c"});
        QCOMPARE(panel.output(), (QStringList{"Warn: a", "x Error: b <i>", "Info: c"}));
        QApplication::setPalette(QPalette(Qt::black));
        panel.createProgrammerOutput(QStringList{"Warn: a", "x Error: b <i>", "c"});
        QApplication::setPalette(QPalette());
        QStringList colors;
        for (int line = 0; line < 6; ++line)
            colors << panel.colorOfLine(line).name();
        QCOMPARE(colors.join(' '), QString("#7a5c00 #c00000 #0000c0 #e0c040 #ff8080 #9db8ff"));
    }

    void inactivePanelKeeps()
    {
        Panel panel;
        QSignalSpy enable(&panel, &VekProgrammerWidget::enableChange);
        QSignalSpy status(&panel, &VekProgrammerWidget::programStatusChanged);
        press(panel, {"Enable Programmer"});
        panel.onStatusChanged(ProgrammerDownloaded, {"one"});
        panel.onStatusChanged(ProgrammerFailed, {"Error: two"});
        QVERIFY(status.isEmpty());
        QCOMPARE(panel.pane->toPlainText(), QString());
        press(panel, {"Enable Programmer"});
        QCOMPARE(enable.count(), 2);
        QCOMPARE(enable.last().first().toBool(), true);
        QCOMPARE(status.count(), 1);
        QCOMPARE(panel.output(), (QStringList{"Info: one", "Error: two"}));
    }

    void frequencies()
    {
        Panel panel;
        panel.initData("TK-100", "TK-104", QString());
        QVERIFY(panel.frequency->isVisible());
        panel.frequency->setCurrentText("2MHz");
        panel.click("addDevice");
        QCOMPARE(panel.frequency->currentText(), QString("2MHz"));
        panel.model()->setData(panel.index(1, 1), "TK-300");
        QCOMPARE(items(panel.frequency), QStringList{"15MHz"});
        panel.table->setCurrentIndex(panel.index(1, 1));
        panel.click("rmDevice");
        QCOMPARE(panel.frequency->count(), 13);
        QCOMPARE(panel.frequency->currentText(), QString("15MHz"));
        panel.updateCable(3);
        QVERIFY(!panel.frequency->isVisible());
        panel.updateCable(2);
        QVERIFY(panel.frequency->isVisible());
        panel.updateIsBusy(true);
        QVERIFY(!panel.button("searchDevice")->isEnabled());
    }

    void movedRowStaysCurrent()
    {
        Panel panel;
        for (int i = 0; i < 3; ++i)
            panel.click("addDevice");
        DeviceItem const* const row = panel.model()->devices().at(2);
        panel.table->setCurrentIndex(panel.index(2, 1));
        for (char const* button : {"moveUp", "moveUp", "moveUp", "moveDown"}) {
            panel.click(button);
            QCOMPARE(panel.model()->device(panel.selectedIndex()), row);
        }
        QCOMPARE(panel.selectedIndex().row(), 1);
    }

    void editors()
    {
        Panel panel;
        panel.initData("TK-100", "TK-107", QString());
        QCOMPARE(panel.choices(0, 1), DeviceConfigurations::instance()->getSeriesNames());
        QCOMPARE(panel.choices(0, 2),
                 DeviceConfigurations::instance()->series("TK-100")->deviceNs());
        QCOMPARE(panel.choices(0, 3), QStringList{"B"});
        auto* const devices = qobject_cast<QComboBox*>(panel.edit(0, 2));
        QCOMPARE(devices->currentText(), QString("TK-107"));
        QTest::keyClick(devices, Qt::Key_Home);
        QTest::keyClick(devices, Qt::Key_Tab);
        QCOMPARE(panel.model()->devices().first()->device, QString("TK-101"));

        panel.click("addDevice"); // shows a series, but has none yet
        DeviceItem const* const added = panel.model()->devices().at(1);
        QTest::keyClick(panel.edit(1, 1), Qt::Key_Tab);
        QCOMPARE(added->known, 0);
        QTest::keyClick(panel.edit(1, 1), Qt::Key_Return);
        QTRY_COMPARE(added->known, 1);
        panel.model()->setData(panel.index(0, 1), "no series");
        QCOMPARE(panel.choices(0, 2), QStringList{"JTAG_NOP"});
        auto* const number = qobject_cast<QSpinBox*>(panel.edit(0, 9));
        QVERIFY(number);
        QCOMPARE(number->minimum() * 100 + number->maximum(), 116);
        number->setValue(12);
        QTest::keyClick(number, Qt::Key_Tab);
        QCOMPARE(panel.model()->devices().first()->irCode, 12);
    }

    void chooseFile()
    {
        Panel panel;
        panel.initData("TK-100", "TK-104", QString());
        QString const file = m_desk->writeFs("TK-104-Q48");
        auto const choose = [&](bool accept) {
            QVERIFY(panel.edit(0, 5));
            QTRY_VERIFY(QApplication::activeModalWidget());
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QString("Open Fs File..."));
            QCOMPARE(dialog->nameFilters(), QStringList{"KAVRO Fs File (*.fs)"});
            auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
            name->setText(file);
            QTest::keyClick(name, accept ? Qt::Key_Return : Qt::Key_Escape);
            QTRY_VERIFY(!QApplication::activeModalWidget());
        };
        choose(false);
        QCOMPARE(panel.model()->devices().first()->fsFile, QString());
        choose(true);
        QTRY_COMPARE(panel.model()->devices().first()->fsFile, file);
        QCOMPARE(panel.model()->devices().first()->checksum, QString("0x1234"));
    }

    void configureOperation()
    {
        Panel panel;
        panel.initData("TK-100", "TK-104", QString());
        inDialog([](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), QString("Device Configuration"));
            auto* const modes = dialog->findChild<QComboBox*>("comboBoxAccessMode");
            auto* const operations = dialog->findChild<QComboBox*>("comboBoxOperation");
            auto* const flash = dialog->findChild<QGroupBox*>("groupFlash");
            QCOMPARE(items(operations), (QStringList{"Load", "Load and Verify"}));
            QVERIFY(!flash->isVisible());
            modes->setCurrentIndex(2);
            QCOMPARE(operations->count(), 2);
            QVERIFY(flash->isVisible());
            operations->setCurrentIndex(1);
            QTest::mouseClick(dialog->findChild<QPushButton*>("buttonSave"), Qt::LeftButton);
        });
        doubleClick(panel.table, panel.index(0, 4));
        QCOMPARE(panel.model()->devices().first()->operation->cmdIndex, 8);
    }

    void goneDuringADialog()
    {
        for (bool const search : {true, false}) {
            QPointer<Panel> panel = new Panel;
            panel->initData("TK-100", "TK-104", QString());
            QVERIFY(QTest::qWaitForWindowActive(panel));
            inDialog([panel](QWidget*) { delete panel.data(); });
            if (search) // the device chooser
                panel->click("searchDevice");
            else
                doubleClick(panel->table, panel->index(0, 4));
            QTRY_VERIFY(!panel);
            QTRY_VERIFY(!QApplication::activeModalWidget());
        }
    }

    void targetTakenAwayDuringDownload()
    {
        m_desk->lay("'delay': 200");
        Panel panel;
        panel.initData("TK-100", "TK-104", m_desk->writeFs("TK-104-Q48"));
        panel.tick(0);
        panel.click("downLoad");
        QVERIFY(!panel.button("downLoad")->isEnabled());
        panel.model()->setData(panel.index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
        QVERIFY(panel.isFree());
    }

    void emptyCatalogue()
    {
        DeviceConfigurations::setFile(m_desk->path("none.json"));
        Panel panel;
        QVERIFY(panel.output().value(0).startsWith("Warn: "));
        panel.click("addDevice");
        panel.initData("a", "b", QString());
        QVERIFY(panel.choices(0, 1).isEmpty());
        panel.click("downLoad");
        QVERIFY(panel.output().last().startsWith("Error: "));
    }
};

QTEST_MAIN(VekProgrammerWidgetTest)
#include "tst_vekprogrammerwidget.moc"
