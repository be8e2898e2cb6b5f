// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_VECTORPROPERTY_H
#define GENTRA_PROPERTIES_VECTORPROPERTY_H

#include "gentra/properties/Property.h"

#include <string>

namespace Gentra {

/// A property whose datum is one Math::Vec3. The pool data is the field `vector`.
class GENTRA_EXPORT VectorProperty : public Property {
public:
    /// Named "Vector Property".
    VectorProperty();
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    explicit VectorProperty(std::string const& newName);
    explicit VectorProperty(char const* newName);
    /// @}

    /// Sets the name and the type and the pool data to (0, 0, 0).
    void Init(std::string const& newName);

    void* GetPoolData() override;
    void SetPoolData(void* data) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;

    /// The vector at GetData(), or (0, 0, 0) when that is null.
    [[nodiscard]] Math::Vec3 GetVector();
    /// The vector at GetDataFromMemberSelection(), or (0, 0, 0) when that is null.
    [[nodiscard]] Math::Vec3 GetVectorFromMemberSelection(MemberSelection& selection, int index);
};

} // namespace Gentra

#endif
