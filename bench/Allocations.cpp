// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Allocations.h"

#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

std::size_t allocations = 0;
std::size_t bytes = 0;

std::size_t Weight(void* memory) {
    return malloc_usable_size(memory) + sizeof(std::size_t);
}

} // namespace

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++allocations;
    bytes += Weight(memory);
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory != nullptr) {
        bytes -= Weight(memory);
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

std::size_t Bench::AllocationsSoFar() {
    return allocations;
}

std::size_t Bench::BytesHeld() {
    return bytes;
}
