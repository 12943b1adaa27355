#include "workbenchrig.h"

#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QDomDocument>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

namespace {

QAction* named(QWidget const* menu, QString const& text)
{
    for (QAction* const action : menu->actions())
        if (action->text() == text)
            return action;
    qFatal("no entry %s", qPrintable(text));
}

} // namespace

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
    QWidget* menu = menuBar();
    for (QString const& text : path) {
        QAction* const entry = named(menu, text);
        QMenu* const opened = entry->menu();
        auto* const bar = qobject_cast<QMenuBar*>(menu);
        auto* const popup = qobject_cast<QMenu*>(menu);
        QRect const place = bar ? bar->actionGeometry(entry) : popup->actionGeometry(entry);
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, place.center());
        if (opened)
            QTRY_VERIFY(opened->isVisible());
        menu = opened;
    }
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
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, tree->viewport()->mapToGlobal(at));
    QApplication::sendEvent(tree->viewport(), &event);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QVERIFY(menu);
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                      menu->actionGeometry(named(menu, entry)).center());
}

QMap<QString, QString> Window::valuesAt(int sample) const
{
    auto* const model = monitor()->model();
    model->setCurrentTime(sample);
    QMap<QString, QString> values;
    for (int i = 0; i < model->rowCount(); ++i)
        values[model->index(i, 0).data().toString()] = model->index(i, 1).data().toString();
    return values;
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

Answers::Answers(QList<Answer> answers) : m_answers(std::move(answers))
{
    QObject::connect(&m_timer, &QTimer::timeout, [this] { next(); });
    m_timer.start(5);
}

Answers::~Answers()
{
    if (!m_answers.isEmpty())
        QTest::qFail("a dialog did not open", __FILE__, __LINE__);
}

void Answers::next()
{
    QWidget* const dialog = QApplication::activeModalWidget();
    if (!dialog || dialog == m_last || m_answers.isEmpty())
        return;
    m_last = dialog;
    m_answers.takeFirst()(dialog);
}

Answers::Answer Answers::file(QString const& path)
{
    return [path](QWidget* dialog) {
        auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
        if (!name) {
            QTest::keyClick(dialog, Qt::Key_Escape); // the test must not wait for ever
            QFAIL("no file dialog");
        }
        name->setText(path);
        QTest::keyClick(name, Qt::Key_Return);
    };
}

Answers::Answer Answers::number(int value)
{
    return [value](QWidget* dialog) {
        auto* const box = dialog->findChild<QSpinBox*>();
        if (!box) {
            QTest::keyClick(dialog, Qt::Key_Escape);
            QFAIL("no dialog for a number");
        }
        box->setValue(value);
        QTest::keyClick(dialog, Qt::Key_Return);
    };
}

Answers::Answer Answers::button(QString const& text)
{
    return [text](QWidget* dialog) {
        for (auto* const button : dialog->findChildren<QAbstractButton*>())
            if (button->text().remove('&') == text)
                return QTest::mouseClick(button, Qt::LeftButton);
        QTest::keyClick(dialog, Qt::Key_Escape);
        QFAIL(qPrintable("no button " + text));
    };
}
