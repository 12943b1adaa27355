#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

namespace VEK {
class DynamicConfigWidget;
class SxCore;
} // namespace VEK

/// The trigger of a core as a text, below its panel: follows what is set there, and sets it. What
/// is wrong stands below the line as one types, and Return takes a text that is right.
class TriggerLine : public QWidget
{
    Q_OBJECT

public:
    /// Core and panel are not owned, and must outlive this object; the panel shows the core.
    TriggerLine(VEK::SxCore& core, VEK::DynamicConfigWidget& panel, QWidget* parent = nullptr);

private:
    void follow();
    void check(QString const& text);
    void take();

    VEK::SxCore& m_core;
    VEK::DynamicConfigWidget& m_panel;
    QLineEdit* m_line;
    QLabel* m_note;
    bool m_isTaking = false; ///< The panel changes because of this line.
};
