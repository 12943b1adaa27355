#include "wavemonitor/ruler/overviewstrip.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/ruler/overview.h"
#include "wavemonitor/ruler/rulerticks.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/waves/changecounts.h"
#include "wavemonitor/waves/waveitem.h"
#include "wavemonitor/waveview.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace WaveMonitor {

namespace {

constexpr int Inset = 3; // of the densities, above and below
constexpr int LeastFrame = 4;
constexpr int FlagSize = 4;
constexpr int FaintestAlpha = 130; // of a single change
constexpr QRgb CursorColor = 0xFFFFA500;
QColor const DensityColor(0, 200, 80);
QColor const FrameColor(255, 255, 255, 190);
QColor const VeilColor(255, 255, 255, 45);

} // namespace

OverviewStrip::OverviewStrip(WaveView* waves, RulerView* ruler, QWidget* parent)
    : QWidget(parent), m_waves(waves), m_ruler(ruler)
{
    setFixedHeight(Height);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setToolTip(tr("The whole capture: click or drag to scroll"));
    m_waves->viewport()->installEventFilter(this);
}

/// Whatever the strip shows makes the waves repaint themselves.
bool OverviewStrip::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint && watched == m_waves->viewport())
        update();
    return QWidget::eventFilter(watched, event);
}

OverviewStrip::Part OverviewStrip::visiblePart() const
{
    double const scale = kSampleWidth * m_waves->zoomRate();
    return {m_waves->mapToScene(0, 0).x() / kSampleWidth, m_waves->viewport()->width() / scale};
}

double OverviewStrip::timeAt(int x) const
{
    return OverviewScale{m_ruler->length(), width()}.timeAt(x);
}

/// Makes the picture of the densities again if rows, samples or size are others now.
void OverviewStrip::updateDensities()
{
    double const pixelRatio = devicePixelRatioF();
    OverviewScale const scale{m_ruler->length(), int(std::ceil(width() * pixelRatio))};
    QList<ChangeCounts const*> rows;
    QVector<quint64> shown{quint64(scale.length), quint64(scale.width), quint64(pixelRatio * 64)};
    QList<QGraphicsItem*> const items = m_waves->scene()->items();
    for (QGraphicsItem* const item : items) {
        auto* const row = dynamic_cast<WaveItem*>(item);
        ChangeCounts const* const counts = row && row->isVisible() ? row->changeCounts() : nullptr;
        if (!counts)
            continue;
        rows.append(counts);
        shown.append(counts->serial());
    }
    if (shown == m_shown)
        return;
    m_shown = shown;
    int const height = int(std::ceil((Height - 2 * Inset) * pixelRatio));
    m_densities = QPixmap(scale.width, height);
    m_densities.fill(Qt::black);
    QPainter painter(&m_densities);
    QVector<double> const densities = changeDensities(rows, scale);
    for (int column = 0; column < densities.size(); ++column) {
        if (densities.at(column) <= 0)
            continue;
        QColor color = DensityColor;
        color.setAlpha(FaintestAlpha +
                       qRound((255 - FaintestAlpha) * std::sqrt(densities.at(column))));
        painter.fillRect(column, 0, 1, height, color);
    }
    painter.end();
    m_densities.setDevicePixelRatio(pixelRatio);
}

void OverviewStrip::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (m_ruler->length() <= 0)
        return;
    updateDensities();
    painter.drawPixmap(0, Inset, m_densities);
    paintVisiblePart(painter);
    paintWindows(painter);
    paintMarkers(painter);
}

void OverviewStrip::paintLine(QPainter& painter, double time, QColor const& color, int top) const
{
    double const x = OverviewScale{m_ruler->length(), width()}.xOf(time);
    if (x >= 0 && x < width())
        painter.fillRect(int(x), top, 1, Height - top, color);
}

/// The begins of the windows, and the trigger in each; where many share a pixel most are left out.
void OverviewStrip::paintWindows(QPainter& painter) const
{
    WaveView::DataSourceProtocol* const source = m_waves->dataSource();
    int const windows = source ? source->WindowsNum() : 0;
    if (windows <= 0)
        return;
    qint64 const trigger = source->triggerPosition();
    qint64 const step = windowStep(m_ruler->length(), windows);
    if (step == 0) {
        paintLine(painter, double(trigger), Qt::yellow);
        return;
    }
    double const scale = width() / (m_ruler->length() * kSampleWidth);
    qint64 const stride = windowStride(step, scale);
    for (qint64 k = 0; k < windows; k += stride) {
        if (k > 0)
            paintLine(painter, double(step * k), Qt::red, Height / 2);
        paintLine(painter, double(trigger + step * k), Qt::yellow);
    }
}

void OverviewStrip::paintMarkers(QPainter& painter) const
{
    auto const flag = [&](SliderItem const& item, QColor const& color) {
        paintLine(painter, item.time(), color);
        double const x = std::floor(OverviewScale{m_ruler->length(), width()}.xOf(item.time()));
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        QPointF const corners[] = {{x, 0}, {x + FlagSize + 1, 0}, {x, FlagSize + 1}};
        painter.drawPolygon(corners, 3);
    };
    QList<TimeSliderData*> const markers = m_ruler->timeMarkers();
    for (auto marker = markers.rbegin(); marker != markers.rend();
         ++marker) { // the active one last
        TimeSliderItem const* const item = (*marker)->sliderItem();
        flag(*item, item->isMain() ? Qt::white : Qt::red);
    }
    if (CursorSliderItem const* const cursor = m_ruler->cursorItem())
        flag(*cursor, QColor(CursorColor));
}

void OverviewStrip::paintVisiblePart(QPainter& painter) const
{
    OverviewScale const scale{m_ruler->length(), width()};
    Part const part = visiblePart();
    int const left = int(std::floor(scale.xOf(std::max(0.0, part.left))));
    double const end = std::min(double(scale.length), part.left + part.visible);
    int const right =
        std::min(width(), std::max(int(std::ceil(scale.xOf(end))), left + LeastFrame));
    QRect const frame(std::min(left, width() - LeastFrame), 0, right - left, Height);
    painter.fillRect(frame, VeilColor);
    painter.setPen(FrameColor);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame.adjusted(0, 0, -1, -1));
}

void OverviewStrip::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_ruler->length() <= 0)
        return;
    Part const part = visiblePart();
    double const time = timeAt(event->pos().x());
    double const place = grabbedPlace(time, part.left, part.visible);
    m_grip = time - place;
    m_dragging = true;
    if (place != part.left)
        m_waves->scrollTo(place);
}

void OverviewStrip::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        m_waves->scrollTo(timeAt(event->pos().x()) - m_grip);
}

void OverviewStrip::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragging = false;
}

} // namespace WaveMonitor
