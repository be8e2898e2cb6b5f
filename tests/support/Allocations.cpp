// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Allocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t allocations = 0;
std::size_t bytes = 0;
std::size_t held = 0;
std::size_t untilFailure = 0;

} // namespace

void* operator new(std::size_t size) {
    if (untilFailure > 0 && --untilFailure == 0) {
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++allocations;
    bytes += size;
    ++held;
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory != nullptr) {
        --held;
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace Support {

std::size_t AllocationsSoFar() {
    return allocations;
}
std::size_t BytesAllocatedSoFar() {
    return bytes;
}
std::size_t AllocationsHeld() {
    return held;
}
void FailAllocation(std::size_t n) {
    untilFailure = n;
}
bool AllocationFailureIsDue() {
    return untilFailure > 0;
}

} // namespace Support
