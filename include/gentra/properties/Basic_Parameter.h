// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_BASIC_PARAMETER_H
#define GENTRA_PROPERTIES_BASIC_PARAMETER_H

#include "gentra/properties/PropertyOwner.h"
#include "gentra/util/Vec3.h"

#include <cstdint>

namespace Gentra {

class InstanceCreationFunctor;
class Property;

/// The record that a behaviour reads at run time: where a datum lies in a member record, or the constant that
/// stands in for it, and the property behind it. A plain value.
struct Basic_Parameter {
    std::int32_t dataOffset = -1; ///< Offset of the datum in a member record, in bytes; -1 when there is none.
    float value = 0.0f;           ///< The constant of a VALUE datum.
    Math::Vec3 vector;            ///< The constant of a VECTOR datum.
    Property* property = nullptr; ///< In a property itself; in a fast parameter the linked one. Not owned.
    PropertyOwner owner = POOL;   ///< The kind of the datum.

    // FIXEDSIZEDATA only. Members of their own, because pointers may be wider than the floats above.
    std::uint32_t fixedSize = 0;                        ///< Size of the datum in bytes.
    InstanceCreationFunctor* creationFunctor = nullptr; ///< Not owned; may be null.
    void* defaultData = nullptr;                        ///< Not owned; may be null.
};

} // namespace Gentra

#endif
