#pragma once

#include "programmer/deviceitem.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QStringList>

class QFileSystemWatcher;

namespace VEK {
class ProgrammerProcess;

/// The devices of a scan chain, one a row, and what the command-line programmer does with them: it
/// finds cables, scans the chain and downloads Fs files. One run at a time: a run that is asked for
/// while another one is under way is refused without a word, and whoever shows buttons keeps them
/// off between `TargetEnable(false)` and `TargetEnable(true)`.
///
/// Cables are `CABLE` numbers, locations those of a cable on its bus, with 0 for any.
class VekProgrammerModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column : int {
        EnableColumn = 0,
        SeriesColumn = 1,
        DeviceColumn = 2,
        VersionColumn = 3,
        OperationColumn = 4,
        FsFileColumn = 5,
        ChecksumColumn = 6,
        UserCodeColumn = 7,
        IdCodeColumn = 8,
        IrCodeColumn = 9,
        ColumnCount = 10
    };

    explicit VekProgrammerModel(QObject* parent = nullptr);
    ~VekProgrammerModel() override;

    int rowCount(QModelIndex const& parent = QModelIndex()) const override;
    int columnCount(QModelIndex const& parent = QModelIndex()) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    bool setData(QModelIndex const& index, QVariant const& value, int role = Qt::EditRole) override;

    /// Replaces the rows by one. A series or device that the catalogue lacks becomes its first.
    void initData(QString const& series, QString const& device, QString const& fsFile);

    /// Replaces the rows by one for this file, which keeps what the target row (or else the first)
    /// had of series, device and target mark. Emits `statusChanged`.
    void updateFsFile(QString const& file);

    /// Looks for cables; the result stands in `cables` when `StartandAutoEnable(true)` comes, and
    /// after `scanCablesInit` also `cableInitFinsh`.
    void scanCables();
    void scanCablesInit();

    /// Replaces the rows by the devices that the chain reports.
    void scanDevices(int cable, int location);

    /// Downloads the Fs file of the target device. `frequency` matters to USB cables with one; it
    /// may be empty.
    void programFs(int cable, int location, QString const& frequency);

    void readDeviceCodes();

    /// The first row that is a target, or null. The model owns it.
    DeviceItem* activeDevice() const;

    /// The row's device, or null.
    DeviceItem* device(QModelIndex const& index) const;
    QList<DeviceItem*> devices() const { return m_rows; }

    /// Whether the table can be programmed as it is; shows why not.
    bool validate() const;

    /// False when several rows are targets, which it shows in a box as `validate` does.
    bool checkSingleTarget() const;

    /// Reads the header of an Fs file into a row, see `readFsHeader`; warnings go to
    /// `programPrint`.
    bool readFsFile(QString const& file, DeviceItem* row);

    /// Lets the user choose when the row's ID code fits several devices.
    void selectDevice(DeviceItem* row);

    /// Takes the first operation that loads an Fs file into the row, or none.
    void updateOperation(DeviceItem* row);

    /// The programmer's number of a cable.
    static int cabletoProgrammerCableIdx(int cable);

    /// Watches the Fs files of all rows anew. One that changed since it was read, is gone or has
    /// come back goes to `onFileChanged` when the events come round.
    void updateWatcherFsFiles();

    /// What an Fs file must name to fit the loaded configuration; empty: any file fits.
    void setCrc(QString const& crc) { m_crc = crc; }
    QString crc() const { return m_crc; }

    /// Rows of the cable scans: type, name, location, serial text.
    QList<QStringList> cables() const { return m_cables; }

    /// Whether a run of the programmer is under way, which ends with `TargetEnable(true)`.
    bool isBusy() const;

    /// Path of the programmer in the place of "../../Programmer/bin/loader_cli" beside the
    /// application, for tests only.
    void setProgrammer(QString const& path);

Q_SIGNALS:
    void statusChanged(ProgrammerStatus status, QStringList const& messages);
    void programPrint(QString const& message);
    void CableError(QString const& message);
    void cableInitFinsh();
    /// A row or its device changed.
    void deviceChanged();
    /// Whether a host may offer to start a capture.
    void StartandAutoEnable(bool enabled);
    /// Whether a run may be started.
    void TargetEnable(bool enabled);

public Q_SLOTS:
    void onScanCableFinishForFT2CH(int code, QProcess::ExitStatus status);
    void onScanCableFinishForFT2CHInit(int code, QProcess::ExitStatus status);
    void onScanCableFinishForWINUSB(int code, QProcess::ExitStatus status);
    void onScanCableFinishForWINUSBInit(int code, QProcess::ExitStatus status);
    void onScanFinish(int code, QProcess::ExitStatus status);
    void onDownloadFinish(int code, QProcess::ExitStatus status);
    void onProgramError();
    void onAddNewDevice();
    void onRemoveDevice(QModelIndex const& index);
    void onMoveUp(QModelIndex const& index);
    void onMoveDown(QModelIndex const& index);
    void onFileChanged(QString const& path);

private:
    /// Time and size, which tell of another content. A missing file has an invalid time.
    using FileState = QPair<QDateTime, qint64>;
    using FinishSlot = void (VekProgrammerModel::*)(int, QProcess::ExitStatus);
    /// What is under way, by what it gives back at its end.
    enum class Run { None, Devices, Cables, CablesInit };

    // table
    QVariant text(DeviceItem const& row, int column) const;
    void setSeries(DeviceItem* row, QString const& name);
    void setDevice(DeviceItem* row, QString const& name);
    void setVersion(DeviceItem* row, QString const& version);
    void replaceRows(QList<DeviceItem*> const& rows);
    void swapRows(int a, int b);

    // files
    void watchFile(QString const& file);
    void compareFiles();

    // runs
    void start(Run run, QStringList const& arguments, FinishSlot finish);
    void endRun(Run run);
    void giveBack();
    QStringList remoteArguments() const;
    QStringList downloadArguments(DeviceItem const& target, int cable, int location,
                                  QString const& frequency) const;
    void scanCablesForFT2CH(Run run, FinishSlot finish);
    void scanCablesForWINUSB(Run run, FinishSlot finish, int code, QProcess::ExitStatus status);
    void addCables(int code, QProcess::ExitStatus status);
    void endCableScan(Run run, int code, QProcess::ExitStatus status);
    void checkCableAndChannel();
    bool chooseDevices(QList<DeviceItem*> const& rows);

    ProgrammerProcess* m_process;
    QList<DeviceItem*> m_rows;
    QFileSystemWatcher* m_watcher;
    QHash<QString, FileState> m_seen; ///< By path: the file when it was read.
    QString m_crc;
    QList<QStringList> m_cables;
    QMetaObject::Connection m_finish;
    Run m_run = Run::None;
    bool m_refreshing = false; ///< The watcher's paths are being replaced.
};

} // namespace VEK
