#include "workbenchrig.h"

#include "model/standardfile.h"
#include "programmer/devicecatalogue.h"
#include "tests/support/widgettools.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"

#include <QDomDocument>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSettings>
#include <QSpinBox>
#include <QTabBar>
#include <QToolBar>
#include <QtTest>

using namespace widgettools;

Window::Window()
{
    resize(1480, 860);
    show();
}

QAction* Window::action(QString const& text) const
{
    for (auto* const candidate : findChildren<QAction*>())
        if (candidate->text() == text)
            return candidate;
    qFatal("no action %s", qPrintable(text));
}

void Window::choose(QStringList const& path)
{
    QAction* const first = entry(menuBar(), path.value(0));
    QVERIFY(first);
    QTest::mouseClick(menuBar(), Qt::LeftButton, {}, menuBar()->actionGeometry(first).center());
    QTRY_VERIFY(first->menu()->isVisible());
    QVERIFY2(pick(first->menu(), path.mid(1)), qPrintable(path.join(' ')));
}

void Window::press(char const* button)
{
    auto* const found = findChild<QAbstractButton*>(button);
    QVERIFY2(found && found->isEnabled(), button);
    QTest::mouseClick(found, Qt::LeftButton);
}

void Window::showTab(QString const& text)
{
    for (auto* const bar : findChildren<QTabBar*>())
        for (int i = 0; i < bar->count(); ++i)
            if (bar->tabText(i) == text)
                return QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier,
                                         bar->tabRect(i).center());
    QFAIL(qPrintable(text));
}

QString Window::messages() const
{
    return findChild<QPlainTextEdit*>()->toPlainText();
}

void Window::run()
{
    QAction* const run = action("&Run");
    QTRY_VERIFY(run->isEnabled());
    int const before = messages().count("Capture started.");
    QTest::mouseClick(findChild<QToolBar*>("main")->widgetForAction(run), Qt::LeftButton);
    QCOMPARE(messages().count("Capture started."), before + 1);
    QTRY_VERIFY_WITH_TIMEOUT(run->isEnabled(), 20000);
}

WaveMonitor::WaveMonitorWidget* Window::monitor(int core) const
{
    return findChildren<WaveMonitor::WaveMonitorWidget*>().value(core);
}

QModelIndex Window::row(QString const& name) const
{
    QAbstractItemModel const* const model = monitor()->model();
    for (int i = 0; i < model->rowCount(); ++i)
        if (model->index(i, 0).data() == name)
            return model->index(i, 0);
    return QModelIndex();
}

void Window::chooseForRows(QStringList const& names, QString const& entry)
{
    auto* const tree = monitor()->treeView();
    QPoint at;
    Qt::KeyboardModifiers keys = Qt::NoModifier;
    for (QString const& name : names) {
        QVERIFY2(row(name).isValid(), qPrintable(name));
        at = tree->visualRect(row(name)).center();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, keys, at);
        keys = Qt::ControlModifier;
    }
    rightClick(tree->viewport(), at);
    QVERIFY(pick(qobject_cast<QMenu*>(QApplication::activePopupWidget()), {entry}));
}

QString Window::value(QString const& name, int sample) const
{
    monitor()->model()->setCurrentTime(sample);
    return row(name).siblingAtColumn(1).data().toString();
}

QString Window::arrangement() const
{
    QDomDocument document;
    document.appendChild(monitor()->saveLayout(document));
    return document.toString();
}

QList<QBitArray> Window::samples(int core) const
{
    QList<QBitArray> samples;
    for (WaveMonitor::SignalElement const* element : monitor(core)->model()->signalElements())
        samples << element->data;
    return samples;
}

void Window::look(int cursor, QList<int> const& markers, double zoom)
{
    monitor()->rulerView()->cursorItem()->setTime(cursor);
    monitor()->onUpdateCursorTime();
    for (int marker : markers)
        monitor()->rulerView()->addMarker(marker);
    monitor()->zoomTo(zoom);
}

QString Window::view() const
{
    auto const* const ruler = monitor()->rulerView();
    QStringList markers;
    for (auto const* marker : ruler->timeMarkers())
        markers << QString::number(marker->time());
    return QString("cursor %1, values of %2, markers %3, zoom %4")
        .arg(ruler->cursorItem()->time())
        .arg(monitor()->model()->currentTime())
        .arg(markers.join(' '))
        .arg(monitor()->zoomRate());
}

QString Window::shownTitle() const
{
    return windowTitle().replace("[*]", isWindowModified() ? "*" : "");
}

void answerFile(QString const& path)
{
    inDialog<QFileDialog>([path](QFileDialog* dialog) {
        auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
        name->setText(path);
        QTest::keyClick(name, Qt::Key_Return);
    });
}

void answerNumber(int value)
{
    inDialog<QInputDialog>([value](QInputDialog* dialog) {
        dialog->findChild<QSpinBox*>()->setValue(value);
        QTest::keyClick(dialog, Qt::Key_Return);
    });
}

void answerButton(QString const& text)
{
    inDialog([text](QDialog* dialog) {
        for (auto* const button : dialog->findChildren<QAbstractButton*>())
            if (button->text().remove('&') == text)
                return QTest::mouseClick(button, Qt::LeftButton);
        dialog->reject(); // the test must not wait for ever
        QFAIL(qPrintable("no button " + text));
    });
}

QString configuration(QString const& path)
{
    QString id;
    QList<VEK::SxCore*> const cores = VEK::readVEKConfigFromXml(path, id, nullptr, nullptr);
    QString const text = VEK::writeVekConfigToString(cores);
    qDeleteAll(cores);
    return text;
}

QString WorkbenchTest::layDemo(QString const& demo) const
{
    QString const file = VEK_SOURCE_ROOT "/examples/" + demo;
    qputenv("VEK_BENCH", (file + ".json").toUtf8());
    return write(QFileInfo(demo).fileName() + ".vek", content(file + ".vek"));
}

QString WorkbenchTest::layBench(QByteArray const& more) const
{
    QString const setup = layDemo("bus/bus-stall");
    QByteArray const folder = VEK_SOURCE_ROOT "/examples/bus/";
    qputenv("VEK_BENCH", write("bench.json", R"({"device": "TK-503", "design": ")" + folder +
                                                 R"(bus-stall.vek", "stimulus": {"vcd": ")" +
                                                 folder + R"(bus.vcd"}, )" + more + "}")
                             .toUtf8());
    return setup;
}

void WorkbenchTest::initTestCase()
{
    qputenv("TMPDIR", path().toUtf8());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, path());
    QCoreApplication::setOrganizationName("vek");
    QCoreApplication::setApplicationName("tst_workbench");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    VEK::DeviceConfigurations::setFile(VEK_SOURCE_ROOT "/programmer/data/programmer.json");
}

void WorkbenchTest::cleanup()
{
    QVERIFY2(Openings::shared()->waiting.isEmpty(), "a dialog did not open");
}

void WorkbenchTest::cleanupTestCase()
{
    VEK::DeviceConfigurations::setFile(QString());
}
