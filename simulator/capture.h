#pragma once

#include "dump/sampletable.h"
#include "simulator/triggerlogic.h"

#include <vector>

namespace VEK::Simulator {

/// The sample memory of a core. A record is kept as the number of its stimulus row, which never
/// changes, and its mark.
class SampleMemory
{
public:
    explicit SampleMemory(int depth) : m_records(std::size_t(depth)) {}

    struct Record
    {
        qint64 row; ///< -1: it was never stored.
        bool mark;
    };

    /// Addresses count modulo the depth.
    void store(quint64 address, qint64 row, bool mark)
    {
        m_records[place(address)] = (row + 1) * 2 + mark;
    }
    Record record(quint64 address) const
    {
        qint64 const content = m_records[place(address)];
        return {content / 2 - 1, bool(content & 1)};
    }

private:
    /// Most addresses lie within the depth: a division would be most of the work.
    std::size_t place(quint64 address) const
    {
        return std::size_t(address < m_records.size() ? address : address % m_records.size());
    }

    std::vector<qint64> m_records;
};

/// What the stimulus of a core holds and how far it has come.
struct Stimulus
{
    Dump::SampleTable const* samples = nullptr; ///< At least one row.
    qint64 next = 0;                            ///< The next sample; the row count: past the end.
};

/// How a capture runs, as the registers set it up.
struct CaptureSetup
{
    quint64 ring = 1;  ///< Records after which a window's addresses begin again.
    quint64 after = 0; ///< Records behind the marked one.
    quint64 lead = 0;  ///< Samples in front of the trigger's in a whole window.
    quint32 windows = 1;
    quint32 share = 1;        ///< Addresses between two windows.
    bool holdsOff = false;    ///< The first window does not look for its trigger before `lead`.
    bool answersLate = false; ///< The tables of a dynamic core take one sample to answer.
};

/// How far a capture has come, sample by sample: what it waits for, and in which window.
class CaptureFlow
{
public:
    explicit CaptureFlow(CaptureSetup const& setup) : m_setup(setup) {}

    quint32 window() const { return m_window; }
    bool isDone() const { return m_window == m_setup.windows; }
    /// For the window's trigger; else for the samples behind it.
    bool isWaiting() const { return m_left == 0; }
    /// Whether a trigger would be taken yet.
    bool isLooking() const { return m_window > 0 || !m_setup.holdsOff || m_count >= m_setup.lead; }

    /// Takes the next sample, before it is done; `fires`: it is the trigger's for which the window
    /// waits. True when the window is whole with it.
    bool take(bool fires)
    {
        ++m_count;
        if (m_left > 0)
            --m_left;
        else if (fires)
            m_left = m_setup.after + m_setup.answersLate;
        else
            return false;
        if (m_left > 0)
            return false;
        ++m_window;
        m_count = 0;
        return true;
    }

private:
    CaptureSetup m_setup;
    quint32 m_window = 0;
    quint64 m_count = 0; ///< Samples of the window so far.
    quint64 m_left = 0;  ///< Samples that the window takes behind its trigger's.
};

/// One arming of a core: fills the sample memory until the last window is whole.
class Capture
{
public:
    /// All references must outlive this object.
    Capture(CaptureSetup const& setup, TriggerLogic trigger, Stimulus& stimulus,
            SampleMemory& memory);

    /// Goes on until all windows are whole, true, or the stimulus has ended, false. `force` makes
    /// the next sample the trigger's, and in each further window the first one.
    bool run(bool force);

    quint32 windowsDone() const { return m_flow.window(); }
    quint32 windows() const { return m_setup.windows; }

private:
    void restartTrigger();
    bool findTrigger(bool force);
    void store(bool fires, bool mark);
    quint64 const* rowBefore() const;

    CaptureSetup m_setup;
    CaptureFlow m_flow;
    TriggerLogic m_trigger;
    Stimulus& m_stimulus;
    SampleMemory& m_memory;
    quint64 m_place = 0;   ///< Of the next sample in the ring.
    qint64 m_standing = 0; ///< Samples that were taken past the stimulus's end.
};

} // namespace VEK::Simulator
