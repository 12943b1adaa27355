#pragma once

namespace VEK {

/// Where a run stands.
enum ANALYZER_STATUS : int {
    AnalyzerIdle = 0,
    AnalyzerRunning = 1,
    AnalyzerWaiting = 2, ///< Lite cores only; elsewhere the same as running.
    AnalyzerReading = 3,
    AnalyzerReadDone = 4
};

/// `status` of a core during a run.
enum CoreStatus : int { CoreUnused = 0, CoreArmed = 1, CoreFinished = 2 };

} // namespace VEK
