// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/Path.h"

namespace Gentra {

constinit std::uint32_t Path::globalResolveTimeStamp = 1;

void Path::ForceGlobalPathResolve() noexcept {
    ++globalResolveTimeStamp;
}

} // namespace Gentra
