#pragma once

#include "wavemonitor/localized.h"
#include "wavemonitor/timemarks.h"
#include "wavemonitor/timeslider.h"

#include <QGraphicsView>
#include <QList>
#include <QPointer>
#include <QRect>
#include <QVector>

#include <memory>
#include <optional>

namespace WaveMonitor {

class NumberRow;
struct Notification;

/// The right pane of the monitor: the waves, with the lines of triggers, markers and cursor painted
/// on top. One sample is 50 scene units wide; only the horizontal axis zooms.
class WaveView : public QGraphicsView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(qreal zoomRate READ zoomRate WRITE setZoomRate)
    Q_PROPERTY(quint64 domain READ domain WRITE setDomain)
    Q_PROPERTY(int horizontalScrollBarValue READ horizontalScrollBarValue)

public:
    /// What the view shows. The items stay the source's: the view puts them into its scene and
    /// takes them out again, also when it is destroyed, but never deletes them.
    class DataSourceProtocol
    {
    public:
        virtual ~DataSourceProtocol() = default;
        /// The items in display order, placed where they belong.
        virtual QList<QGraphicsItem*> waveItems() = 0;
        /// Brings the items' data and places up to date.
        virtual void updateItems() = 0;
        /// Sample of the trigger within one window.
        virtual int triggerPosition() = 0;
        /// Samples of the data that the windows share.
        virtual int oneWindowSize() = 0;
        virtual int WindowsNum() = 0;
        /// Selects the row of that item; null takes the selection away.
        virtual void highlightItem(QGraphicsItem* item) = 0;
    };

    /// A mouse gesture: made at the press, deleted at the release.
    class ActionDelegate
    {
    public:
        explicit ActionDelegate(WaveView* view) : m_view(view) {}
        virtual ~ActionDelegate() = default;
        virtual void process(QEvent* event) = 0;
        virtual void complete(QEvent* event) = 0;

    protected:
        WaveView* m_view;
    };

    class MoveWithMouseDelegate;
    class ZoomFromRegionDelegate;
    class ContextMenuDelegate;

    explicit WaveView(QWidget* parent = nullptr);
    ~WaveView() override;

    /// The source is not owned and must outlive its use; null shows nothing.
    void setDataSource(DataSourceProtocol* source);
    DataSourceProtocol* dataSource() const { return m_dataSource; }

    /// The ruler's cursor. Not owned.
    void setCursorItem(CursorSliderItem* cursor);
    CursorSliderItem* cursorItem() const { return m_cursor; }

    /// The horizontal scale, 1.0 at the start.
    double zoomRate() const { return m_zoomRate; }
    /// Sets the scale and announces it. Not clamped; a rate that is not finite or not above 0, or
    /// the present one, changes nothing. The cursor stays where it stands, or else the middle.
    void setZoomRate(double rate);

    int horizontalScrollBarValue() const;

    /// Puts a time, in samples, at the left edge, as far as the samples go.
    void scrollTo(double time);

    /// Centres the view on that sample; the vertical scroll position stays.
    void jump(int time);

    /// Shows the source's items as they are now placed, adding those that are new.
    void rearrangeItems();
    /// The same without adding items.
    void updateAllItems();
    /// Takes all items out of the scene without deleting them.
    void removeAllItems();

    /// Brings marks() up to date: the trigger of each window and all markers.
    void updateMarkerOrTrigerPos();
    /// Enables the entries of the "Markers" menu.
    void updateMarkerAction();
    /// Trigger and marker times as of the last updateMarkerOrTrigerPos(): nothing else keeps them
    /// up to date, so that moving the cursor costs nothing.
    TimeMarks const& marks() const { return m_marks; }

    ContextMenuDelegate* menuDelegate() const { return m_menu.get(); }

    /// The returned string is always empty.
    Q_INVOKABLE QString handleEvents(Notification* note);

public Q_SLOTS:
    /// Fits the scene to rows that were moved or changed, whose items the source has placed.
    void layOutEditedRows();
    void hScrollBarValueChanged(int value);
    /// Zooms so that this region of the viewport fills it, within the limits of the zoom steps.
    void zoomForRect(QRect rect);
    void zoomIn();
    void zoomOut();
    /// Run an entry of the menus "Cursors" and "Markers" on the monitor widget three levels above;
    /// they do nothing under any other parent.
    void onCursorSetted(int index);
    void onMarkerSetted(int index);

Q_SIGNALS:
    void updateMarkerAct();
    void updateCursorTime();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    enum class Layout { Update, Rearrange, Rebuild };

    void requestLayout(Layout kind);
    void applyLayout(Layout kind);
    void zoomAround(double rate, double x);
    void settleLayout();
    void fitScene(QList<QGraphicsItem*> const& items);
    void takeMarkers(QObject const* sender);
    void beginGesture(std::unique_ptr<ActionDelegate> gesture);
    void placeCursor(QPoint const& position);
    void setShades(QRect const& left, QRect const& right);

    void paintTriggers(QPainter& painter) const;
    void paintMarkers(QPainter& painter) const;
    void paintShades(QPainter& painter) const;
    void paintTimeLine(QPainter& painter, qint64 time, QColor const& color) const;
    void paintDistances(QPainter& painter, int activeTime) const;
    void paintDistance(QPainter& painter, NumberRow& row, int time, int from,
                       QColor const& color) const;
    double deviceX(qint64 time) const;

    QRect m_shadeLeft;
    QRect m_shadeRight;
    QList<TimeSliderData*> m_takenMarkers;           // not owned, only compared
    QVector<QPointer<TimeSliderItem>> m_timeMarkers; // their items, the active one first
    DataSourceProtocol* m_dataSource = nullptr;
    QPointer<CursorSliderItem> m_cursor;
    TimeMarks m_marks;
    std::unique_ptr<ActionDelegate> m_delegate;
    std::unique_ptr<ContextMenuDelegate> m_menu;
    double m_zoomRate = 1.0;
    int m_rows = 0;
    int m_rowsThisTurn = 0; // rows laid out since the event loop last came round
    std::optional<Layout> m_dueLayout;
};

} // namespace WaveMonitor
