// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/Parameter.h"

#include "gentra/properties/Datum.h"

namespace Gentra {

Parameter::Parameter(PropertyOwner newOwner, PropertyType newType, Util::String const& newName, Scope newScope,
                     void* newDefault)
    : name(newName), type(newType), scope(newScope) {
    owner = newOwner;
    if (newDefault == nullptr) {
        return;
    }
    if (newType == VALUE) {
        value = Datum::Read<float>(newDefault);
    } else if (newType == VECTOR) {
        vector = Datum::Read<Math::Vec3>(newDefault);
    } else if (newType == FIXEDSIZEDATA) {
        defaultData = newDefault;
    }
}

void Parameter::MakeMemberInputParameter(PropertyType newType, Util::String const& newName, int newOffset) {
    type = newType;
    name = newName;
    dataOffset = newOffset;
}

void Parameter::MakeConstantValueInputParameter(Util::String const& newName, float newValue) {
    type = VALUE;
    name = newName;
    value = newValue;
}

void Parameter::MakeConstantVectorInputParameter(Util::String const& newName, Math::Vec3 newVector) {
    type = VECTOR;
    name = newName;
    vector = newVector;
}

void Parameter::MakeBehaviourParameter(Util::String const& newName) {
    name = newName;
    type = BEHAVIOUR;
    owner = POOL;
}

void Parameter::MakePropertyCreationParameter(PropertyType newType, Util::String const& newName, bool intrinsic) {
    type = newType;
    name = newName;
    scope = intrinsic ? SHARED_INTRINSIC : VISIBLE;
}

void Parameter::MakeBehaviourInterfaceParameter(PropertyOwner newOwner, PropertyType newType,
                                                Util::String const& newName, Scope newScope) {
    type = newType;
    owner = newOwner;
    name = newName;
    value = 0.0f;
    scope = newScope;
    vector = Math::Vec3();
}

void Parameter::MakeInputParameter(PropertyType newType, Util::String const& newName, float newValue,
                                   Math::Vec3 newVector, int newOffset) {
    type = newType;
    name = newName;
    value = newValue;
    vector = newVector;
    dataOffset = newOffset;
}

} // namespace Gentra
