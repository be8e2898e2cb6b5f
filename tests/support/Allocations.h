// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_ALLOCATIONS_H
#define GENTRA_TESTS_SUPPORT_ALLOCATIONS_H

#include <cstddef>

namespace Support {

// The `new` of the whole process; on Windows that of the program alone, without the library's.

/// How often it has allocated, and how many bytes in all.
[[nodiscard]] std::size_t AllocationsSoFar();
[[nodiscard]] std::size_t BytesAllocatedSoFar();
/// Lets the n-th allocation from now fail, as if there were no memory; 0 lets none fail.
void FailAllocation(std::size_t n, bool andAllLater = false);
/// Whether that allocation is still to come.
[[nodiscard]] bool AllocationFailureIsDue();

} // namespace Support

#endif
