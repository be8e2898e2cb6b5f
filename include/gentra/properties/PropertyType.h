// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_PROPERTYTYPE_H
#define GENTRA_PROPERTIES_PROPERTYTYPE_H

#include <cstdint>

namespace Gentra {

/// What a datum is. Pointers take `sizeof(void*)` bytes in a member record.
enum PropertyType : std::int32_t {
    UNDEFINED = 0,       ///< No data: the base Property.
    VALUE = 1,           ///< One float, 4 bytes.
    VECTOR = 2,          ///< One Math::Vec3, 12 bytes.
    MEMBERSELECTION = 3, ///< Pointer to a MemberSelection.
    BEHAVIOUR = 4,       ///< Pointer to a Behaviour.
    DATAREFERENCE = 5,   ///< Pointer to user data.
    FIXEDSIZEDATA = 6,   ///< Inline block of user bytes, as many as its property says.
    TEXT = 7             ///< Pointer to a string of 16-bit characters.
};

} // namespace Gentra

#endif
