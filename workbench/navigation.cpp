#include "workbench/navigation.h"

#include "wavemonitor/rulerview.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "wavemonitor/waveview.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QTreeWidget>
#include <QVBoxLayout>

using WaveMonitor::WaveMonitorWidget;

Navigation::Navigation(QMenuBar& menus, std::function<Monitor*()> current,
                       std::function<SampleTimes()> times, QWidget* parent)
    : QObject(parent), m_current(std::move(current)), m_times(std::move(times)),
      m_menu(menus.addMenu(QStringLiteral("&Go")))
{
    makeEntries();
}

QAction* Navigation::add(QString const& text, int keys, std::function<void(Monitor&)> const& go)
{
    QAction* const action = m_menu->addAction(
        text, this,
        [this, go] {
            if (Monitor* const monitor = m_current())
                go(*monitor);
        },
        QKeySequence(keys));
    if (!(keys & Qt::CTRL)) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_keys << action;
    }
    return action;
}

QAction* Navigation::add(QString const& text, int keys, Slot slot)
{
    return add(text, keys, [slot](Monitor& monitor) { (monitor.*slot)(); });
}

void Navigation::makeEntries()
{
    add(QStringLiteral("&Next Transition"), Qt::Key_Right, &Monitor::nextTransition);
    add(QStringLiteral("&Previous Transition"), Qt::Key_Left, &Monitor::previousTransition);
    m_menu->addSeparator();
    add(QStringLiteral("&First Sample"), Qt::Key_Home, &Monitor::gotoTime0);
    add(QStringLiteral("&Last Sample"), Qt::Key_End, &Monitor::gotoLastTime);
    add(QStringLiteral("Next &Trigger"), Qt::Key_T,
        [this](Monitor& monitor) { goToTrigger(monitor); });
    add(QStringLiteral("&Cursor"), Qt::Key_C, &Monitor::gotoCursor);
    add(QStringLiteral("To T&ime..."), Qt::CTRL + Qt::Key_G, [this](Monitor&) { goToTime(); });
    m_menu->addSeparator();
    add(QStringLiteral("&Set Marker"), Qt::Key_M, &Monitor::addMarker);
    add(QStringLiteral("Ne&xt Mark"), Qt::Key_N, &Monitor::nextMarker);
    add(QStringLiteral("Pre&vious Mark"), Qt::SHIFT + Qt::Key_N, &Monitor::previousMarker);
    m_menu->addSeparator();
    add(QStringLiteral("Half a Page &Right"), Qt::SHIFT + Qt::Key_Right,
        [](Monitor& monitor) { pan(monitor, 0.5); });
    add(QStringLiteral("Half a Page Le&ft"), Qt::SHIFT + Qt::Key_Left,
        [](Monitor& monitor) { pan(monitor, -0.5); });
    add(QStringLiteral("Page Right"), Qt::Key_PageDown, [](Monitor& monitor) { pan(monitor, 1); });
    add(QStringLiteral("Page Left"), Qt::Key_PageUp, [](Monitor& monitor) { pan(monitor, -1); });
    add(QStringLiteral("&Zoom In"), Qt::Key_Plus, &Monitor::zoomIn);
    add(QStringLiteral("Zoom &Out"), Qt::Key_Minus, &Monitor::zoomOut);
    add(QStringLiteral("Zoom Fit"), Qt::Key_0, &Monitor::zoomFit);
}

void Navigation::adopt(Monitor& monitor)
{
    for (QWidget* const widget :
         {static_cast<QWidget*>(monitor.waveView()), static_cast<QWidget*>(monitor.rulerView())}) {
        widget->addActions(m_keys);
        widget->setFocusPolicy(Qt::StrongFocus); // a click makes the keys its own
    }
}

/// With the cursor, and round to the first one behind the last.
void Navigation::goToTrigger(Monitor& monitor) const
{
    int const time = m_times().nextTrigger(monitor.cursorTime());
    monitor.setCursorTime(time);
    monitor.jump(time);
}

void Navigation::goToTime()
{
    Monitor* const monitor = m_current();
    SampleTimes const times = m_times();
    if (times.length() == 0)
        return;
    QString label = QStringLiteral("A sample (1200), one from the trigger (+20, -5)");
    label += times.clock().isKnown() ? QStringLiteral(", or a time from it (1.5us, -200ns):")
                                     : QStringLiteral(":");
    bool ok = false;
    QString const text = QInputDialog::getText(m_menu, QStringLiteral("Go To Time"), label,
                                               QLineEdit::Normal, QString(), &ok);
    std::optional<int> const time = times.parse(text, monitor->cursorTime());
    if (!ok)
        return;
    if (!time) {
        Q_EMIT refused(QStringLiteral("\"%1\" is no sample or time of this capture.").arg(text));
        return;
    }
    monitor->setCursorTime(*time);
    monitor->jump(*time);
}

void Navigation::pan(Monitor& monitor, double pages)
{
    QScrollBar* const bar = monitor.waveView()->horizontalScrollBar();
    bar->setValue(bar->value() + int(pages * bar->pageStep()));
}

void showShortcuts(QMenuBar const& menus, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Keyboard Shortcuts"));
    auto* const list = new QTreeWidget;
    list->setHeaderLabels({QStringLiteral("Entry"), QStringLiteral("Key")});
    for (QAction const* const entry : menus.actions()) {
        auto* const group = new QTreeWidgetItem(list, {entry->text().remove(QLatin1Char('&'))});
        for (QAction const* const action : entry->menu()->actions())
            if (!action->shortcut().isEmpty())
                new QTreeWidgetItem(group, {action->text().remove(QLatin1Char('&')),
                                            action->shortcut().toString(QKeySequence::NativeText)});
        group->setHidden(group->childCount() == 0);
    }
    list->expandAll();
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* const layout = new QVBoxLayout(&dialog);
    layout->addWidget(list);
    layout->addWidget(buttons);
    dialog.resize(420, 560);
    dialog.exec();
}
