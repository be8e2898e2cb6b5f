// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_DATAREFERENCEPROPERTY_H
#define GENTRA_PROPERTIES_DATAREFERENCEPROPERTY_H

#include "gentra/properties/Property.h"

#include <string>

namespace Gentra {

/// A property whose datum is a pointer to user data. What it points at is the host's.
class GENTRA_EXPORT DataReferenceProperty : public Property {
public:
    /// Named "DataReference Property". The functor may be null and is not owned.
    explicit DataReferenceProperty(InstanceCreationFunctor* newFunctor = nullptr);
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    DataReferenceProperty(std::string const& newName, InstanceCreationFunctor* newFunctor);
    DataReferenceProperty(char const* newName, InstanceCreationFunctor* newFunctor);
    /// @}

    /// Sets the name, the type, the functor and a null pool datum.
    void Init(std::string const& newName, InstanceCreationFunctor* newFunctor);

    void* GetPoolData() override;
    void SetPoolData(void* data) override;
    void OnInstanceCreation(unsigned char* datum) override;
    void OnInstanceDeletion(unsigned char* datum) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;

private:
    void* poolDatum = nullptr; ///< Not owned.
    InstanceCreationFunctor* functor = nullptr;
};

} // namespace Gentra

#endif
