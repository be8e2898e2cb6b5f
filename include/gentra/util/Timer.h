// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_TIMER_H
#define GENTRA_UTIL_TIMER_H

#include "gentra/gentra_export.h"

#include <cstdint>

namespace Util {

/// Measures seconds on the platform's monotonic high-resolution counter.
class GENTRA_EXPORT Timer {
public:
    /// Takes a reading of the counter, so that a timer which is never started measures from here.
    Timer();

    /// Starts the measurement, and the first lap, now.
    void Start();

    /// Seconds since Start(); -1.0 when the platform has no counter. Does not change the timer.
    [[nodiscard]] double GetElapsedSeconds() const;

    /// Seconds since the previous Lap() or Start(), and begins the next lap. When the platform has no
    /// counter, returns -1.0 and changes nothing.
    float Lap();

private:
    std::int64_t startCount;
    bool running = false; ///< Whether Start() was called; told by debuggers, read by nobody.
    std::int64_t lastCount;
};

} // namespace Util

#endif
