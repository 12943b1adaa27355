#include "workbench/capturearea.h"

#include <QApplication>

#include <algorithm>

CaptureArea::CaptureArea(QWidget* parent) : QSplitter(Qt::Vertical, parent)
{
    setChildrenCollapsible(false);
}

CapturePane* CaptureArea::add(ViewedCapture const& capture)
{
    QList<CapturePane*> const all = panes();
    auto const old = std::find_if(all.begin(), all.end(), [&](CapturePane const* pane) {
        return pane->files() == capture.files;
    });
    auto* const pane = new CapturePane(capture);
    if (old == all.end()) {
        addWidget(pane);
    } else {
        QList<int> const widths = sizes();
        delete replaceWidget(indexOf(*old), pane);
        setSizes(widths);
    }
    connect(pane, &CapturePane::closing, pane, &QObject::deleteLater);
    connect(pane, &QObject::destroyed, this, &CaptureArea::closed, Qt::QueuedConnection);
    return pane;
}

QList<CapturePane*> CaptureArea::panes() const
{
    QList<CapturePane*> all;
    for (int i = 0; i < count(); ++i) {
        if (auto* const pane = qobject_cast<CapturePane*>(widget(i)))
            all << pane;
    }
    return all;
}

CapturePane* CaptureArea::currentPane() const
{
    QList<CapturePane*> const all = panes();
    QWidget const* const focus = QApplication::focusWidget();
    auto const hasFocus = [focus](CapturePane const* pane) {
        return focus && pane->isAncestorOf(focus);
    };
    auto const current = std::find_if(all.begin(), all.end(), hasFocus);
    return current == all.end() ? all.value(0) : *current;
}
