#pragma once

#include "workbench/capturepane.h"

#include <QSplitter>

/// The captures of a viewer, one above the other or side by side.
class CaptureArea : public QSplitter
{
    Q_OBJECT

public:
    explicit CaptureArea(QWidget* parent = nullptr);

    /// Adds a capture behind the others, or in the place of the one of the same files.
    CapturePane* add(ViewedCapture const& capture);

    QList<CapturePane*> panes() const;

    /// The one with the focus, else the first; null when there is none.
    CapturePane* currentPane() const;

Q_SIGNALS:
    /// One was closed.
    void closed();
};
