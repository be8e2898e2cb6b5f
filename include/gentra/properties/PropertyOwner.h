// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_PROPERTYOWNER_H
#define GENTRA_PROPERTIES_PROPERTYOWNER_H

#include <cstdint>

namespace Gentra {

/// Where the datum of a property lives and, for a parameter of a behaviour's interface, which properties it
/// may be linked to. Messages call owner 0 both "POOL" and "CONSTANT".
enum PropertyOwner : std::int32_t {
    /// Property: one datum for the whole pool. Parameter: a constant, linked to POOL or FLEXIBLE properties.
    POOL = 0,
    /// Property: one datum per member, in its record. Parameter: linked to MEMBER properties only.
    MEMBER = 1,
    /// Property: belongs to no pool. Parameter: linked to a property of any owner, whose owner it takes over.
    FLEXIBLE = 2
};

} // namespace Gentra

#endif
