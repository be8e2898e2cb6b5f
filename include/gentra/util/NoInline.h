// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_NOINLINE_H
#define GENTRA_UTIL_NOINLINE_H

/// Marks what ends a shared count. gcc 12 would follow two pointers to one count and warn of a use after the
/// other's delete, so it must not look inside.
#if defined(__GNUC__)
#define GENTRA_NOINLINE __attribute__((noinline))
#else
#define GENTRA_NOINLINE
#endif

#endif
