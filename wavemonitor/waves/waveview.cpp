#include "wavemonitor/waveview.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/waves/waveviewgestures.h"
#include "wavemonitor/waves/waveviewmenu.h"

#include <QGraphicsItem>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <utility>

using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace WaveMonitor {

namespace {

/// A burst of notes, one for each of thousands of rows, must not lay thousands of rows out each
/// time. Notes take effect at once until this many rows were laid out in one turn of the event
/// loop; what they then still ask for is done once, at the end of the burst.
constexpr int kRowsPerTurn = 8192;

} // namespace

WaveView::WaveView(QWidget* parent)
    : QGraphicsView(parent), m_menu(std::make_unique<ContextMenuDelegate>(this))
{
    setFrameStyle(QFrame::NoFrame);
    setTransformationAnchor(AnchorUnderMouse);
    setViewportUpdateMode(FullViewportUpdate);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    auto* scene = new QGraphicsScene(this);
    scene->setBackgroundBrush(QBrush(Qt::black, Qt::SolidPattern));
    setScene(scene);
    NotificationCenter::shared()->registerObserver(
        this,
        QList<NotificationType>{ZoomAboutToChange, ZoomChanged, Reserved4, DataFormatChanged,
                                MarkerAboutToBeCreated, MarkerCreated, ActiveMarkerAboutToChange,
                                ActiveMarkerChanged, MarkerAboutToBeRemoved, MarkerRemoved,
                                RowCollapsed, RowExpanded, RemoveWaveItems, RearrangeWaveItems,
                                SelectionChanged, LayoutChanged, Reserved21, WaveColorChanged});
    connect(horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &WaveView::hScrollBarValueChanged);
}

WaveView::~WaveView()
{
    NotificationCenter::shared()->unregisterObserver(this);
    removeAllItems(); // they are the source's, and would go with the scene
}

void WaveView::setDataSource(DataSourceProtocol* source)
{
    m_dataSource = source;
}

void WaveView::setCursorItem(CursorSliderItem* cursor)
{
    if (m_cursor) {
        disconnect(m_cursor, nullptr, viewport(), nullptr);
    }
    m_cursor = cursor;
    if (m_cursor) {
        connect(m_cursor, &QGraphicsObject::xChanged, viewport(), qOverload<>(&QWidget::update));
    }
    viewport()->update();
}

int WaveView::horizontalScrollBarValue() const
{
    return horizontalScrollBar()->value();
}

void WaveView::hScrollBarValueChanged(int)
{
    NotificationCenter::shared()->postEvent(new Notification(HorizontalScrollChanged, this), this);
}

void WaveView::showEvent(QShowEvent* event)
{
    int const left = horizontalScrollBar()->value();
    QGraphicsView::showEvent(event); // would put the middle back that a hidden view had
    horizontalScrollBar()->setValue(left);
}

void WaveView::setZoomRate(double rate)
{
    double const middle = viewport()->width() / 2.0;
    double const cursor = m_cursor ? viewportTransform().map(m_cursor->pos()).x() : middle;
    bool const visible = cursor >= 0.0 && cursor < viewport()->width();
    zoomAround(rate, visible ? cursor : middle);
}

/// What stands at that x of the viewport stays there, as far as the samples go.
void WaveView::zoomAround(double rate, double x)
{
    if (!std::isfinite(rate) || rate <= 0.0 || rate == m_zoomRate) {
        return;
    }
    NotificationCenter* hub = NotificationCenter::shared();
    hub->sendEvent(new Notification(ZoomAboutToChange, this), this);
    double const time = viewportTransform().inverted().map(QPointF(x, 0.0)).x() / kSampleWidth;
    m_zoomRate = rate;
    int const vertical = verticalScrollBar()->value();
    setTransform(QTransform::fromScale(rate, 1.0));
    scrollTo(time - x / (kSampleWidth * rate));
    verticalScrollBar()->setValue(vertical); // the view's own anchor may have moved it by a pixel
    hub->postEvent(new Notification(ZoomChanged, this), this);
    hub->postEvent(new Notification(HorizontalScrollChanged, this), this);
}

void WaveView::zoomIn()
{
    setZoomRate(clampedZoomRate(m_zoomRate * 2.0));
}

void WaveView::zoomOut()
{
    setZoomRate(clampedZoomRate(m_zoomRate * 0.5));
}

void WaveView::zoomForRect(QRect rect)
{
    if (!rect.isValid()) {
        return;
    }
    QRectF const region = mapToScene(rect).boundingRect();
    setZoomRate(
        clampedZoomRate(static_cast<double>(viewport()->width()) / rect.width() * m_zoomRate));
    ensureVisible(region, 0, 0);
}

void WaveView::scrollTo(double time)
{
    double const left = time * kSampleWidth * m_zoomRate;
    double const most = horizontalScrollBar()->maximum();
    horizontalScrollBar()->setValue(left > 0.0 ? qRound(std::min(left, most))
                                               : 0); // not a number: 0
}

void WaveView::jump(int time)
{
    int const vertical = verticalScrollBar()->value();
    centerOn(time * kSampleWidth, 0.0);
    verticalScrollBar()->setValue(vertical);
}

void WaveView::rearrangeItems()
{
    if (m_dataSource == nullptr) {
        return;
    }
    QList<QGraphicsItem*> const items = m_dataSource->waveItems();
    for (QGraphicsItem* item : items) {
        if (item->scene() != scene()) {
            scene()->addItem(item);
        }
    }
    fitScene(items);
}

void WaveView::updateAllItems()
{
    if (m_dataSource != nullptr) {
        fitScene(m_dataSource->waveItems());
    }
}

void WaveView::removeAllItems()
{
    QList<QGraphicsItem*> const items = scene()->items();
    for (QGraphicsItem* item : items) {
        scene()->removeItem(item);
    }
}

void WaveView::fitScene(QList<QGraphicsItem*> const& items)
{
    double width = 0.0;
    double height = 0.0;
    for (QGraphicsItem const* item : items) {
        if (item->isVisible()) {
            QRectF const row = item->boundingRect();
            width = std::max(width, row.width());
            height += row.height();
        }
    }
    scene()->setSceneRect(0.0, 0.0, width, height);
    m_rows = items.size();
}

void WaveView::requestLayout(Layout kind)
{
    if (m_rowsThisTurn > kRowsPerTurn) {
        m_dueLayout = std::max(m_dueLayout.value_or(kind), kind);
        return;
    }
    if (m_rowsThisTurn == 0) {
        QMetaObject::invokeMethod(this, &WaveView::settleLayout, Qt::QueuedConnection);
    }
    applyLayout(kind);
    m_rowsThisTurn += m_rows + 1;
}

void WaveView::applyLayout(Layout kind)
{
    if (kind == Layout::Rebuild) {
        removeAllItems();
    }
    if (kind == Layout::Update) {
        updateAllItems();
    } else {
        rearrangeItems();
    }
}

void WaveView::layOutEditedRows()
{
    requestLayout(Layout::Rearrange);
}

void WaveView::settleLayout()
{
    m_rowsThisTurn = 0;
    if (m_dueLayout) {
        requestLayout(*std::exchange(m_dueLayout, std::nullopt));
    }
}

void WaveView::takeMarkers(QObject const* sender)
{
    // whoever has no such list has no markers
    auto const markers = sender->property("timeMarkers").value<QList<TimeSliderData*>>();
    if (!markers.isSharedWith(m_takenMarkers)) { // else this is one of many notes on one change
        m_takenMarkers = markers;
        m_timeMarkers.clear();
        for (TimeSliderData* data : markers) {
            if (data != nullptr) {
                m_timeMarkers.append(data->sliderItem());
            }
        }
    }
    viewport()->update();
    Q_EMIT updateMarkerAct();
}

QString WaveView::handleEvents(Notification* note)
{
    if (!note->isFrom(domain())) {
        return {};
    }
    switch (note->type) {
    case ZoomChanged:
        setZoomRate(note->sender->property("zoomRate").toDouble());
        break;
    case DataFormatChanged:
        requestLayout(Layout::Update);
        scene()->update();
        break;
    case MarkerCreated:
    case ActiveMarkerChanged:
    case MarkerRemoved:
        takeMarkers(note->sender);
        break;
    case RowCollapsed:
    case RowExpanded:
        requestLayout(Layout::Update);
        break;
    case RemoveWaveItems:
        m_dueLayout.reset();
        removeAllItems();
        break;
    case RearrangeWaveItems:
        requestLayout(Layout::Rearrange);
        break;
    case LayoutChanged:
        requestLayout(Layout::Rebuild);
        break;
    case SelectionChanged:
    case WaveColorChanged:
        scene()->update();
        break;
    default:
        break;
    }
    return {};
}

void WaveView::updateMarkerOrTrigerPos()
{
    if (m_dataSource == nullptr) {
        m_marks.reset(0);
        return;
    }
    qint64 const size = std::max(m_dataSource->oneWindowSize(), 0);
    qint64 const trigger = m_dataSource->triggerPosition();
    // with more windows than samples every sample from the trigger on is marked, as with as many
    qint64 const windows = std::min<qint64>(m_dataSource->WindowsNum(), size);
    m_marks.reset(static_cast<int>(size));
    for (qint64 k = 0; k < windows; ++k) {
        // Multiplied first, unlike the painted lines: deliberate. They can differ by a sample.
        m_marks.insert(trigger + k * size / windows);
    }
    for (QPointer<TimeSliderItem> const& marker : qAsConst(m_timeMarkers)) {
        if (marker) {
            m_marks.insert(marker->time());
        }
    }
}

void WaveView::updateMarkerAction()
{
    updateMarkerOrTrigerPos();
    int const time = m_cursor ? m_cursor->time() : 0;
    m_menu->enableMarkers(!m_timeMarkers.isEmpty(), m_marks.previous(time) >= 0,
                          m_marks.next(time) >= 0);
}

} // namespace WaveMonitor
