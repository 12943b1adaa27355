#include "simulator/capture.h"

#include "simulator/log.h"

#include <utility>

namespace VEK::Simulator {
namespace {

/// No sound set-up takes as many samples past the end of the stimulus: the memory is smaller.
constexpr qint64 MaxStanding = qint64(1) << 23;

constexpr quint64 AddressMask = 0xFFFF;

} // namespace

Capture::Capture(CaptureSetup const& setup, TriggerLogic trigger, Stimulus& stimulus,
                 SampleMemory& memory)
    : m_setup(setup), m_flow(setup), m_trigger(std::move(trigger)), m_stimulus(stimulus),
      m_memory(memory)
{
    restartTrigger();
}

bool Capture::run(bool force)
{
    while (!m_flow.isDone()) {
        if (m_standing > MaxStanding) {
            qCDebug(lcSimulator) << "a capture past any size was given up";
            return false;
        }
        if (!findTrigger(force))
            return false;
        bool isMarked = m_setup.answersLate;
        while (!m_flow.isWaiting() && m_standing <= MaxStanding) {
            store(false, isMarked);
            isMarked = false;
        }
    }
    return true;
}

void Capture::restartTrigger()
{
    m_place = 0;
    m_trigger.restart(rowBefore());
}

bool Capture::findTrigger(bool force)
{
    if (force) {
        store(true, !m_setup.answersLate);
        return true;
    }
    Dump::SampleTable const& samples = *m_stimulus.samples;
    while (m_stimulus.next < samples.rowCount()) {
        bool const fires = m_trigger.sample(samples.row(m_stimulus.next), m_flow.isLooking());
        store(fires, fires && !m_setup.answersLate);
        if (fires)
            return true;
    }
    return false;
}

/// Takes the next sample into the memory; past the end of the stimulus its last row stands.
void Capture::store(bool fires, bool mark)
{
    quint64 const base = quint64(m_setup.share) * m_flow.window() & AddressMask;
    qint64 const last = m_stimulus.samples->rowCount() - 1;
    m_memory.store(base + m_place, std::min(m_stimulus.next, last), mark);
    if (m_stimulus.next <= last)
        ++m_stimulus.next;
    else
        ++m_standing;
    if (++m_place == m_setup.ring)
        m_place = 0;
    if (m_flow.take(fires))
        restartTrigger();
}

/// The row that edges of the next sample count against: its own for the first one of all.
quint64 const* Capture::rowBefore() const
{
    return m_stimulus.samples->row(std::max<qint64>(m_stimulus.next - 1, 0));
}

} // namespace VEK::Simulator
