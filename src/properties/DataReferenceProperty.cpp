// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/DataReferenceProperty.h"

#include "gentra/properties/Datum.h"
#include "gentra/properties/InstanceCreationFunctor.h"

namespace Gentra {

DataReferenceProperty::DataReferenceProperty(InstanceCreationFunctor* newFunctor)
    : DataReferenceProperty("DataReference Property", newFunctor) {}

DataReferenceProperty::DataReferenceProperty(std::string const& newName, InstanceCreationFunctor* newFunctor) {
    Init(newName, newFunctor);
}

DataReferenceProperty::DataReferenceProperty(char const* newName, InstanceCreationFunctor* newFunctor) {
    Init(Util::String(newName), newFunctor);
}

void DataReferenceProperty::Init(std::string const& newName, InstanceCreationFunctor* newFunctor) {
    name = newName;
    type = DATAREFERENCE;
    poolDatum = nullptr;
    functor = newFunctor;
}

void* DataReferenceProperty::GetPoolData() {
    return &poolDatum;
}

void DataReferenceProperty::SetPoolData(void* data) {
    if (data != nullptr) {
        poolDatum = Datum::Read<void*>(data);
    }
}

void DataReferenceProperty::OnInstanceCreation(unsigned char* datum) {
    if (functor != nullptr) {
        functor->CreateInstance(datum, GetDataSize());
    }
}

void DataReferenceProperty::OnInstanceDeletion(unsigned char* datum) {
    if (functor != nullptr) {
        functor->DeleteInstance(datum, GetDataSize());
    }
}

int DataReferenceProperty::GetDataSize() const {
    return sizeof(void*);
}

PropertyType DataReferenceProperty::GetPropertyType() {
    return DATAREFERENCE;
}

} // namespace Gentra
