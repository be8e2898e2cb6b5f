// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_SCOPE_H
#define GENTRA_PROPERTIES_SCOPE_H

#include <cstdint>

namespace Gentra {

/// Who links a parameter of a behaviour's interface.
enum Scope : std::int32_t {
    VISIBLE = 0,          ///< The host links it to a property.
    SHARED_INTRINSIC = 1, ///< The pool makes its property, shared by name between the pool's behaviours.
    UNIQUE_INTRINSIC = 2  ///< The pool makes a property of its own for it, under a unique name.
};

} // namespace Gentra

#endif
