#pragma once

#include "wavemonitor/localized.h"
#include "wavemonitor/timeslider.h"

#include <QGraphicsView>
#include <QList>
#include <QPointer>
#include <QVector>

#include <memory>

class QAction;

namespace WaveMonitor {

enum NotificationType : quint32;
struct Notification;
class ScaleRuler;

/// The ruler above the waves: the time scale, the cursor, and the time markers, which it owns. It
/// follows the wave view's zoom and horizontal scroll position, and never scrolls vertically.
class RulerView : public QGraphicsView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(qreal zoomRate READ zoomRate WRITE setZoomRate)
    Q_PROPERTY(quint64 domain READ domain WRITE setDomain)
    Q_PROPERTY(QList<TimeSliderData*> timeMarkers READ timeMarkers)
    Q_PROPERTY(TimeSliderData* timeMarker READ timeMarker)

public:
    /// A mouse gesture: made at the press, deleted at the release.
    class ActionDelegate
    {
    public:
        explicit ActionDelegate(RulerView* view) : m_view(view) {}
        virtual ~ActionDelegate() = default;
        virtual void process(QEvent* event) = 0;
        virtual void complete(QEvent* event) = 0;

    protected:
        RulerView* m_view;
    };

    explicit RulerView(QWidget* parent = nullptr);
    ~RulerView() override;

    /// Samples. Cursor and markers beyond a shorter length come back to its last sample.
    int length() const;
    void setLength(int length);

    /// Windows; see ScaleRuler::setNum.
    int num() const;
    void setNum(int num);

    /// The horizontal scale. A rate that is not finite or not above 0 is ignored.
    double zoomRate() const { return m_zoomRate; }
    void setZoomRate(double rate);

    /// The same as createMarker.
    void addMarker(int time);
    /// Makes a marker at that time, held within the length, and makes it the active one.
    void createMarker(int time);
    /// Makes a marker of this ruler the active one.
    void activeMarker(TimeSliderItem* item);
    /// Removes a marker; anything else is ignored. Its data lives on until every observer has been
    /// told.
    void removeMarker(QGraphicsItem* item);
    void deleteAllMarker();

    /// The markers, the active one first. Owned by the ruler.
    QList<TimeSliderData*> timeMarkers() const { return m_timeMarkers; }
    /// The active marker or null.
    TimeSliderData* timeMarker() const { return m_timeMarkers.value(0); }

    /// Samples that a host has found, ascending: marked by dashes at the ruler's lower edge, one a
    /// pixel at most. None at the start.
    void setHits(QVector<int> const& times);
    QVector<int> const& hits() const { return m_hits; }

    /// The cursor, owned by the ruler's scene.
    CursorSliderItem* cursorItem() const { return m_cursor; }

    QSize sizeHint() const override { return QSize(500, 50); }

    Q_INVOKABLE void handleEvents(Notification* note);

Q_SIGNALS:
    /// The markers changed or moved.
    void updateMarkerAct();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void paintHits();

    friend class MoveTimeSliderDelegate;

    void setUpScene();
    void announce(NotificationType type);
    void report(NotificationType type);
    TimeSliderItem* markerAt(QPoint const& position) const;
    void placeMarker(TimeSliderItem* item, int time);
    void moveMarker(TimeSliderItem* item, int time);
    void execMenu(QPoint const& globalPosition, TimeSliderItem* marker, int time);
    void completeGesture(QEvent* event);

    std::unique_ptr<ActionDelegate> m_delegate;
    ScaleRuler* m_ruler = nullptr;
    double m_zoomRate = 1.0;
    QList<TimeSliderData*> m_timeMarkers;
    QList<TimeSliderData*> m_retiredMarkers;
    QPointer<CursorSliderItem> m_cursor;
    QVector<int> m_hits;
    QAction* m_createMarkerAction = nullptr;
    QAction* m_removeMarkerAction = nullptr;
    QAction* m_removeAllMarkersAction = nullptr;
};

/// Drags a marker along the ruler, from the press on it to the release.
class MoveTimeSliderDelegate : public RulerView::ActionDelegate
{
public:
    MoveTimeSliderDelegate(RulerView* view, TimeSliderItem* item);
    void process(QEvent* event) override;
    void complete(QEvent* event) override;

private:
    QPointer<TimeSliderItem> m_item;
};

/// The sample nearest to a scene x, halves away from zero.
int nearestTime(double sceneX);

} // namespace WaveMonitor
