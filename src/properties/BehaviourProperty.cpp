// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/BehaviourProperty.h"

#include "gentra/properties/Datum.h"

// Upward: triggering runs a behaviour on its pool.
#include "gentra/behaviours/Behaviour.h"
#include "gentra/pools/MemberPool.h"

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
    Behaviour* const triggered = behaviour; // the trigger may set another one, or destroy this property
    if (triggered == nullptr || triggered->TriggerLiveBehaviour()) {
        return;
    }
    MemberPool* const pool = triggered->GetOwnerPool();
    if (pool == nullptr) {
        return;
    }
    if (pool->IsActiveMemberValid()) {
        pool->ApplyPassiveBehaviourOnActiveMember(*triggered);
    } else {
        pool->ApplyPassiveBehaviour(*triggered);
        pool->ClearActiveMember();
    }
}

} // namespace Gentra
