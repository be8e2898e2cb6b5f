// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_VALUEPROPERTY_H
#define GENTRA_PROPERTIES_VALUEPROPERTY_H

#include "gentra/properties/Property.h"

#include <string>

namespace Gentra {

/// A property whose datum is one float. The pool data is the field `value`.
class GENTRA_EXPORT ValueProperty : public Property {
public:
    /// Named "Value Property".
    ValueProperty();
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    explicit ValueProperty(std::string const& newName);
    explicit ValueProperty(char const* newName);
    /// @}

    /// Sets the name and the type and the pool data to 0.
    void Init(std::string const& newName);

    void* GetPoolData() override;
    void SetPoolData(void* data) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;
};

} // namespace Gentra

#endif
