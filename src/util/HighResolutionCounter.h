// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_UTIL_HIGHRESOLUTIONCOUNTER_H
#define GENTRA_SRC_UTIL_HIGHRESOLUTIONCOUNTER_H

#include "gentra/gentra_export.h"

#include <cstdint>

namespace Util {

/// A monotonic counter: the one thing that differs between operating systems.
struct CounterSource {
    std::int64_t (*read)();      ///< The current reading, in counts.
    std::int64_t (*frequency)(); ///< Counts per second; 0 when there is no counter.
};

/// The counter of the operating system; its source file is chosen by the build.
extern CounterSource const systemCounter;

/// The counter in use.
[[nodiscard]] CounterSource const& HighResolutionCounter() noexcept;

/// Replaces the counter, so that tests set the time instead of waiting for it; null restores the system's.
GENTRA_EXPORT void ReplaceHighResolutionCounter(CounterSource const* source) noexcept;

} // namespace Util

#endif
