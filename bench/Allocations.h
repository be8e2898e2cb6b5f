// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_BENCH_ALLOCATIONS_H
#define GENTRA_BENCH_ALLOCATIONS_H

#include <cstddef>

namespace Bench {

/// How often the whole process, the library included, has allocated with `new`.
[[nodiscard]] std::size_t AllocationsSoFar();

/// How many bytes it holds at the moment, with what the C library keeps beside each piece.
[[nodiscard]] std::size_t BytesHeld();

} // namespace Bench

#endif
