#include "wavemonitor/rulerview.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/ruler/numberrow.h"
#include "wavemonitor/ruler/scaleruler.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace WaveMonitor {

namespace {

constexpr int kHeight = 50;
constexpr int kHitHeight = 6;
constexpr int kHitWidth = 2;
constexpr QRgb kHitColor = 0xff4da6ff;
constexpr int kScaleTop = 30; // room above the scale, for flags and red ticks

} // namespace

int nearestTime(double sceneX)
{
    return static_cast<int>(std::lround(sceneX / kSampleWidth));
}

RulerView::RulerView(QWidget* parent)
    : QGraphicsView(parent), m_createMarkerAction(new QAction(this)),
      m_removeMarkerAction(new QAction(tr("Remove Marker"), this)),
      m_removeAllMarkersAction(new QAction(tr("Remove All Markers"), this))
{
    setFrameStyle(QFrame::NoFrame);
    setAlignment(Qt::AlignLeft | Qt::AlignBottom);
    setViewportUpdateMode(FullViewportUpdate);
    // the hidden bar still takes its room, so that the viewport is as wide as the wave view's
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    horizontalScrollBar()->hide();
    verticalScrollBar()->hide();
    setFixedHeight(kHeight);
    setUpScene();
    NotificationCenter::shared()->registerObserver(
        this, QList<NotificationType>{ZoomAboutToChange, ZoomChanged, HorizontalScrollChanged});
}

RulerView::~RulerView()
{
    NotificationCenter::shared()->unregisterObserver(this);
    m_delegate.reset();
    qDeleteAll(m_timeMarkers);
    qDeleteAll(m_retiredMarkers);
}

void RulerView::setUpScene()
{
    auto* scene = new QGraphicsScene(this);
    scene->setBackgroundBrush(QBrush(Qt::gray));
    m_ruler = new ScaleRuler;
    scene->addItem(m_ruler);
    m_cursor = new CursorSliderItem;
    m_cursor->setZValue(2.0);
    scene->addItem(m_cursor);
    setScene(scene);
    setLength(0);
}

int RulerView::length() const
{
    return m_ruler->length();
}

void RulerView::setLength(int length)
{
    m_ruler->setLength(length);
    length = m_ruler->length();
    m_cursor->setLength(length);
    scene()->setSceneRect(0.0, -kScaleTop, length * kSampleWidth, kHeight);
    for (TimeSliderData* data : qAsConst(m_timeMarkers)) {
        TimeSliderItem* item = data->sliderItem();
        if (heldTime(item->time(), length) != item->time()) {
            moveMarker(item, item->time());
        }
    }
}

int RulerView::num() const
{
    return m_ruler->num();
}

void RulerView::setNum(int num)
{
    m_ruler->setNum(num);
}

void RulerView::setZoomRate(double rate)
{
    if (!std::isfinite(rate) || rate <= 0.0 || rate == m_zoomRate) {
        return;
    }
    m_zoomRate = rate;
    setTransform(QTransform::fromScale(rate, 1.0));
}

void RulerView::announce(NotificationType type)
{
    NotificationCenter::shared()->sendEvent(new Notification(type, this), this);
}

void RulerView::report(NotificationType type)
{
    NotificationCenter::shared()->postEvent(new Notification(type, this), this);
    Q_EMIT updateMarkerAct();
}

void RulerView::addMarker(int time)
{
    createMarker(time);
}

void RulerView::createMarker(int time)
{
    announce(MarkerAboutToBeCreated);
    auto* data = new TimeSliderData;
    TimeSliderItem* item = data->sliderItem();
    activeMarker(item);
    placeMarker(item, time);
    scene()->addItem(item);
    m_timeMarkers.prepend(data);
    report(MarkerCreated);
}

void RulerView::activeMarker(TimeSliderItem* item)
{
    if (item == nullptr) {
        return;
    }
    if (TimeSliderData* head = timeMarker()) {
        head->sliderItem()->setMain(false);
        head->sliderItem()->setZValue(0.0);
    }
    item->setMain(true);
    item->setZValue(1.0);
    auto const isItems = [item](TimeSliderData const* data) { return data->item() == item; };
    auto const found = std::find_if(m_timeMarkers.cbegin(), m_timeMarkers.cend(), isItems);
    if (found != m_timeMarkers.cend()) {
        int const index = static_cast<int>(found - m_timeMarkers.cbegin());
        announce(ActiveMarkerAboutToChange);
        m_timeMarkers.move(index, 0);
        report(ActiveMarkerChanged);
    }
}

void RulerView::removeMarker(QGraphicsItem* item)
{
    for (int i = 0; i < m_timeMarkers.size(); ++i) {
        TimeSliderData* data = m_timeMarkers.at(i);
        if (item == nullptr || data->item() != item) {
            continue;
        }
        announce(MarkerAboutToBeRemoved);
        scene()->removeItem(item);
        m_timeMarkers.removeAt(i);
        if (TimeSliderData* head = timeMarker()) {
            head->sliderItem()->setMain(true);
        }
        report(MarkerRemoved);
        // Observers hold the data until the report reaches them: it goes after the last of them.
        m_retiredMarkers.append(data);
        QMetaObject::invokeMethod(
            this, [this] { delete m_retiredMarkers.takeFirst(); }, Qt::QueuedConnection);
        return;
    }
}

void RulerView::deleteAllMarker()
{
    QList<QGraphicsItem*> const items = scene()->items();
    for (QGraphicsItem* item : items) {
        if (dynamic_cast<TimeSliderItem*>(item) != nullptr) {
            removeMarker(item);
        }
    }
}

void RulerView::handleEvents(Notification* note)
{
    if (!note->isFrom(domain())) {
        return;
    }
    if (note->type == ZoomChanged) {
        setZoomRate(note->sender->property("zoomRate").toDouble());
    } else if (note->type == HorizontalScrollChanged) {
        horizontalScrollBar()->setValue(note->sender->property("horizontalScrollBarValue").toInt());
    }
}

/// The marker at that point of the viewport, also under the cursor, or null.
TimeSliderItem* RulerView::markerAt(QPoint const& position) const
{
    QList<QGraphicsItem*> const found = items(position);
    for (QGraphicsItem* item : found) {
        if (auto* marker = dynamic_cast<TimeSliderItem*>(item)) {
            return marker;
        }
    }
    return nullptr;
}

void RulerView::placeMarker(TimeSliderItem* item, int time)
{
    item->setLength(length());
    item->setNum(num());
    item->setTime(time);
    item->setPos(item->time() * kSampleWidth, item->y());
}

void RulerView::moveMarker(TimeSliderItem* item, int time)
{
    announce(ActiveMarkerAboutToChange);
    placeMarker(item, time);
    report(ActiveMarkerChanged);
}

/// Of flags that stand close only the first's number is written: the cursor's, the active marker's,
/// and so on.
void RulerView::paintEvent(QPaintEvent* event)
{
    NumberRow row;
    auto const place = [&](auto* slider) {
        double const left = viewportTransform().map(slider->pos()).x();
        double const right = left + slider->numberWidth();
        bool const visible = right > 0.0 && left < viewport()->width();
        slider->setNumberShown(visible && row.take(left, right));
    };
    if (m_cursor) {
        place(m_cursor.data());
    }
    for (TimeSliderData const* data : qAsConst(m_timeMarkers)) {
        if (data->item() != nullptr) {
            place(data->item());
        }
    }
    QGraphicsView::paintEvent(event);
    if (!m_hits.isEmpty())
        paintHits();
}

void RulerView::setHits(QVector<int> const& times)
{
    m_hits = times;
    viewport()->update();
}

/// From one pixel's hit to the next one's: what a look costs does not depend on their number.
void RulerView::paintHits()
{
    QPainter painter(viewport());
    double const step = kSampleWidth * viewportTransform().m11();
    double const left = viewportTransform().dx();
    auto hit = std::lower_bound(m_hits.cbegin(), m_hits.cend(), int(-left / step));
    while (hit != m_hits.cend()) {
        int const x = int(std::floor(left + *hit * step));
        if (x >= viewport()->width())
            return;
        painter.fillRect(x, kHeight - kHitHeight, kHitWidth, kHitHeight, QColor(kHitColor));
        int const nextTime = int(std::ceil((x + 1 - left) / step));
        hit = std::lower_bound(hit + 1, m_hits.cend(), nextTime);
    }
}

void RulerView::mousePressEvent(QMouseEvent* event)
{
    if (event->pos().y() < kScaleTop - 1) {
        if (TimeSliderItem* marker = markerAt(event->pos())) {
            activeMarker(marker);
            m_delegate = std::make_unique<MoveTimeSliderDelegate>(this, marker);
        }
    }
    QGraphicsView::mousePressEvent(event);
}

void RulerView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_delegate) {
        m_delegate->process(event);
    }
    QGraphicsView::mouseMoveEvent(event);
}

void RulerView::mouseReleaseEvent(QMouseEvent* event)
{
    completeGesture(event);
    QGraphicsView::mouseReleaseEvent(event);
}

void RulerView::completeGesture(QEvent* event)
{
    if (m_delegate) {
        m_delegate->complete(event);
        m_delegate.reset();
    }
}

void RulerView::contextMenuEvent(QContextMenuEvent* event)
{
    TimeSliderItem* marker = markerAt(event->pos());
    int const time = std::min(length() - 1, nearestTime(mapToScene(event->pos()).x()));
    bool const onRuler = itemAt(event->pos()) == m_ruler;
    bool const canCreate = time >= 0 && time <= length();
    QPointer<RulerView> const self = this;
    if (marker != nullptr || (canCreate && !onRuler)) {
        execMenu(event->globalPos(), marker, time);
    }
    if (self) {
        completeGesture(event);
    }
}

/// A marker's own menu, or without one that of the place. The view and the marker may be gone when
/// the menu closes.
void RulerView::execMenu(QPoint const& globalPosition, TimeSliderItem* marker, int time)
{
    QPointer<RulerView> const self = this;
    QPointer<TimeSliderItem> const item = marker;
    QPointer<QMenu> const menu = new QMenu(this);
    m_createMarkerAction->setText(tr("Create Marker at Clock Period: %1").arg(time));
    if (marker != nullptr) {
        menu->addActions({m_removeMarkerAction, m_removeAllMarkersAction});
    } else {
        menu->addAction(m_createMarkerAction);
    }
    QAction const* chosen = menu->exec(globalPosition);
    if (!self) {
        return;
    }
    delete menu;
    if (chosen == m_createMarkerAction) {
        createMarker(time);
    } else if (chosen == m_removeMarkerAction) {
        removeMarker(item);
    } else if (chosen == m_removeAllMarkersAction) {
        deleteAllMarker();
    }
}

MoveTimeSliderDelegate::MoveTimeSliderDelegate(RulerView* view, TimeSliderItem* item)
    : ActionDelegate(view), m_item(item)
{}

void MoveTimeSliderDelegate::process(QEvent* event)
{
    if (m_item.isNull() || m_item->scene() == nullptr) {
        return;
    }
    QPoint const position = static_cast<QMouseEvent*>(event)->pos();
    int const nearest = nearestTime(m_view->mapToScene(position).x());
    int const time = std::max(std::min(nearest, m_view->length() - 1), 0);
    if (std::abs(m_item->x() - time * kSampleWidth) < 1e-12) {
        return;
    }
    m_view->moveMarker(m_item, time);
}

void MoveTimeSliderDelegate::complete(QEvent*)
{}

} // namespace WaveMonitor
