// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/Timer.h"

#include "HighResolutionCounter.h"

namespace Util {

namespace {
constinit CounterSource const* counterInUse = &systemCounter;
}

CounterSource const& HighResolutionCounter() noexcept {
    return *counterInUse;
}

void ReplaceHighResolutionCounter(CounterSource const* source) noexcept {
    counterInUse = source != nullptr ? source : &systemCounter;
}

Timer::Timer() : startCount(HighResolutionCounter().read()), lastCount(startCount) {}

void Timer::Start() {
    startCount = HighResolutionCounter().read();
    lastCount = startCount;
    running = true;
}

double Timer::GetElapsedSeconds() const {
    std::int64_t const frequency = HighResolutionCounter().frequency();
    if (frequency == 0) {
        return -1.0;
    }
    return static_cast<double>(HighResolutionCounter().read() - startCount) / static_cast<double>(frequency);
}

float Timer::Lap() {
    std::int64_t const frequency = HighResolutionCounter().frequency();
    if (frequency == 0) {
        return -1.0f;
    }
    std::int64_t const reading = HighResolutionCounter().read();
    double const lap = static_cast<double>(reading - lastCount) / static_cast<double>(frequency);
    lastCount = reading;
    return static_cast<float>(lap);
}

} // namespace Util
