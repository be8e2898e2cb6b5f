// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_PERFORMANCEPROFILER_H
#define GENTRA_UTIL_PERFORMANCEPROFILER_H

#include "gentra/gentra_export.h"
#include "gentra/util/Timer.h"

#include <cstdint>

namespace Gentra {

class PerformanceStatistics;

/// Opens and closes profiling periods, in which every PerformanceStatistics collects samples.
///
/// The profiler in use is that of the main context. It is inactive until StartNewSession(); sampling then
/// costs next to nothing.
class GENTRA_EXPORT PerformanceProfiler {
public:
    /// Opens a new profiling period. Each statistics object starts afresh with its first sample in it; those
    /// that are not sampled keep the figures of their last period.
    void StartNewSession();

    /// Freezes all statistics.
    void StopSession();

private:
    friend class PerformanceStatistics;
    void SampleStart(PerformanceStatistics& stats) const;
    void SampleStop(PerformanceStatistics& stats) const;

    Util::Timer timer; ///< Started at the beginning of each period.
    std::uint32_t period = 0;
    bool active = false;
};

} // namespace Gentra

#endif
