// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_PERFORMANCESTATISTICS_H
#define GENTRA_UTIL_PERFORMANCESTATISTICS_H

#include "gentra/gentra_export.h"
#include "gentra/util/LoadTimeStatics.h"

#include <cstdint>

namespace Gentra {

/// How long something took: count, mean, minimum and maximum of the samples of one profiling period.
///
/// All times are in seconds, all figures 0 before the first sample. Bracket the work to be measured with
/// SampleStart() and SampleStop(); both do nothing while the main context's profiler is inactive. Without a
/// high-resolution counter every sample is 0.
class GENTRA_EXPORT PerformanceStatistics {
public:
    /// @{
    /// The bounds of a sample. Samples of one object do not nest: each stop counts from the last start.
    void SampleStart();
    void SampleStop();
    /// @}

    /// The plain mean over all samples of the period.
    [[nodiscard]] double GetAvgProcessingTime() const noexcept { return average; }
    /// @{
    /// The shortest and the longest sample of the period.
    [[nodiscard]] double GetMinProcessingTime() const noexcept { return minimum; }
    [[nodiscard]] double GetMaxProcessingTime() const noexcept { return maximum; }
    /// @}
    /// Samples of the period so far.
    [[nodiscard]] unsigned int GetSampleCount() const noexcept { return sampleCount; }

private:
    friend class PerformanceProfiler;
    void Reset() noexcept;
    void AddSample(double seconds) noexcept;

    std::uint32_t period = 0; ///< The period whose samples the object holds.
    double average = 0.0;
    double minimum = 0.0;
    double maximum = 0.0;
    std::uint32_t sampleCount = 0;
    double sampleStart = 0.0; ///< Seconds since the start of the period at the last SampleStart().
};

} // namespace Gentra

#endif
