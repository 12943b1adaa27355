#pragma once

#include "wavemonitor/signaltreeview.h"

class QAction;
class QActionGroup;
class QMenu;

namespace WaveMonitor {

/// The name of a wave colour, 0xRRGGBB, as the menu shows it; "Strange color" for any other.
QString waveColorText(int rgb);

/// The actions of the tree's context menu. Actions and submenus are children of the view.
class SignalTreeView::ContextMenuDelegate
{
public:
    explicit ContextMenuDelegate(SignalTreeView* view);

    /// The entries for the rows that are selected now, in the order of the menu, enabled and
    /// checked as the rows are.
    QList<QAction*> actions();

private:
    using Slot = void (SignalTreeView::*)();

    QAction* addAction(QString const& text, Slot slot);
    QAction* addChoice(QMenu* menu, QActionGroup* group, QString const& text, int value);
    void makeNameForms();
    void makeFormats();
    void makeColors();
    void enable(QList<QModelIndex> const& rows);
    void check(QList<QModelIndex> const& rows);

    SignalTreeView* m_view;
    QAction* m_ungroup;
    QAction* m_group;
    QAction* m_rename;
    QAction* m_restoreName;
    QAction* m_reverse;
    QAction* m_longName = nullptr;
    QAction* m_shortName = nullptr;
    QAction* m_newDivider;
    QAction* m_deleteDivider;
    QAction* m_separator;
    QActionGroup* m_nameForms = nullptr;
    QActionGroup* m_formats = nullptr;
    QActionGroup* m_colors = nullptr;
    QMenu* m_formatMenu = nullptr;
    QMenu* m_colorMenu = nullptr;
};

} // namespace WaveMonitor
