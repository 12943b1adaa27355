#pragma once

#include "workbench/wavesearch.h"

#include <QTimer>
#include <QWidget>

#include <functional>

class QLabel;
class QLineEdit;
class QSpinBox;
class QToolButton;

namespace WaveMonitor {
class WaveMonitorWidget;
}

/// A bar that looks for samples of the monitor in front: a condition as a trigger's text, or one of
/// the selected rows alone, and for how long it holds. Return and F3 go to the next hit, with Shift
/// to the one before.
class FindBar : public QWidget
{
    Q_OBJECT

public:
    using Monitor = WaveMonitor::WaveMonitorWidget;

    /// `current` gives the monitor in front, or null. Hidden until `begin`.
    explicit FindBar(std::function<Monitor*()> current, QWidget* parent = nullptr);

    /// Shows it, ready to be typed into.
    void begin();
    void next();
    void previous();
    /// Other samples, another monitor or other rows are there.
    void searchAgain();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void search();
    void go(bool forward);
    void showHits(QVector<int> const& hits);

    std::function<Monitor*()> m_current;
    QLineEdit* m_text;
    QSpinBox* m_longer;
    QLabel* m_count;
    QLabel* m_note;
    QVector<int> m_hits;
    QTimer m_pause; ///< From a key to the search.
};
