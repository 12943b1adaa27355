#pragma once

#include "wavemonitor/signalelement.h"

#include <QBitArray>
#include <QDomDocument>
#include <QDomElement>
#include <QList>
#include <QMap>

namespace WaveMonitor {

/// The captured signals of a monitor by id: their names and samples, without any arrangement.
/// Pointers to elements are valid until the id is added again or all are cleared.
class SignalStore
{
public:
    SignalStore() = default;
    ~SignalStore();
    SignalStore(SignalStore const&) = delete;
    SignalStore& operator=(SignalStore const&) = delete;

    /// Keeps a copy. An element that has the id already is replaced.
    SignalElement* add(SignalElement const& element);

    /// The element of that id, or null.
    SignalElement* element(int id) const { return m_elements.value(id); }

    /// All elements by id. They stay the store's.
    QMap<int, SignalElement*> const& elements() const { return m_elements; }

    /// Number of samples of a signal; 0 without it.
    int length(int id) const;

    /// The greatest number of samples of a signal; 0 without signals.
    int greatestLength() const;

    /// Replaces the samples of the signals 0 to n - 1; ids without signal are skipped. Returns
    /// false and changes nothing unless there is an array for each signal.
    bool replaceSamples(QList<QBitArray> const& samples);

    /// Deletes all elements.
    void clear();

    /// The element "Signals", made in the document but not placed in it.
    QDomElement exportDomElement(QDomDocument& document) const;

    /// Adds the signals of an element "Signals". Returns their ids as they stand there.
    QList<int> addSignals(QDomElement const& list);

    /// Puts the samples of an element "Signals", another window, behind those of the signals with
    /// these ids. Unknown ids are passed over, and so is what an array can't hold any more.
    void appendSamples(QDomElement const& list);

private:
    QMap<int, SignalElement*> m_elements; // owned
};

} // namespace WaveMonitor
