#pragma once

#include "cli/triggerwatch.h"

#include <QJsonObject>

namespace VEK::Cli {

/// What is told of one core.
struct Explanation
{
    QString title;      ///< "core 0".
    bool fires = false; ///< In all windows.
    QStringList lines;  ///< For people, without title and sentence.
    QString sentence;
    QJsonObject json;
};

/// `expressions` are the texts of the core's expressions, in their order.
Explanation explanationOf(TriggerWatch const& watch, QStringList const& expressions);

} // namespace VEK::Cli
