// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/VectorProperty.h"

#include "gentra/properties/Datum.h"

namespace Gentra {

namespace {
Math::Vec3 VectorAt(void const* datum) {
    return datum != nullptr ? Datum::Read<Math::Vec3>(datum) : Math::Vec3();
}
} // namespace

VectorProperty::VectorProperty() : VectorProperty("Vector Property") {}

VectorProperty::VectorProperty(std::string const& newName) {
    Init(newName);
}

VectorProperty::VectorProperty(char const* newName) {
    Init(Util::String(newName));
}

void VectorProperty::Init(std::string const& newName) {
    name = newName;
    type = VECTOR;
    vector = Math::Vec3();
}

void* VectorProperty::GetPoolData() {
    return &vector;
}

void VectorProperty::SetPoolData(void* data) {
    if (data != nullptr) {
        vector = Datum::Read<Math::Vec3>(data);
    }
}

int VectorProperty::GetDataSize() const {
    return sizeof(Math::Vec3);
}

PropertyType VectorProperty::GetPropertyType() {
    return VECTOR;
}

Math::Vec3 VectorProperty::GetVector() {
    return VectorAt(GetData());
}

Math::Vec3 VectorProperty::GetVectorFromMemberSelection(MemberSelection& selection, int index) {
    return VectorAt(GetDataFromMemberSelection(selection, index));
}

} // namespace Gentra
