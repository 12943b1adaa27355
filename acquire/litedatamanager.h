#pragma once

#include "acquire/datamanager.h"
#include "model/capturecore.h"

#include <QBitArray>

#include <memory>

namespace VEK {

/// Drives a capture on a lite core, of which a file holds one: started or found captured, polled
/// and read. Every width is the number of its data signals.
class VekLiteDataManager : public DataManager
{
    Q_OBJECT

public:
    VekLiteDataManager();
    ~VekLiteDataManager() override;

    /// Loads the core of a file with exactly one; otherwise false, and the core stays as it was.
    /// `error` is the reader's.
    bool readVekFile(QString const& file, QString& error);

    /// Owned; null until a file was read.
    SXCore_Lite* core() const { return m_core.get(); }

    /// Tells the server the width of the core.
    void sendTestMsg();

    /// Starts at once for 0, after `delay` ms when it is positive; with a negative delay the owner
    /// calls `forceDataTrigger` itself. Does nothing without a core.
    void startDataTrigger(int delay);
    /// Begins the capture: reads the memory if the capture is there already, else arms the core.
    /// No trigger is forced, despite the name.
    void forceDataTrigger();

    /// Asks for `depth` samples of `width` bits in sections of up to 128, the last of which may go
    /// past the end.
    void readRamData(int width, int depth);
    /// The sections, the last received first, without their overhead bit; they are handed over.
    /// The receiver of `readRamComplete` must call this: it also moves the run on.
    QList<QBitArray> getCurrentData();

Q_SIGNALS:
    void readRamComplete();

public Q_SLOTS:
    void checkState() override;
    void onDelay();

protected:
    void onSection(int size, CmdPack const& reply, bool* finished) override;
    void onReadBroken() override;
    void stopPolledCore() override;
    int stopArmedCores() override;
    void clearCapture() override;

private:
    int width() const;
    void writeStartRegister(unsigned int value);
    void onCaptureInit(CmdPack const& reply, bool* finished);
    void onStartRegister(CmdPack const& reply, bool* finished);
    void readCore();
    bool isPolling() const;

    QTimer* const m_delayTimer;
    /// Lets the polling go on when a poll is not answered.
    QTimer* const m_silenceTimer;
    std::unique_ptr<SXCore_Lite> m_core;
    QList<QBitArray> m_sectionData; ///< The last received first.
    bool m_isCut = false;           ///< A section has not its bits.
};

} // namespace VEK
