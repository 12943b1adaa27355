#pragma once

#include <QDebug>

/// Diagnostic output of the capture model, in words a person reads.
namespace VEK {

class MatchUnit;
class SXCore_Lite;
class SxCore;
class TriggerPort;

QDebug operator<<(QDebug debug, MatchUnit const& unit);
QDebug operator<<(QDebug debug, TriggerPort const& port);
QDebug operator<<(QDebug debug, SxCore const& core);
QDebug operator<<(QDebug debug, SXCore_Lite const& core);

} // namespace VEK
