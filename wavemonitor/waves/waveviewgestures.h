#pragma once

#include "wavemonitor/waveview.h"

#include <QPoint>
#include <QRect>

namespace WaveMonitor {

/// Middle button: the waves follow the mouse.
class WaveView::MoveWithMouseDelegate : public WaveView::ActionDelegate
{
public:
    MoveWithMouseDelegate(WaveView* view, QPoint const& start);
    void process(QEvent* event) override;
    void complete(QEvent* event) override;

private:
    QPoint m_last;
};

/// Left button: a drag of 10 pixels or more shades what lies outside its region, and zooms to the
/// region at the release.
class WaveView::ZoomFromRegionDelegate : public WaveView::ActionDelegate
{
public:
    ZoomFromRegionDelegate(WaveView* view, QPoint const& start);
    void process(QEvent* event) override;
    void complete(QEvent* event) override;

private:
    QPoint m_start;
    QRect m_rect;
};

} // namespace WaveMonitor
