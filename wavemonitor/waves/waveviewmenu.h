#pragma once

#include "wavemonitor/waveview.h"

class QAction;
class QMenu;
class QSignalMapper;

namespace WaveMonitor {

/// The wave view's context menu. Menus, actions and mappers are children of the view.
class WaveView::ContextMenuDelegate
{
public:
    explicit ContextMenuDelegate(WaveView* view);

    /// The whole menu, made once.
    QMenu* menu() const { return m_menu; }

    /// What the "Markers" menu can do at present.
    void enableMarkers(bool remove, bool previous, bool next);

    /// Opens the menu and runs what was chosen. The view may be gone afterwards.
    void exec(QPoint const& globalPosition);

private:
    QMenu* m_menu;
    QAction* m_previousMarker = nullptr;
    QAction* m_nextMarker = nullptr;
    QAction* m_removeAllMarkers = nullptr;
};

} // namespace WaveMonitor
