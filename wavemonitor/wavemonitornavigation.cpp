// Zoom, cursor and markers.

#include "wavemonitor/constants.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "wavemonitor/waveview.h"

#include <QGraphicsScene>
#include <QScrollBar>

#include <cmath>

namespace WaveMonitor {

namespace {

bool isUsableRate(double rate)
{
    return std::isfinite(rate) && rate > 0;
}

} // namespace

void WaveMonitorWidget::setZoomRate(double rate)
{
    if (!isUsableRate(rate))
        return;
    m_zoomRate = rate;
    m_fitWhenShown = false;
}

void WaveMonitorWidget::zoomTo(double rate)
{
    if (!isUsableRate(rate))
        return;
    auto* hub = NotificationCenter::shared();
    hub->sendEvent(new Notification(ZoomAboutToChange, this), this);
    setZoomRate(clampedZoomRate(rate));
    hub->postEvent(new Notification(ZoomChanged, this), this);
    ++m_unheardZooms;
    QMetaObject::invokeMethod(
        this, [this] { --m_unheardZooms; }, Qt::QueuedConnection);
}

void WaveMonitorWidget::zoomIn()
{
    zoomTo(m_zoomRate * 2);
}

void WaveMonitorWidget::zoomOut()
{
    zoomTo(m_zoomRate * 0.5);
}

void WaveMonitorWidget::zoomFit()
{
    int const length = m_model->timeLength();
    int const width = m_waveView->width() - m_waveView->verticalScrollBar()->width();
    if (length > 0)
        zoomTo(width / (length * Constants::Graphics::kSampleWidth));
    m_fitWhenShown = !m_wasShown; // the width is not known yet
}

void WaveMonitorWidget::jump(int time)
{
    m_waveView->jump(qMin(time, m_rulerView->length()));
}

int WaveMonitorWidget::cursorTime() const
{
    return m_rulerView->cursorItem()->time();
}

void WaveMonitorWidget::setCursorTime(int time)
{
    m_rulerView->cursorItem()->setTime(time);
    onUpdateCursorTime();
}

QList<int> WaveMonitorWidget::markerTimes() const
{
    QList<int> times;
    for (TimeSliderData const* marker : m_rulerView->timeMarkers())
        times.append(marker->time());
    return times;
}

void WaveMonitorWidget::setMarkerTimes(QList<int> const& times)
{
    m_rulerView->deleteAllMarker();
    for (auto time = times.crbegin(); time != times.crend(); ++time)
        m_rulerView->addMarker(*time); // the latest is the active one, and the first
}

ViewState WaveMonitorWidget::viewState() const
{
    double const left = m_waveView->horizontalScrollBar()->value();
    return {cursorTime(), markerTimes(), m_zoomRate,
            left / (m_waveView->zoomRate() * Constants::Graphics::kSampleWidth)};
}

void WaveMonitorWidget::setViewState(ViewState const& state)
{
    setCursorTime(state.cursorTime);
    setMarkerTimes(state.markerTimes);
    zoomTo(state.zoomRate);
    // Now and not with the note: the scroll bar needs both the new scale and all samples.
    m_waveView->rearrangeItems();
    m_waveView->setZoomRate(m_zoomRate);
    m_waveView->scrollTo(state.leftTime);
}

void WaveMonitorWidget::gotoCursor()
{
    jump(cursorTime());
}

void WaveMonitorWidget::gotoTime0()
{
    jump(0);
}

void WaveMonitorWidget::gotoLastTime()
{
    jump(m_rulerView->cursorItem()->length() - 1);
}

void WaveMonitorWidget::moveCursor(int time)
{
    setCursorTime(time);
    jump(cursorTime());
    m_waveView->scene()->update();
    m_waveView->viewport()->update();
    Q_EMIT updateMarkerAct();
}

void WaveMonitorWidget::previousTransition()
{
    moveCursor(m_treeView->getPreviousTransition(cursorTime()));
}

void WaveMonitorWidget::nextTransition()
{
    moveCursor(m_treeView->getNextTransition(cursorTime()));
}

TimeMarks WaveMonitorWidget::marks() const
{
    m_waveView->updateMarkerOrTrigerPos();
    TimeMarks marks = m_waveView->marks();
    for (TimeSliderData const* marker : m_rulerView->timeMarkers())
        marks.insert(marker->time()); // the wave view may not have heard of it yet
    return marks;
}

void WaveMonitorWidget::addMarker()
{
    int const free = marks().firstFree(cursorTime());
    if (free >= 0)
        m_rulerView->addMarker(free);
}

void WaveMonitorWidget::previousMarker()
{
    int const time = marks().previous(cursorTime());
    if (time >= 0)
        moveCursor(time);
}

void WaveMonitorWidget::nextMarker()
{
    int const time = marks().next(cursorTime());
    if (time >= 0)
        moveCursor(time);
}

void WaveMonitorWidget::deleteAllMarkers()
{
    m_rulerView->deleteAllMarker();
}

void WaveMonitorWidget::onUpdateCursorTime()
{
    m_model->setCurrentTime(cursorTime());
}

} // namespace WaveMonitor
