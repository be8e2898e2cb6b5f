// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_PATH_H
#define GENTRA_PROPERTIES_PATH_H

#include "gentra/gentra_export.h"

#include <cstdint>

namespace Gentra {

/// Addresses data in other pools by IDs, which are looked up on first use and again after each invalidation.
/// Only the invalidation exists yet.
class GENTRA_EXPORT Path {
public:
    /// Makes every path look its IDs up again on its next use. Called when all pools are rebuilt.
    static void ForceGlobalPathResolve() noexcept;

private:
    static std::uint32_t globalResolveTimeStamp;
};

} // namespace Gentra

#endif
