// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/PerformanceStatistics.h"

#include "gentra/util/PerformanceProfiler.h"

// The one call from this room upward: the profiler belongs to the main context.
#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"

namespace Gentra {

namespace {
PerformanceProfiler& MainProfiler() {
    return ContextManager::GetMainContext().GetPerformanceProfiler();
}
} // namespace

void PerformanceStatistics::SampleStart() {
    MainProfiler().SampleStart(*this);
}

void PerformanceStatistics::SampleStop() {
    MainProfiler().SampleStop(*this);
}

void PerformanceStatistics::Reset() noexcept {
    average = 0.0;
    minimum = 0.0;
    maximum = 0.0;
    sampleStart = 0.0;
    sampleCount = 0;
}

void PerformanceStatistics::AddSample(double seconds) noexcept {
    if (sampleCount == 0) {
        minimum = seconds;
        maximum = seconds;
    } else {
        if (seconds > maximum) {
            maximum = seconds;
        }
        if (seconds < minimum) {
            minimum = seconds;
        }
    }
    double const count = sampleCount;
    average = (count * average + seconds) / (count + 1.0);
    ++sampleCount;
}

} // namespace Gentra
