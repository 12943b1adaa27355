#pragma once

#include "acquire/datamanager.h"
#include "image/registerimage.h"
#include "model/capturecore.h"

#include <QBitArray>

namespace VEK {

/// Drives a capture on standard cores: arms them, polls one after the other until it has
/// triggered, and reads its sample memory window by window in sections.
class VekStandardDataManager : public DataManager
{
    Q_OBJECT

public:
    VekStandardDataManager();
    ~VekStandardDataManager() override;

    /// Loads the cores of a `.vek` or `.rsx` file in place of those that are there. False, with
    /// the reader's `error`, when there are none.
    bool readVekFile(QString const& file, QString& error);

    /// Owned; the order is that of the file.
    QList<SxCore*> const& cores() const { return m_cores; }
    /// The core at that place in `cores`, null when out of range.
    SxCore* getCore(int index) const { return m_cores.value(index, nullptr); }
    /// Cores that take part in a run, in order.
    QList<SxCore*> getSelectedCores() const;
    void clearCores();

    /// Model name of the target device; empty unless the owner sets it.
    QString deviceName() const { return m_deviceName; }
    void setDeviceName(QString const& name) { m_deviceName = name; }
    /// A `FileKind`, from the name of the file that was read.
    int fileKind() const { return m_fileKind; }

    /// Tells the server the widths of all cores.
    void sendTestMsg();

    /// Arms the cores at these places in `cores` and starts polling; places out of range are
    /// passed over, and all other cores become unused. Does nothing while a run is on. A core that
    /// captures its initial data is armed later, once the chip reports that it is there.
    void startDataTrigger(QList<int> const& coreIndexes);
    /// Programs and arms one core.
    void startTrigger(SxCore* core);
    /// Forces a trigger on all cores that are armed; not while one is being read.
    void forceDataTrigger();
    /// The same; while a core is being read, as soon as that is done.
    void forceArmedCores();
    /// Stops one armed core alone; the others go on. Does nothing for a core that is not armed.
    void stopCore(SxCore* core);
    /// Arms the cores of a run again after a read. Expressions stay as first loaded.
    void restartDataTrigger();

    /// Reads all windows of the current core. Returns when all is asked for; replies are handled
    /// in between.
    void readRunningCore();
    /// Asks for one window of `depth` samples from memory `address` on, `shiftWidth` bits each, in
    /// sections of up to 128; the rest of a division is not read. `signalCount` is not used.
    void readRamData(int window, int address, int signalCount, int shiftWidth, int depth);
    /// The sections of a window, the last received first, without their overhead bits. The
    /// receiver of `readRamComplete` must call this: it also moves the run on.
    QList<QBitArray> getCurrentData(int window);

    /// Loads a capture that was exported as CSV, one array a column, position 0 being the row of
    /// unknown values. False when the file can't be opened or has the older layout.
    bool readCsvFile(QString const& file, QList<SignalItem>& signalList,
                     QList<QBitArray>& dataList);

Q_SIGNALS:
    /// A window was read whole. `coreIdx` is the core's own index.
    void readRamComplete(int coreIdx, int winIdx);

public Q_SLOTS:
    void checkState() override;
    /// Stops the run and reports a silent server. A host that wants a watchdog connects its timer.
    void onTimeout();

protected:
    void onSection(int size, CmdPack const& reply, bool* finished) override;
    void onReadBroken() override;
    void stopPolledCore() override;
    int stopArmedCores() override;
    void clearCapture() override;

private:
    void selectCore(SxCore const& core);
    void reselectCore();
    void writeStop(SxCore& core);
    void writeStartRegister(SxCore const& core, unsigned int value);
    void writeRegisters(QList<QBitArray> const& words);
    SxCore* firstArmed() const;
    void tellArmed(QList<SxCore*> const& cores);
    using OnReply = void (VekStandardDataManager::*)(CmdPack const&, bool*);
    void pollRegister(QString const& select, QString const& read, unsigned short address,
                      OnReply onReply);
    void pollStartRegister(OnReply onReply);
    void pollCaptureInit();
    void onCaptureInit(CmdPack const& reply, bool* finished);
    void onStartRegister(CmdPack const& reply, bool* finished);
    void onStartRegisterAfterInit(CmdPack const& reply, bool* finished);
    void readTriggeredCore();
    static WindowRead windowRead(int window, int address, int shiftWidth, int depth);
    void onWindow(int window);
    bool tellIncomplete(int windows);
    bool isPolling() const;

    QString m_deviceName;
    QList<SxCore*> m_cores;
    SxCore* m_currentCore = nullptr;
    bool m_isSelectionLost = false; ///< The chain was turned to another core than the current one.
    bool m_isForceDue = false;
    QList<QList<QBitArray>> m_windowData; ///< Sections by window, the last received first.
    QList<bool> m_isCut;                  ///< Windows with a section that has not its bits.
    int m_sectionsPerWindow = 0;
    int m_fileKind = FileKindVek;
};

} // namespace VEK
