// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Allocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t allocations = 0;
std::size_t bytes = 0;
std::size_t untilFailure = 0;
bool forEver = false;

} // namespace

void* operator new(std::size_t size) {
    if (untilFailure > 0 && --untilFailure == 0) {
        untilFailure = forEver ? 1 : 0;
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++allocations;
    bytes += size;
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
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
void FailAllocation(std::size_t n, bool andAllLater) {
    untilFailure = n;
    forEver = andAllLater;
}
bool AllocationFailureIsDue() {
    return untilFailure > 0;
}

} // namespace Support
