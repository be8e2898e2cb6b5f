// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_UTIL_PREFETCH_H
#define GENTRA_SRC_UTIL_PREFETCH_H

namespace Util {

/// Asks the machine to fetch the cache line of any address; does nothing where that cannot be said.
inline void PrefetchForReading([[maybe_unused]] void const* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address, 0);
#endif
}
inline void PrefetchForWriting([[maybe_unused]] void const* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address, 1);
#endif
}

} // namespace Util

#endif
