#pragma once

#include "results/dataformatter.h"

#include <QDomElement>
#include <QList>
#include <QString>
#include <QStringList>

/// Readers of a `Window` element. None reports an error: a missing element gives an empty list, a
/// missing attribute an empty text, an unknown id an empty signal.
namespace VEK {

/// One signal of a window.
struct Signal
{
    QString label;
    QString id;
    QString data; ///< One "0" or "1" a sample, sample 0 first.
};

/// A column of an export. The order of the operations is part of the interface.
class SignalData
{
public:
    virtual QString label() const = 0;
    /// Text of a sample; empty where the column has none.
    virtual QString data(int index) const = 0;
    /// Number of samples.
    virtual int dataSize() const = 0;
    virtual bool isBus() const = 0;
    virtual ~SignalData() = default;
};

/// A column of single samples, which repeats the characters as they stand.
class _Signal : public SignalData
{
public:
    _Signal(QString const& label, QString const& data) : m_label(label), m_data(data) {}

    QString label() const override { return m_label; }
    QString data(int index) const override;
    int dataSize() const override { return m_data.size(); }
    bool isBus() const override { return false; }

    /// All samples, one character each.
    QString const& samples() const { return m_data; }

private:
    QString m_label;
    QString m_data;
};

/// A column of bus values: the first member is the most significant bit, and a bit is set where the
/// member's character is "1".
class _Bus : public SignalData
{
public:
    _Bus(QString const& label, QList<QString> const& members) : m_label(label), m_members(members)
    {}

    QString label() const override { return m_label; }
    /// Empty from the end of the shortest member on.
    QString data(int index) const override;
    /// Length of the first member, whatever the others have.
    int dataSize() const override;
    bool isBus() const override { return true; }

    /// Samples of the members, most significant first.
    QList<QString> const& members() const { return m_members; }

    WaveMonitor::DataFormatter formatter{WaveMonitor::DataFormat::Hexadecimal};

private:
    QString m_label;
    QList<QString> m_members;
};

/// A bus as the group block of a CSV file lists it.
struct Bus
{
    QString name;
    QList<QString> members; ///< Labels.
};

/// The text of an element and of all below it, in document order. Works without recursion, and
/// shares the document's own string when the element holds nothing else.
QString elementText(QDomElement const& element);

/// Display name of a `Signal` element: its text, or its name when it has none.
QString signalLabel(QDomElement const& signal);

/// The `Signals` in document order.
QList<Signal> baseSignalListFromDom(QDomElement const& window);

/// The same, with the display names of the layout.
QList<Signal> signalListFromDom(QDomElement const& window);

/// The columns in layout order; with `expandBuses` each bus is followed by its members. The caller
/// owns the elements.
QList<SignalData*> signalDataFromDom(QDomElement const& window, bool expandBuses);

/// Labels of all buses, in layout order.
QStringList getBusNames(QDomElement const& window);

} // namespace VEK
