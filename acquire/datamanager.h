#pragma once

#include "acquire/analyzerstatus.h"
#include "jtag/protocol.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVariant>

#include <functional>

namespace VEK {

/// What the managers of standard and of lite cores share: the scan chain, the cable report of a
/// remote server, the poll timer and the status. All requests go through `JtagSession::shared()`;
/// none is waited for.
class DataManager : public QObject
{
    Q_OBJECT

public:
    ~DataManager() override;

    /// Samples in a section of a memory read at most, so that a frame stays small.
    static constexpr int SectionSamples = 128;

    ANALYZER_STATUS status() const { return m_status; }
    /// Sets the status and emits `statusChanged`.
    void setStatus(ANALYZER_STATUS status);

    /// Opens the scan chain, a list of the devices' places. A result other than 0 stops the run
    /// and comes out of `triggerComplete`, after the 0 of the stop.
    void initDeviceChain(QList<QVariant> const& chain);

    /// The same on one cable of several. A cable that has no locations, or an empty location,
    /// opens the chain without them.
    void initDeviceChainandLocation(QList<QVariant> const& chain, QString const& cable,
                                    QString const& location);

    /// Asks the server of `cableName` for its cables; `CableChangedForNlc` tells when `nlcCables`
    /// is there.
    void getCableForNlc();

    /// Stops the run and closes the chain; emits `triggerComplete(0)`.
    virtual void stopDataTrigger() = 0;

    /// Why the device is not as it should be, in the server's words, for a host to show: of the
    /// chain that failed to open or opened with a doubt, or of the core that is polled, such as a
    /// stimulus that has ended. Empty when the server gave no reason, as most do not. Stays past
    /// the end of a run, to the next opening; it is there before `triggerComplete`.
    QString deviceReason() const { return m_coreReason.isEmpty() ? m_chainReason : m_coreReason; }

    /// The cable whose server is current.
    QString cableName() const { return m_cableName; }
    void setCableName(QString const& name) { m_cableName = name; }

    /// Rows of the last cable report: type, two fields and the location, as texts.
    QList<QStringList> nlcCables() const { return m_nlcCables; }

    /// Captures of a repeating run so far; -1 when the run does not repeat. An owner that wants
    /// repetition sets 0 before the run; every end of a run sets it back to -1.
    int autoRunCount() const { return m_autoRunCount; }
    void setAutoRunCount(int count) { m_autoRunCount = count; }

    /// Times of the dialogue, for tests only: the poll interval in ms and the pause before each
    /// section of a read in us.
    void setTiming(int pollInterval, unsigned sectionPause);

Q_SIGNALS:
    /// A run has ended: 0, or the error of the server.
    void triggerComplete(int resultID);
    void statusChanged(bool isBusy);
    /// Whether a host may offer to start a run.
    void StartandAutoEnable(bool flag);
    void CableChangedForNlc();
    /// `deviceReason` is another text, or empty again.
    void deviceReasonChanged(QString const& reason);

public Q_SLOTS:
    /// The poll step.
    virtual void checkState() = 0;

protected:
    using ReplyHandler = std::function<void(CmdPack const&, bool*)>;

    DataManager();

    /// Sends a request that has no reply.
    static void send(CmdPack const& pack);
    /// Sends a request; the handler gets its replies.
    static void ask(CmdPack const& pack, ReplyHandler const& handler);

    /// Keeps what a reply to a read of the start register gives as a reason, or that it gives none.
    void noteCoreReason(CmdPack const& reply);

    static CmdPack writeRequest(QString const& oprate, QBitArray const& data);
    static CmdPack readRequest(QString const& oprate, int size);

    /// A handler that does nothing once the manager is gone.
    template <typename Manager>
    static ReplyHandler handler(Manager* manager, void (Manager::*method)(CmdPack const&, bool*))
    {
        return [manager = QPointer<Manager>(manager), method](CmdPack const& pack, bool* finished) {
            if (manager)
                (manager->*method)(pack, finished);
        };
    }

    /// The pause before a section, in which replies come in. False when the manager did not
    /// survive it.
    bool pauseForReplies();

    /// One section of a memory read, as the server is asked for it.
    struct Section
    {
        int index;
        int count;
        int window;
    };
    void askForSection(Section const& section, QBitArray const& burstWord, int size,
                       ReplyHandler const& handler);

    QTimer* const m_pollTimer;
    int m_autoRunCount = -1;

private:
    void openChain(CmdPack pack);
    void onChainOpened(CmdPack const& reply);
    void onCablesQueried(CmdPack const& reply);
    void setReasons(QString const& ofChain, QString const& ofCore);

    ANALYZER_STATUS m_status = AnalyzerIdle;
    unsigned m_sectionPause = 50000; ///< us
    QString m_cableName;
    QString m_chainReason;
    QString m_coreReason;
    QList<QStringList> m_nlcCables;
};

} // namespace VEK
