#pragma once

#include "capture/capture.h"

#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace VEK::Cli {

/// What a command line sets in place of the configuration's values, for the Standard cores that
/// run.
struct Overrides
{
    std::optional<int> position;
    std::optional<int> amount;
    std::optional<int> windows;
    QString expression;  ///< The only trigger expression of a dynamic core; empty: as it is.
    QStringList matches; ///< Such as "M1=0x5A" or "M2=0x10..0x20".
    std::optional<QString> trigger; ///< A whole trigger as text, see docs/trigger-text.md.

    bool isEmpty() const;
    QJsonObject toJson() const;
};

/// Places of the cores with these indexes, or of all for an empty list. Throws a Failure for an
/// index that no core has.
QList<int> placesOf(Capture const& capture, QList<int> const& indexes);

/// Sets them in the cores at those places, and gives what the user should know. Throws a Failure
/// for what a core can't do.
QStringList apply(Overrides const& overrides, Capture const& capture, QList<int> const& places);

} // namespace VEK::Cli
