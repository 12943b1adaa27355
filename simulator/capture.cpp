#include "simulator/capture.h"

#include "simulator/log.h"

#include <utility>

namespace VEK::Simulator {
namespace {

/// No sound set-up takes as many samples past the end of the stimulus: the memory is smaller.
constexpr qint64 MaxStanding = qint64(1) << 23;

constexpr quint64 AddressMask = 0xFFFF;

} // namespace

Capture::Capture(BuiltCore const& core, CaptureSetup const& setup, TriggerLogic trigger,
                 Stimulus& stimulus, SampleMemory& memory)
    : m_core(core), m_setup(setup), m_trigger(std::move(trigger)), m_stimulus(stimulus),
      m_memory(memory)
{
    beginWindow();
}

bool Capture::run(bool force)
{
    while (m_window < m_setup.windows) {
        if (m_standing > MaxStanding) {
            qCDebug(lcSimulator) << "a capture past any size was given up";
            return false;
        }
        if (!findTrigger(force))
            return false;
        if (m_core.isDynamic)
            store(true); // the tables take one sample to answer
        for (quint64 i = 0; i < m_setup.after && m_standing <= MaxStanding; ++i)
            store(false);
        ++m_window;
        beginWindow();
    }
    return true;
}

void Capture::beginWindow()
{
    m_count = 0;
    m_place = 0;
    m_trigger.restart(rowBefore());
}

bool Capture::findTrigger(bool force)
{
    if (force) {
        store(!m_core.isDynamic);
        return true;
    }
    Dump::SampleTable const& samples = *m_stimulus.samples;
    while (m_stimulus.next < samples.rowCount()) {
        bool const isLooking = m_window > 0 || !m_setup.holdsOff || m_count >= m_setup.lead;
        bool const fires = m_trigger.sample(samples.row(m_stimulus.next), isLooking);
        store(fires && !m_core.isDynamic);
        if (fires)
            return true;
    }
    return false;
}

/// Takes the next sample into the memory; past the end of the stimulus its last row stands.
void Capture::store(bool mark)
{
    quint64 const base = quint64(m_setup.share) * m_window & AddressMask;
    qint64 const last = m_stimulus.samples->rowCount() - 1;
    m_memory.store(base + m_place, std::min(m_stimulus.next, last), mark);
    if (m_stimulus.next <= last)
        ++m_stimulus.next;
    else
        ++m_standing;
    ++m_count;
    if (++m_place == m_setup.ring)
        m_place = 0;
}

/// The row that edges of the next sample count against: its own for the first one of all.
quint64 const* Capture::rowBefore() const
{
    return m_stimulus.samples->row(std::max<qint64>(m_stimulus.next - 1, 0));
}

} // namespace VEK::Simulator
