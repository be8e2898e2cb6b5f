// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/FixedSizeDataProperty.h"

#include "gentra/properties/InstanceCreationFunctor.h"

#include <cstring>

namespace Gentra {

FixedSizeDataProperty::FixedSizeDataProperty(unsigned int newSize, InstanceCreationFunctor* newFunctor)
    : FixedSizeDataProperty("FixedSizeData Property", newSize, newFunctor) {}

FixedSizeDataProperty::FixedSizeDataProperty(std::string const& newName, unsigned int newSize,
                                             InstanceCreationFunctor* newFunctor) {
    Init(newName, newSize, newFunctor);
}

FixedSizeDataProperty::FixedSizeDataProperty(char const* newName, unsigned int newSize,
                                             InstanceCreationFunctor* newFunctor) {
    Init(Util::String(newName), newSize, newFunctor);
}

FixedSizeDataProperty::FixedSizeDataProperty(FixedSizeDataProperty const& other) : Property(other) {
    *this = other;
}

FixedSizeDataProperty& FixedSizeDataProperty::operator=(FixedSizeDataProperty const& other) {
    if (this == &other) {
        return *this;
    }
    Property::operator=(other);
    size = other.size;
    functor = other.functor;
    poolBlock.reset();
    FixedSizeDataProperty::SetPoolData(other.poolBlock.get());
    return *this;
}

void FixedSizeDataProperty::Init(std::string const& newName, unsigned int newSize,
                                 InstanceCreationFunctor* newFunctor) {
    name = newName;
    type = FIXEDSIZEDATA;
    size = HasPlaceInRecords() ? size : newSize;
    poolBlock.reset();
    functor = newFunctor;
}

void* FixedSizeDataProperty::GetPoolData() {
    return poolBlock.get();
}

void FixedSizeDataProperty::SetPoolData(void* data) {
    if (data == nullptr) {
        return;
    }
    if (poolBlock == nullptr) {
        poolBlock = std::make_unique<unsigned char[]>(size);
    }
    std::memmove(poolBlock.get(), data, size);
}

void FixedSizeDataProperty::OnInstanceCreation(unsigned char* datum) {
    if (datum == nullptr) { // the pool data, which was never set
        poolBlock = std::make_unique<unsigned char[]>(size);
        datum = poolBlock.get();
    }
    if (functor != nullptr) {
        functor->CreateInstance(datum, GetDataSize());
    }
}

void FixedSizeDataProperty::OnInstanceDeletion(unsigned char* datum) {
    if (functor != nullptr) {
        functor->DeleteInstance(datum, GetDataSize());
    }
}

int FixedSizeDataProperty::GetDataSize() const {
    return static_cast<int>(size);
}

PropertyType FixedSizeDataProperty::GetPropertyType() {
    return FIXEDSIZEDATA;
}

} // namespace Gentra
