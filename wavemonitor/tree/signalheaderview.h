#pragma once

#include "wavemonitor/localized.h"

#include <QHeaderView>

namespace WaveMonitor {

/// The header of the signal tree. Its captions are labels that the monitor puts over it.
class SignalHeaderView : public QHeaderView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain WRITE setDomain)

public:
    explicit SignalHeaderView(Qt::Orientation orientation, QWidget* parent = nullptr);

    QSize sizeHint() const override;
};

} // namespace WaveMonitor
