#pragma once

#include <QLoggingCategory>

/// Diagnostics of the simulated chip. What breaks a bench is told as a warning; words that are
/// dropped and the like only at debug level, which is off by default.
Q_DECLARE_LOGGING_CATEGORY(lcSimulator)
