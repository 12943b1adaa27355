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

/// What sets the pace of a run. Requests, their order and their bits are the same either way; only
/// how often the trigger is polled differs.
enum class Pacing {
    /// The required times: 500 ms between polls of a standard core, and 50 ms before each section,
    /// in which the event loop runs.
    Timed,
    /// A section is asked for when another one has come, with 8 on their way, and nothing blocks.
    /// The first poll goes out at once, the next 20 ms after its reply and then ever more rarely,
    /// up
    /// to 250 ms; this begins anew for each core and at each arming.
    ByReplies
};

/// What the managers of standard and of lite cores share: the scan chain, the cable report of a
/// remote server, the pace of polls and reads, the end of a run and the status. All requests go
/// through `JtagSession::shared()`; none is waited for. A receiver of any signal may stop the run
/// or delete the manager.
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

    Pacing pacing() const { return m_pacing; }
    /// `Timed` at first. Does nothing while a run is on.
    void setPacing(Pacing pacing);

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
    void stopDataTrigger();

    /// The same for a host that wants to know that the chip was told: before it closes the chain it
    /// asks for the start register of the core that it stopped last. `triggerComplete(0)` comes
    /// with the reply, `stopTaken` just before it; a host that waits no longer calls
    /// `stopDataTrigger`. False when there is nothing to wait for: no run was on, or it had no core
    /// and has ended now.
    bool stopGracefully();

    /// The time for triggering is over: each core that is armed gets one more poll, which begins
    /// after this call, and is read if that says that it has fired, else stopped alone. A read that
    /// is on goes on. The run ends as ever, with `triggerComplete(0)`. Paced by replies, the
    /// session may then still be owed one to each stop, which shows that it was taken.
    void finishWaiting();

    /// Why the device is not as it should be, in the server's words, for a host to show: of the
    /// chain that failed to open or opened with a doubt, or of the core that is polled, such as a
    /// stimulus that has ended. Empty when the server gave no reason, as most do not. Stays past
    /// the end of a run, to the next opening; it is there before `triggerComplete`.
    QString deviceReason() const { return m_coreReason.isEmpty() ? m_chainReason : m_coreReason; }

    /// The part of it that tells of the polled core, for which no trigger is to be expected.
    QString coreReason() const { return m_coreReason; }

    /// The cable whose server is current.
    QString cableName() const { return m_cableName; }

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

    // How a run goes on. `core` is the core's own index, 0 for a lite core.

    /// The words that arm the core were written.
    void coreArmed(int core);
    /// A poll says that the core has not captured yet: the chip has taken the words that were
    /// written before it.
    void coreWaiting(int core);
    /// A poll says that the core has captured; it is read next. `forced` if a force was written to
    /// it before that poll: the core may have fired by itself since the poll before.
    void coreFired(int core, bool forced);
    /// The core was stopped alone.
    void coreStopped(int core);
    /// A section came in: so many of a window are there now.
    void readProgress(int core, int window, int received, int total);
    /// Replies of a window are lost, or one has not the bits that were asked for. If the window
    /// came in all the same `readRamComplete` follows; without that it never does.
    void windowIncomplete(int core, int window);
    /// The reply to the last request of `stopGracefully`.
    void stopTaken();

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

    /// Sets the status. False when a receiver of `statusChanged` has deleted the manager or moved
    /// the run on.
    bool moveTo(ANALYZER_STATUS status);

    /// One window of a memory read, as it is asked for section by section.
    struct WindowRead
    {
        int window = 0;
        int sections = 0;
        int burst = 0;              ///< Samples of a section.
        int size = 0;               ///< Bits of a section, overhead included.
        unsigned short address = 0; ///< Of the next section.
        std::function<QBitArray(unsigned short address)> burstWord;
        int next = 0; ///< The next section.
    };
    /// Gives the next window, with one section at least; false when there is none.
    using WindowSource = std::function<bool(WindowRead&)>;

    /// Asks for the sections of these windows at the pace of the policy, while the status is
    /// `AnalyzerReading`.
    void readMemory(WindowSource const& windows);
    /// The same for one window.
    void readWindow(WindowRead const& window);
    /// Takes a section, of which `size` bits were asked for.
    virtual void onSection(int size, CmdPack const& reply, bool* finished) = 0;
    /// Paced by replies: the last section came, but others never will, or there was none to read.
    virtual void onReadBroken() = 0;

    /// Goes on with `checkState`, at once or with the next tick.
    void startPolling();
    /// The next poll is the first of a core, or of an arming.
    void restartBackoff();
    /// Asks for a register of the polled core; `forced` if a force was written to it. The handler
    /// is not called when the core was stopped alone meanwhile.
    void poll(CmdPack const& request, bool forced, ReplyHandler const& handler);
    /// Whether a poll must wait for the reply to an earlier one.
    bool isPollOwed() const { return m_isPollOwed && m_pacing == Pacing::ByReplies; }
    /// What is known of the poll whose reply is being handled.
    bool isFinalPoll() const { return m_answered.isFinal; }
    bool isForcedPoll() const { return m_answered.forced; }
    /// A poll said that the core with that index has not fired yet.
    void onCoreWaiting(int core);
    /// Replies to polls that are on their way are no news any more.
    void forgetPolls() { ++m_round; }
    /// Stops the polled core alone, and moves the run on.
    virtual void stopPolledCore() = 0;

    /// Behind the stop of a core whose start register has `width` bits: reads that register, so
    /// that the reply shows that the stop was taken. `onTaken` may be null.
    static void confirmStop(int width, ReplyHandler const& onTaken);

    /// Writes the stop to all cores that are armed. The width of the start register of the one that
    /// the chain is left at, 0 for none.
    virtual int stopArmedCores() = 0;
    /// Drops what was captured.
    virtual void clearCapture() = 0;
    /// Ends a run by itself: nothing is armed any more, and all is read.
    void finishRun();

    QTimer* const m_pollTimer;
    int m_autoRunCount = -1;

private:
    /// A poll as it was sent.
    struct Poll
    {
        int round = 0; ///< Counts the cores that were stopped alone.
        bool isFinal = false;
        bool forced = false;
    };
    /// A section as it was asked for.
    struct Section
    {
        int window;
        int count;
        int size;
        int serial; ///< Within its read.
        int read;   ///< Counts the reads.
    };

    void openChain(CmdPack pack);
    void onChainOpened(CmdPack const& reply);
    void onCablesQueried(CmdPack const& reply);
    void setReasons(QString const& ofChain, QString const& ofCore);
    bool resetRun();
    bool pauseForReplies();
    void readAtIntervals(WindowSource const& windows);
    void askByReplies();
    bool hasSectionToAsk();
    void askForSection(WindowRead& window);
    void onSectionReturned(Section const& section, CmdPack reply, bool* finished);

    ANALYZER_STATUS m_status = AnalyzerIdle;
    Pacing m_pacing = Pacing::Timed;
    unsigned m_sectionPause = 50000; ///< us
    int m_timedInterval = 0;         ///< ms, kept while paced by replies.
    int m_pollDelay = 0;             ///< ms from the next reply to the poll behind it.
    int m_round = 0;
    Poll m_answered;
    bool m_isPollOwed = false;
    bool m_isFinishing = false;
    bool m_isStopAwaited = false;

    // A read that is paced by replies. They come in the order of the requests.
    WindowSource m_windows;
    WindowRead m_window;
    int m_asked = 0;
    int m_returned = 0; ///< Sections up to the latest that came; a lost one counts.
    int m_read = 0;
    bool m_isReplyLost = false;
    bool m_isAsking = false;

    QString m_cableName;
    QString m_chainReason;
    QString m_coreReason;
    QList<QStringList> m_nlcCables;
};

} // namespace VEK
