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

    void accept() override;

    /// The accepted height of the rows; until then the one that the dialog began with. The height
    /// of the dialog itself is `size().height()`.
    int height;

private:
    QSpinBox* m_spinBox = nullptr;
};

} // namespace WaveMonitor
