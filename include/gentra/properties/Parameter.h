// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_PARAMETER_H
#define GENTRA_PROPERTIES_PARAMETER_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Basic_Parameter.h"
#include "gentra/properties/PropertyType.h"
#include "gentra/properties/Scope.h"
#include "gentra/util/String.h"

#include <cstdint>

namespace Gentra {

/// The full description of a typed datum: a slot of a behaviour's interface, or the base of a property.
/// A plain value.
struct GENTRA_EXPORT Parameter : Basic_Parameter {
    Util::String name;             ///< Case-sensitive; need not be unique.
    PropertyType type = UNDEFINED; ///< What the datum is.
    Scope scope = VISIBLE;         ///< Who links it.
    std::int32_t linkIndex = -1;   ///< Position in a behaviour's interface; -1 when it is in none.

    Parameter() = default;

    /// A parameter with a default that is read from `newDefault` by type, unless that is null: VALUE takes
    /// one float, VECTOR three floats, FIXEDSIZEDATA keeps the pointer itself in `defaultData`; other types
    /// ignore it.
    Parameter(PropertyOwner newOwner, PropertyType newType, Util::String const& newName, Scope newScope,
              void* newDefault);

    /// @{
    /// Plain access to a field; nothing else follows the change.
    void SetPropertyType(PropertyType newType) noexcept { type = newType; }
    [[nodiscard]] PropertyType GetPropertyType() const noexcept { return type; }
    void SetPropertyOwner(PropertyOwner newOwner) noexcept { owner = newOwner; }
    [[nodiscard]] PropertyOwner GetPropertyOwner() const noexcept { return owner; }
    [[nodiscard]] Util::String const& GetName() const noexcept { return name; }
    void SetName(Util::String const& newName) { name = newName; }
    void SetDataOffset(int newOffset) noexcept { dataOffset = newOffset; }
    [[nodiscard]] int GetDataOffset() const noexcept { return dataOffset; }
    [[nodiscard]] int GetLinkIndex() const noexcept { return linkIndex; }
    /// @}

    /// @{
    /// By `scope`; whatever is not VISIBLE is intrinsic.
    [[nodiscard]] bool IsIntrinsic() const noexcept { return scope != VISIBLE; }
    [[nodiscard]] bool IsSharedIntrinsic() const noexcept { return scope == SHARED_INTRINSIC; }
    [[nodiscard]] bool IsUniqueIntrinsic() const noexcept { return scope == UNIQUE_INTRINSIC; }
    [[nodiscard]] bool IsVisible() const noexcept { return scope == VISIBLE; }
    /// @}

    // The Make family fills an existing parameter for one purpose: each operation sets the fields named by
    // its arguments, and those its comment names, and leaves every other field as it was.

    /// @{
    /// Sets the fields named by its arguments, and no other.
    void MakeMemberInputParameter(PropertyType newType, Util::String const& newName, int newOffset);
    /// Also sets the type to VALUE.
    void MakeConstantValueInputParameter(Util::String const& newName, float newValue);
    /// Also sets the type to VECTOR.
    void MakeConstantVectorInputParameter(Util::String const& newName, Math::Vec3 newVector);
    /// Also sets the type to BEHAVIOUR and the owner to POOL.
    void MakeBehaviourParameter(Util::String const& newName);
    /// Sets the scope to SHARED_INTRINSIC if `intrinsic`, else to VISIBLE.
    void MakePropertyCreationParameter(PropertyType newType, Util::String const& newName, bool intrinsic);
    /// Also sets `value` and `vector` to zero.
    void MakeBehaviourInterfaceParameter(PropertyOwner newOwner, PropertyType newType, Util::String const& newName,
                                         Scope newScope);
    void MakeInputParameter(PropertyType newType, Util::String const& newName, float newValue, Math::Vec3 newVector,
                            int newOffset);
    /// @}
};

} // namespace Gentra

#endif
