#pragma once

#include "trigger/syntax.h"

#include <QStringList>

#include <optional>

namespace VEK::Trigger {

/// What the names of a trigger stand for in one core. A signal is known by its net; names are those
/// of nets and buses and the user's own texts, with or without their scopes.
class SignalNames
{
public:
    explicit SignalNames(SxCore const& core);

    /// The nets behind a name, the highest first; none, and why, for a name that isn't there.
    QStringList resolve(TriggerName const& name, QString& error) const;

    /// How a signal or bus of a port is written so that it stands for its nets alone.
    QString written(SignalItem const& item) const;

private:
    struct Entry
    {
        QString name;
        QStringList nets;
    };

    void add(QString const& name, QStringList const& nets);
    void addItems(QList<SignalItem> const& items);
    void addVectors(QList<SignalItem> const& items);
    QList<Entry const*> find(QString const& name) const;
    QString unknown(QString const& name) const;
    bool standsFor(QString const& name, QStringList const& nets) const;

    QList<Entry> m_entries; ///< In the order in which they are looked at.
};

} // namespace VEK::Trigger
