// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/ValueProperty.h"

#include "gentra/properties/Datum.h"

namespace Gentra {

ValueProperty::ValueProperty() : ValueProperty("Value Property") {}

ValueProperty::ValueProperty(std::string const& newName) {
    Init(newName);
}

ValueProperty::ValueProperty(char const* newName) {
    Init(Util::String(newName));
}

void ValueProperty::Init(std::string const& newName) {
    name = newName;
    type = VALUE;
    value = 0.0f;
}

void* ValueProperty::GetPoolData() {
    return &value;
}

void ValueProperty::SetPoolData(void* data) {
    if (data != nullptr) {
        value = Datum::Read<float>(data);
    }
}

int ValueProperty::GetDataSize() const {
    return sizeof(float);
}

PropertyType ValueProperty::GetPropertyType() {
    return VALUE;
}

} // namespace Gentra
