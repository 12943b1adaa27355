#include "wavemonitor/waves/waveviewmenu.h"

#include "wavemonitor/images.h"
#include "wavemonitor/wavemonitorwidget.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QSignalMapper>

#include <array>

namespace WaveMonitor {

namespace {

struct Entry
{
    char const* text;
    char const* image;
    void (WaveMonitorWidget::*run)();
};

std::array<Entry, 5> const kCursorEntries{{
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Previous Transition"), "previous_transition",
     &WaveMonitorWidget::previousTransition},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Next Transition"), "next_transition",
     &WaveMonitorWidget::nextTransition},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Go To Cursor"), "go_to_cursor",
     &WaveMonitorWidget::gotoCursor},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Go To Time 0"), "go_to_time_0",
     &WaveMonitorWidget::gotoTime0},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Go To Last Time"), "go_to_last_time",
     &WaveMonitorWidget::gotoLastTime},
}};

std::array<Entry, 4> const kMarkerEntries{{
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Add Marker"), "add_marker",
     &WaveMonitorWidget::addMarker},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Previous Marker"), "previous_marker",
     &WaveMonitorWidget::previousMarker},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Next Marker"), "next_marker",
     &WaveMonitorWidget::nextMarker},
    {QT_TRANSLATE_NOOP("WaveMonitor::WaveView", "Remove All Marker"), "delete_all_markers",
     &WaveMonitorWidget::deleteAllMarkers},
}};

/// Adds the entries to the menu; each reaches `slot` with its index.
template <typename Entries>
QSignalMapper* fill(QMenu* menu, Entries const& entries)
{
    auto* mapper = new QSignalMapper(menu);
    int index = 0;
    for (Entry const& entry : entries) {
        QIcon const icon(QStringLiteral(":/vek/image/%1.png").arg(QLatin1String(entry.image)));
        QAction* action = menu->addAction(icon, WaveView::tr(entry.text));
        QObject::connect(action, &QAction::triggered, mapper, qOverload<>(&QSignalMapper::map));
        mapper->setMapping(action, index++);
    }
    return mapper;
}

template <typename Entries>
void runOnWidget(WaveView const* view, Entries const& entries, int index)
{
    QObject* widget = view->parent();
    for (int level = 1; level < 3 && widget != nullptr; ++level) {
        widget = widget->parent();
    }
    auto* monitor = dynamic_cast<WaveMonitorWidget*>(widget);
    if (monitor != nullptr && index >= 0 && index < static_cast<int>(entries.size())) {
        (monitor->*entries[index].run)();
    }
}

} // namespace

WaveView::ContextMenuDelegate::ContextMenuDelegate(WaveView* view) : m_menu(new QMenu(view))
{
    initImages();
    m_menu->addAction(WaveView::tr("Zoom In"), view, &WaveView::zoomIn);
    m_menu->addAction(WaveView::tr("Zoom Out"), view, &WaveView::zoomOut);
    QObject::connect(fill(m_menu->addMenu(WaveView::tr("Cursors")), kCursorEntries),
                     &QSignalMapper::mappedInt, view, &WaveView::onCursorSetted);
    QMenu* markers = m_menu->addMenu(WaveView::tr("Markers"));
    QObject::connect(fill(markers, kMarkerEntries), &QSignalMapper::mappedInt, view,
                     &WaveView::onMarkerSetted);
    m_previousMarker = markers->actions().at(1);
    m_nextMarker = markers->actions().at(2);
    m_removeAllMarkers = markers->actions().at(3);
}

void WaveView::ContextMenuDelegate::enableMarkers(bool remove, bool previous, bool next)
{
    m_removeAllMarkers->setEnabled(remove);
    m_previousMarker->setEnabled(previous);
    m_nextMarker->setEnabled(next);
}

void WaveView::ContextMenuDelegate::exec(QPoint const& globalPosition)
{
    m_menu->exec(globalPosition);
}

void WaveView::contextMenuEvent(QContextMenuEvent* event)
{
    updateMarkerAction();
    m_menu->exec(event->globalPos());
}

void WaveView::onCursorSetted(int index)
{
    runOnWidget(this, kCursorEntries, index);
}

void WaveView::onMarkerSetted(int index)
{
    runOnWidget(this, kMarkerEntries, index);
}

} // namespace WaveMonitor
