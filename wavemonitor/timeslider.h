#pragma once

#include <QGraphicsObject>
#include <QMetaType>
#include <QPainterPath>
#include <QPointer>

namespace WaveMonitor {

/// A time held within the samples 0 .. length - 1. A length of 0 means that none is known yet: then
/// only negative times are raised to 0.
int heldTime(int time, int length);

/// The hit area of both sliders, in device pixels: a flag whose tip (0, 0) stands at its time.
QPainterPath sliderShape();

/// A time marker on the ruler, drawn at its own size at every zoom. It does not move by itself:
/// whoever sets the time also sets the position.
class TimeSliderItem : public QGraphicsObject
{
    Q_OBJECT

public:
    explicit TimeSliderItem(QGraphicsItem* parent = nullptr);

    int time() const { return m_time; }
    /// Stores the time, held within the length, and repaints.
    void setTime(int time);

    /// Whether this is the active marker.
    bool isMain() const { return m_main; }
    void setMain(bool main);

    /// Samples of the ruler; 0 while it is not known.
    int length() const { return m_length; }
    void setLength(int length) { m_length = length; }

    /// Windows of the ruler.
    int num() const { return m_num; }
    void setNum(int num) { m_num = num; }

    /// Pixels that the number takes from the flag's tip to the right.
    double numberWidth() const;
    /// Whether the number is painted, as at the start. Takes effect at the next paint.
    void setNumberShown(bool shown) { m_numberShown = shown; }

    QRectF boundingRect() const override { return m_rect; }
    QPainterPath shape() const override { return m_shape; }
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

private:
    int m_time = 0;
    bool m_main = false;
    int m_length = 0;
    int m_num = 1;
    bool m_numberShown = true;
    QPainterPath m_shape;
    QRectF m_rect;
};

/// The cursor on the ruler, drawn at its own size at every zoom. It moves with its time.
class CursorSliderItem : public QGraphicsObject
{
    Q_OBJECT

public:
    explicit CursorSliderItem(QGraphicsItem* parent = nullptr);

    int time() const { return m_time; }
    /// Stores the time, held within the length, and moves the item there; y stays.
    void setTime(int time);

    /// Samples of the ruler; 0 while it is not known.
    int length() const { return m_length; }
    /// Stores the length and brings a time beyond it back.
    void setLength(int length);

    /// Pixels that the number takes from the flag's tip to the right.
    double numberWidth() const;
    /// Whether the number is painted, as at the start. Takes effect at the next paint.
    void setNumberShown(bool shown) { m_numberShown = shown; }

    QRectF boundingRect() const override { return m_rect; }
    QPainterPath shape() const override { return m_shape; }
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

private:
    int m_time = 0;
    int m_length = 0;
    bool m_numberShown = true;
    QPainterPath m_shape;
    QRectF m_rect;
};

/// One time marker: the owner of its item, which may be in a scene. The item may also go first,
/// with its scene.
class TimeSliderData
{
public:
    TimeSliderData() = default;
    ~TimeSliderData();
    TimeSliderData(TimeSliderData const&) = delete;
    TimeSliderData& operator=(TimeSliderData const&) = delete;

    /// The item, made on the first call. Owned by this record.
    TimeSliderItem* sliderItem();

    /// The item as it is: null before the first sliderItem() and once it is gone.
    TimeSliderItem* item() const { return m_item; }

    /// The item's time, or 0 without one.
    int time() const;

private:
    QPointer<TimeSliderItem> m_item;
};

} // namespace WaveMonitor

Q_DECLARE_METATYPE(WaveMonitor::TimeSliderData*)
