// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "HighResolutionCounter.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace Util {

namespace {

std::int64_t Read() {
    LARGE_INTEGER count{};
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

std::int64_t Frequency() {
    LARGE_INTEGER frequency{};
    return QueryPerformanceFrequency(&frequency) != 0 ? frequency.QuadPart : 0;
}

} // namespace

constinit CounterSource const systemCounter = {Read, Frequency};

} // namespace Util
