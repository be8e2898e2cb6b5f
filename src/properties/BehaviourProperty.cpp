// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/BehaviourProperty.h"

#include "gentra/properties/Datum.h"

// Upward: a trigger runs a behaviour.
#include "gentra/behaviours/Behaviour.h"

namespace Gentra {

BehaviourProperty::BehaviourProperty() : BehaviourProperty("Behaviour Property") {}

BehaviourProperty::BehaviourProperty(std::string const& newName) {
    Init(newName);
}

BehaviourProperty::BehaviourProperty(char const* newName) {
    Init(Util::String(newName));
}

void BehaviourProperty::Init(std::string const& newName) {
    name = newName;
    type = BEHAVIOUR;
    behaviour = nullptr;
}

void* BehaviourProperty::GetPoolData() {
    return &behaviour;
}

void BehaviourProperty::SetPoolData(void* data) {
    if (data != nullptr) {
        behaviour = Datum::Read<Behaviour*>(data);
    }
}

int BehaviourProperty::GetDataSize() const {
    return sizeof(Behaviour*);
}

PropertyType BehaviourProperty::GetPropertyType() {
    return BEHAVIOUR;
}

void BehaviourProperty::TriggerBehaviour() {
    if (behaviour != nullptr) {
        behaviour->Trigger(); // last: it may set another one, or destroy this property
    }
}

} // namespace Gentra
