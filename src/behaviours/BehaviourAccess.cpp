// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// What a behaviour reads and writes while it runs, as far as it takes more than a fast parameter.

#include "gentra/behaviours/Behaviour.h"

#include "gentra/pools/Context.h"
#include "gentra/pools/MemberPool.h"
#include "gentra/properties/BehaviourProperty.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <cstring>

namespace Gentra {

using PropertyPtr = Util::RefCountPtr<Property>;

void const* Behaviour::PropertyDatum(int index) const {
    return LinkedProperty(index).GetData();
}

/// Where the record of `member` holds the datum, if that is known to be so; else some zeros, which nobody reads again.
unsigned char* Behaviour::CheckedMemberDatum(int index, std::size_t size) const {
    Basic_Parameter const& parameter = FastParam(index);
    Property const& linked = LinkedProperty(index);
    MemberPool const* const pool = linked.GetOwnerPool();
    if (pool != nullptr && pool->HasMember(member) &&
        pool->HasDatum(parameter.dataOffset, linked.GetDataSize(), VALUE)) {
        return member.record + parameter.dataOffset;
    }
    auto const slot = static_cast<std::size_t>(index);
    GlobalMessageManager::OutputMessageOnce(
        "Error :: PoolProcessing :: The Behaviour \"%s\" uses a Member that is not of the Pool of its Parameter \"%s\"",
        name.c_str(), slot < parameterInterface.size() ? parameterInterface[slot]->GetName().c_str() : "");
    std::vector<MemberPool*> pools;
    context->GetAllMemberPools(pools);
    for (MemberPool const* const other : pools) {
        if (other->HasMember(member) && other->HasDatum(parameter.dataOffset, static_cast<int>(size), VALUE)) {
            return member.record + parameter.dataOffset;
        }
    }
    static unsigned char nowhere[sizeof(Math::Vec3) + sizeof(void*)];
    std::memset(nowhere, 0, sizeof nowhere);
    return nowhere;
}

template<class T>
void Behaviour::WriteFlexible(int index, T Basic_Parameter::*constant, T newDatum) {
    switch (FastParam(index).owner) {
    case POOL:
        fastParams[index].*constant = newDatum;
        break;
    case MEMBER:
        Datum::Write(MemberDatum(index, sizeof newDatum), newDatum);
        break;
    default:
        LinkedProperty(index).SetData(&newDatum);
    }
}

void Behaviour::WriteFlexibleValue(int index, float newValue) {
    WriteFlexible(index, &Basic_Parameter::value, newValue);
}

void Behaviour::WriteFlexibleVec3(int index, Math::Vec3 newVector) {
    WriteFlexible(index, &Basic_Parameter::vector, newVector);
}

MemberSelection& Behaviour::UseFlexibleConstMemberSelection(int index) {
    auto* const selection = PropertyDatumOr<MemberSelection*>(index, nullptr);
    return selection != nullptr ? *selection : NoSelection();
}

MemberSelection& Behaviour::NoSelection() {
    // Without a base pool nobody can add members to it.
    static MemberSelection& none = *new MemberSelection(nullptr);
    return none;
}

void Behaviour::TriggerFlexibleBehaviour(int index) {
    assert(index >= 0 && static_cast<std::size_t>(index) < linkedProperties.size());
    PropertyPtr const linked = linkedProperties[static_cast<std::size_t>(index)]; // held while it triggers
    if (auto* const trigger = dynamic_cast<BehaviourProperty*>(linked.Get())) {
        trigger->TriggerBehaviour();
    }
}

Member Behaviour::UseMemberInSelection(MemberSelection& selection, int index) {
    return selection.GetMemberByIndex(index);
}

// Lookups.

namespace {

Property* FindInPool(MemberPool const* pool, Util::String const& propertyName) {
    if (pool == nullptr) {
        return nullptr;
    }
    PropertyPtr const found = pool->GetPropertyFromName(propertyName);
    return found != Property::NIL ? found.Get() : nullptr;
}

} // namespace

Property* Behaviour::GetPropertyByName(Util::String const& propertyName, MemberSelection& selection) {
    return FindInPool(selection.GetBasePool(), propertyName);
}

Property* Behaviour::GetPropertyByName(Util::String const& propertyName, unsigned int index) const {
    if (index >= compiledSelections.size()) {
        return nullptr;
    }
    // The fast parameter does not own its property, which may have gone since: only one that is known to be there is
    // asked.
    Property const* const asked = fastParams[index].property;
    MemberSelectionProperty* selections = compiledSelections[index];
    if (asked != selections) {
        auto const linked = std::find_if(linkedProperties.begin(), linkedProperties.end(),
                                         [&](PropertyPtr const& link) { return link.Get() == asked; });
        selections = linked != linkedProperties.end() ? dynamic_cast<MemberSelectionProperty*>(linked->Get()) : nullptr;
    }
    return selections != nullptr ? FindInPool(selections->GetBasePool(), propertyName) : nullptr;
}

SpatialOrganizer& Behaviour::GetSpatialOrganizer(MemberSelection& selection) const {
    return context->GetSpatialRelations().GetSpatialOrganizer(selection);
}

} // namespace Gentra
