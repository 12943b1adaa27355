/// The pace of a run: when a poll goes out, and when a section is asked for.
#include "acquire/datamanager.h"

#include "jtag/jtagsession.h"

#include <QBitArray>
#include <QCoreApplication>

#include <algorithm>
#include <utility>

#include <unistd.h>

namespace VEK {
namespace {

// Paced by replies.
constexpr int FirstPollDelay = 20; // ms
constexpr int LastPollDelay = 250;
constexpr int SectionsInFlight = 8;

} // namespace

void DataManager::setPacing(Pacing pacing)
{
    if (m_status != AnalyzerIdle || pacing == m_pacing)
        return;
    m_pacing = pacing;
    bool const isTimed = pacing == Pacing::Timed;
    m_pollTimer->setSingleShot(!isTimed);
    if (isTimed)
        m_pollTimer->setInterval(m_timedInterval);
    else
        m_timedInterval = m_pollTimer->interval();
}

void DataManager::startPolling()
{
    if (m_pacing == Pacing::Timed) {
        m_pollTimer->start();
        return;
    }
    restartBackoff();
    if (!m_isPollOwed) // else its reply goes on
        m_pollTimer->start(0);
}

void DataManager::restartBackoff()
{
    m_pollDelay = FirstPollDelay;
}

void DataManager::poll(CmdPack const& request, bool forced, ReplyHandler const& handler)
{
    m_isPollOwed = true;
    Poll const sent{m_round, m_isFinishing, forced};
    QPointer<DataManager> const self(this);
    ask(request, [self, sent, handler](CmdPack const& reply, bool* finished) {
        if (!self)
            return;
        self->m_isPollOwed = false;
        if (sent.round == self->m_round) {
            self->m_answered = sent;
            handler(reply, finished);
            return;
        }
        *finished = true;
        if (self->m_pacing == Pacing::ByReplies && self->m_status != AnalyzerReading)
            self->startPolling();
    });
}

void DataManager::onCoreWaiting(int core)
{
    Poll const answered = m_answered;
    QPointer<DataManager> const self(this);
    emit coreWaiting(core);
    if (!self || answered.round != m_round ||
        (m_status != AnalyzerRunning && m_status != AnalyzerWaiting))
        return;
    if (answered.isFinal) {
        stopPolledCore();
    } else if (m_pacing == Pacing::ByReplies) {
        m_pollTimer->start(m_isFinishing ? 0 : m_pollDelay);
        m_pollDelay = std::min(m_pollDelay + m_pollDelay / 4, LastPollDelay);
    }
}

void DataManager::finishWaiting()
{
    if (m_status == AnalyzerIdle)
        return;
    m_isFinishing = true;
    bool const isWaiting = m_status == AnalyzerRunning || m_status == AnalyzerWaiting;
    if (isWaiting && m_pacing == Pacing::ByReplies)
        startPolling();
}

void DataManager::readMemory(WindowSource const& windows)
{
    if (m_pacing == Pacing::Timed) {
        readAtIntervals(windows);
        return;
    }
    m_windows = windows;
    m_window = {};
    m_asked = 0;
    m_returned = 0;
    m_isReplyLost = false;
    ++m_read;
    askByReplies();
}

void DataManager::readWindow(WindowRead const& window)
{
    readMemory([window, isTaken = false](WindowRead& next) mutable {
        if (std::exchange(isTaken, true))
            return false;
        next = window;
        return true;
    });
}

void DataManager::readAtIntervals(WindowSource const& windows)
{
    QPointer<DataManager> const self(this);
    WindowRead window;
    while (m_status == AnalyzerReading && windows(window)) {
        while (window.next < window.sections) {
            if (!pauseForReplies())
                return;
            // deliberately without a look at the status: a stop in the pause lets this one out
            askForSection(window);
            if (!self || m_status != AnalyzerReading)
                return;
        }
    }
}

/// The pause before a section, in which replies come in. False when the manager did not survive it.
bool DataManager::pauseForReplies()
{
    QPointer<DataManager> const self(this);
    usleep(m_sectionPause);
    QCoreApplication::processEvents();
    // data on the socket is announced by a queued call, which only a second round delivers
    if (self)
        QCoreApplication::processEvents();
    return !self.isNull();
}

/// Fills up the sections that are on their way. A server that replies within the call finds the
/// loop below going already.
void DataManager::askByReplies()
{
    if (m_isAsking)
        return;
    QPointer<DataManager> const self(this);
    m_isAsking = true;
    bool isMore = true;
    while (m_status == AnalyzerReading && m_asked - m_returned < SectionsInFlight) {
        isMore = hasSectionToAsk();
        if (!isMore)
            break;
        askForSection(m_window);
        if (!self)
            return;
    }
    m_isAsking = false;
    if (m_status == AnalyzerReading && !isMore && m_asked == m_returned)
        onReadBroken();
}

bool DataManager::hasSectionToAsk()
{
    while (m_window.next >= m_window.sections) {
        m_window = {};
        if (!m_windows || !m_windows(m_window))
            return false;
    }
    return true;
}

void DataManager::askForSection(WindowRead& window)
{
    Section const section{window.window, window.sections, window.size, m_asked++, m_read};
    auto const placed = [&section, index = window.next](CmdPack pack) {
        pack.insert(Protocol::Key::Section, index);
        pack.insert(Protocol::Key::SectionCount, section.count);
        pack.insert(Protocol::Key::Window, section.window);
        return pack;
    };
    QBitArray const burstWord = window.burstWord(window.address);
    window.address = static_cast<unsigned short>(window.address + window.burst);
    ++window.next;
    QPointer<DataManager> const self(this);
    send(placed(writeRequest(Protocol::Oprate::BrustRead, burstWord)));
    ask(placed(readRequest(Protocol::Oprate::ReadRam, section.size)),
        [self, section](CmdPack const& reply, bool* finished) {
            if (self)
                self->onSectionReturned(section, reply, finished);
        });
}

void DataManager::onSectionReturned(Section const& section, CmdPack reply, bool* finished)
{
    if (m_pacing == Pacing::Timed) {
        onSection(section.size, reply, finished);
        return;
    }
    *finished = true;
    // one that was overtaken would be out of place among the samples, and counts as lost
    if (m_status != AnalyzerReading || section.read != m_read || section.serial < m_returned)
        return;
    m_isReplyLost = m_isReplyLost || section.serial > m_returned;
    m_returned = section.serial + 1;
    if (m_asked == m_returned && std::exchange(m_isReplyLost, false))
        JtagSession::shared()->abandonAll(); // they are owed no longer
    reply.insert(Protocol::Key::SectionCount, section.count);
    reply.insert(Protocol::Key::Window, section.window);
    QPointer<DataManager> const self(this);
    onSection(section.size, reply, finished);
    if (self && section.read == m_read)
        askByReplies();
}

} // namespace VEK
