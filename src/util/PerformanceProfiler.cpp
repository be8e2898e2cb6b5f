// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/PerformanceProfiler.h"

#include "gentra/util/PerformanceStatistics.h"

namespace Gentra {

void PerformanceProfiler::StartNewSession() {
    ++period;
    active = true;
    timer.Start();
}

void PerformanceProfiler::StopSession() {
    active = false;
}

void PerformanceProfiler::SampleStart(PerformanceStatistics& stats) const {
    if (!active) {
        return;
    }
    if (stats.period < period) {
        stats.period = period;
        stats.Reset();
    }
    stats.sampleStart = timer.GetElapsedSeconds();
}

void PerformanceProfiler::SampleStop(PerformanceStatistics& stats) const {
    if (active) {
        stats.AddSample(timer.GetElapsedSeconds() - stats.sampleStart);
    }
}

} // namespace Gentra
