#pragma once

#include <QDialog>

class QSpinBox;

namespace WaveMonitor {

/// Asks for the height of chart rows, 30 to 1000 pixels.
class RowHeightSetting : public QDialog
{
    Q_OBJECT

public:
    explicit RowHeightSetting(int height, QWidget* parent = nullptr);

    /// The accepted height; until then the one that the dialog began with.
    int rowHeight() const { return m_rowHeight; }

    void accept() override;

private:
    int m_rowHeight;
    QSpinBox* m_spinBox = nullptr;
};

} // namespace WaveMonitor
