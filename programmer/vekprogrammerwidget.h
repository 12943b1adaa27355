#pragma once

#include "programmer/deviceitem.h"

#include <QStringList>
#include <QWidget>

#include <memory>

class QModelIndex;

namespace VEK {

class Ui_VekProgrammerWidget;
class VekProgrammerModel;

/// The device programming panel: the table of the scan chain, its buttons, and an output pane. The
/// host tells it the cable and the location (`updateCable`, `updateChannel`).
///
/// The panel is active while its enable box is ticked; what the programmer says meanwhile is shown
/// when it becomes active again. A download is refused when several rows are targets, but does not
/// call `validate`: that is the host's to do.
class VekProgrammerWidget : public QWidget
{
    Q_OBJECT

public:
    explicit VekProgrammerWidget(QWidget* parent = nullptr);
    ~VekProgrammerWidget() override;

    /// The model's, see there.
    void initData(QString const& series, QString const& device, QString const& fsFile);
    bool validate() const;

    /// The current index of the table.
    QModelIndex selectedIndex() const;

    /// The table's model, for cable scans and for watching runs.
    VekProgrammerModel* model() const { return m_model; }

    /// Whether the application has a dark palette.
    static bool isDeepColorStyle();

Q_SIGNALS:
    /// The status of the device in words; `succ` when it is ready to acquire.
    void programStatusChanged(bool succ, QString const& text);
    void enableChange(bool status);

public Q_SLOTS:
    void on_searchDevice_clicked();
    void on_downLoad_clicked();
    void onEnableChange(int state);
    void on_addDevice_clicked();
    void on_rmDevice_clicked();
    void on_moveUp_clicked();
    void on_moveDown_clicked();
    void onStatusChanged(ProgrammerStatus status, QStringList const& messages);
    void onStatusChanged(ProgrammerStatus status);
    void onTableViewDoubleClkiced(QModelIndex const& index);
    /// Keeps the buttons off while the host uses the chain for something else.
    void updateIsBusy(bool busy);
    /// A `CABLE` number.
    void updateCable(int cable);
    /// The cable's location on its bus, 0 for any.
    void updateChannel(int location);
    void createProgrammerOutput(QString const& message);
    void createProgrammerOutput(QStringList const& messages);
    void onFrequencyChanged(QString const& frequency);
    void ondeviceChanged();
    void CableErrorBox(QString const& text);

private:
    void connectModel();
    void connectForm();
    void startRun();
    void followRow(QModelIndex const& from, int row);
    void showTip();
    void onTargetEnable(bool enabled);
    void sendStatusSig();
    void updateFrequency();
    void updateButtons();
    void showDarkGrid();

    std::unique_ptr<Ui_VekProgrammerWidget> ui;
    VekProgrammerModel* m_model;
    ProgrammerStatus m_status = ProgrammerIdle;
    bool m_active = true;
    bool m_hasKept = false; ///< Something was said while the panel was not active.
    ProgrammerStatus m_keptStatus = ProgrammerIdle;
    QStringList m_keptMessages;
    bool m_running = false;
    bool m_hostBusy = false;
    int m_cable = 0;
    int m_location = 0;
    QString m_frequency;
};

} // namespace VEK
