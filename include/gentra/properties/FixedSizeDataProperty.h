// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_FIXEDSIZEDATAPROPERTY_H
#define GENTRA_PROPERTIES_FIXEDSIZEDATAPROPERTY_H

#include "gentra/properties/Property.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Gentra {

/// A property whose datum is a block of user bytes inside the member record.
///
/// Records are packed: hosts on machines that require aligned access keep such sizes to multiples of 4, so
/// that the floats behind the block stay aligned.
class GENTRA_EXPORT FixedSizeDataProperty : public Property {
public:
    /// Named "FixedSizeData Property". `newSize` is in bytes. The functor may be null and is not owned.
    FixedSizeDataProperty(unsigned int newSize, InstanceCreationFunctor* newFunctor);
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    FixedSizeDataProperty(std::string const& newName, unsigned int newSize, InstanceCreationFunctor* newFunctor);
    FixedSizeDataProperty(char const* newName, unsigned int newSize, InstanceCreationFunctor* newFunctor);
    /// @}
    /// @{
    /// Copies the pool data and shares the functor.
    FixedSizeDataProperty(FixedSizeDataProperty const& other);
    FixedSizeDataProperty& operator=(FixedSizeDataProperty const& other);
    /// @}

    /// Sets the name, the type, the size and the functor, and drops the pool data. While the property has a
    /// place in the records of a pool, the size stays.
    void Init(std::string const& newName, unsigned int newSize, InstanceCreationFunctor* newFunctor);

    /// Null until the pool data is first set, or until the pool that owns the property is compiled, which
    /// makes it zero bytes. A new member's datum starts as zero bytes while this is null.
    void* GetPoolData() override;
    void SetPoolData(void* data) override;
    void OnInstanceCreation(unsigned char* datum) override;
    void OnInstanceDeletion(unsigned char* datum) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;

private:
    std::uint32_t size = 0;
    std::unique_ptr<unsigned char[]> poolBlock;
    InstanceCreationFunctor* functor = nullptr;
};

} // namespace Gentra

#endif
