#pragma once

#include <QColor>
#include <QGraphicsObject>
#include <QMetaType>
#include <QPainterPath>
#include <QPointer>

namespace WaveMonitor {

/// A time held within the samples 0 .. length - 1. A length of 0 means that none is known yet: then
/// only negative times are raised to 0.
int heldTime(int time, int length);

/// What the sliders on the ruler have in common: a flag with its time above it, drawn at its own
/// size at every zoom.
class SliderItem : public QGraphicsObject
{
    Q_OBJECT

public:
    int time() const { return m_time; }
    /// Samples of the ruler; 0 while it is not known.
    int length() const { return m_length; }

    /// Pixels that the number takes from the flag's tip to the right.
    double numberWidth() const;
    /// Whether the number is painted, as at the start. Takes effect at the next paint.
    void setNumberShown(bool shown) { m_numberShown = shown; }

    QRectF boundingRect() const override { return m_rect; }
    QPainterPath shape() const override { return m_shape; }
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

protected:
    struct Colors
    {
        QColor outline;
        QColor filling;
        QColor number;
    };

    explicit SliderItem(QGraphicsItem* parent);
    virtual Colors colors() const = 0;
    /// Stores the time, held within the length, and repaints.
    void holdTime(int time);

    int m_length = 0;

private:
    int m_time = 0;
    bool m_numberShown = true;
    QPainterPath m_shape;
    QRectF m_rect;
};

/// A time marker on the ruler. It does not move by itself: whoever sets the time also sets the
/// position.
class TimeSliderItem : public SliderItem
{
    Q_OBJECT

public:
    explicit TimeSliderItem(QGraphicsItem* parent = nullptr);

    /// Stores the time, held within the length, and repaints.
    void setTime(int time) { holdTime(time); }

    /// Whether this is the active marker.
    bool isMain() const { return m_main; }
    void setMain(bool main);

    void setLength(int length) { m_length = length; }

    /// Windows of the ruler.
    int num() const { return m_num; }
    void setNum(int num) { m_num = num; }

protected:
    Colors colors() const override;

private:
    bool m_main = false;
    int m_num = 1;
};

/// The cursor on the ruler. It moves with its time.
class CursorSliderItem : public SliderItem
{
    Q_OBJECT

public:
    explicit CursorSliderItem(QGraphicsItem* parent = nullptr) : SliderItem(parent) {}

    /// Stores the time, held within the length, and moves the item there; y stays.
    void setTime(int time);
    /// Stores the length and brings a time beyond it back.
    void setLength(int length);

protected:
    Colors colors() const override;
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
