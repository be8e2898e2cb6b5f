// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "HighResolutionCounter.h"

#include <ctime>

namespace Util {

namespace {

constexpr std::int64_t COUNTS_PER_SECOND = 1'000'000'000;

std::int64_t Read() {
    std::timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * COUNTS_PER_SECOND + now.tv_nsec;
}

std::int64_t Frequency() {
    return COUNTS_PER_SECOND;
}

} // namespace

constinit CounterSource const systemCounter = {Read, Frequency};

} // namespace Util
