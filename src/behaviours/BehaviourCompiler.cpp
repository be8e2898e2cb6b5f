// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Linking properties to a behaviour's interface, compiling the links, and the accessors that need more than a
// fast parameter.

#include "gentra/behaviours/Behaviour.h"

#include "gentra/pools/Context.h"
#include "gentra/pools/MemberPool.h"
#include "gentra/properties/BehaviourProperty.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>

namespace Gentra {

using PropertyPtr = Util::RefCountPtr<Property>;

// Linking.

bool Behaviour::LinkPropertyToInterface(PropertyPtr const& property, int linkIndex) {
    if (property.Get() == nullptr) {
        return false;
    }
    // A cleared interface leaves more links than parameters.
    if (linkIndex < 0 || static_cast<std::size_t>(linkIndex) >= NumLinkedParameters()) {
        GlobalMessageManager::OutputMessage("Bug :: Construction :: Parameter \"%s\" could not be linked to Behaviour "
                                            "\"%s\", because the LinkPosition is not valid.",
                                            property->GetName().c_str(), name.c_str());
        return false;
    }
    auto const position = static_cast<std::size_t>(linkIndex);
    if (property->GetPropertyType() != parameterInterface[position]->GetPropertyType()) {
        GlobalMessageManager::OutputMessage(
            "Error :: Construction :: Parameter \"%s\" could not be linked to Behaviour "
            "\"%s\", because the PropertyType did not match the interface.",
            property->GetName().c_str(), name.c_str());
        return false;
    }
    linkedProperties[position] = property;
    return true;
}

bool Behaviour::LinkPropertyToVisibleInterface(PropertyPtr const& property, int visibleIndex) {
    if (property == Property::NIL) {
        return false;
    }
    if (visibleIndex < 0 || visibleIndex >= GetNumVisibleInterfaceLinks()) {
        GlobalMessageManager::OutputMessage("Error :: Construction :: Property could not be linked to the visible "
                                            "Interface of a Behaviour, because the LinkPosition is not valid.");
        return false;
    }
    return LinkPropertyToInterface(property, visibleInterface[static_cast<std::size_t>(visibleIndex)]->GetLinkIndex());
}

void Behaviour::LinkIntrinsicPropertiesToInterface(std::vector<PropertyPtr>& properties) {
    for (PropertyPtr const& property : properties) {
        if (property.Get() == nullptr || property == Property::NIL) {
            continue;
        }
        // A unique property may have been renamed, but keeps the link index of its parameter.
        int const linkIndex = property->IsUniqueIntrinsic() ? property->GetLinkIndex()
                                                            : GetLinkIndexFromPropertyName(property->GetName());
        LinkPropertyToInterface(property, linkIndex);
    }
}

void Behaviour::ClearLinkedParameters() {
    std::fill(linkedProperties.begin(), linkedProperties.end(), Property::NIL);
}

void Behaviour::ClearBehaviour() {
    ClearLinkedParameters();
    ownerPool = Util::WeakPtr<MemberPool>();
    ++timesCleared;
}

/// How many parameters have a link at their position: all, unless the interface was cleared or declared anew.
std::size_t Behaviour::NumLinkedParameters() const noexcept {
    return std::min(linkedProperties.size(), parameterInterface.size());
}

/// An intrinsic property is in no pool (any more) when the pool refused it, or was cleared after a
/// construction behaviour had been linked. A new one must take its place. One that gave way to another of its
/// name also is in no pool, but still a pool property, and stays.
void Behaviour::DropStaleIntrinsicLinks() {
    for (PropertyPtr& link : linkedProperties) {
        if (link->IsIntrinsic() && link->GetPropertyOwner() != POOL && link->GetOwnerPool() == nullptr) {
            link = Property::NIL;
        }
    }
}

// Intrinsic parameters.

void Behaviour::CollectUnlinkedIntrinsic(std::vector<Parameter*>& out, bool ofMembers) const {
    out.clear();
    for (std::size_t i = 0; i < NumLinkedParameters(); ++i) {
        Parameter* const record = parameterInterface[i];
        if (record->IsIntrinsic() && (record->GetPropertyOwner() == MEMBER) == ofMembers &&
            linkedProperties[i] == Property::NIL) {
            out.push_back(record);
        }
    }
}

void Behaviour::GetUnlinkedIntrinsicPoolParams(std::vector<Parameter*>& out) const {
    CollectUnlinkedIntrinsic(out, false);
}

void Behaviour::GetUnlinkedIntrinsicMemberParams(std::vector<Parameter*>& out) const {
    CollectUnlinkedIntrinsic(out, true);
}

void Behaviour::CollectUnlinkedIntrinsicNames(std::vector<Util::String>& out, PropertyType type) const {
    out.clear();
    for (bool const ofMembers : {false, true}) {
        std::vector<Parameter*> records;
        CollectUnlinkedIntrinsic(records, ofMembers);
        for (Parameter const* const record : records) {
            if (record->GetPropertyType() == type) {
                out.push_back(record->GetName());
            }
        }
    }
}

void Behaviour::GetUnlinkedIntrinsicValueParamsByName(std::vector<Util::String>& out) const {
    CollectUnlinkedIntrinsicNames(out, VALUE);
}

void Behaviour::GetUnlinkedIntrinsicVectorParamsByName(std::vector<Util::String>& out) const {
    CollectUnlinkedIntrinsicNames(out, VECTOR);
}

// Compiling.

bool Behaviour::PushLinkedParamsToFastParams() {
    disabled = false;
    if (linkedProperties.size() != parameterInterface.size()) {
        GlobalMessageManager::OutputMessage(
            "Error :: Compiler :: Program Bug! number of link parameters does not match "
            "the number of interface links");
        disabled = true;
        return false;
    }
    for (std::size_t i = 0; i < parameterInterface.size(); ++i) {
        Parameter const& parameter = *parameterInterface[i];
        if (linkedProperties[i] == Property::NIL) {
            GlobalMessageManager::OutputMessage("Error :: Compiler :: Behaviour \"%s\" :: Parameter \"%s\" not linked ",
                                                name.c_str(), parameter.GetName().c_str());
            disabled = true;
            break;
        }
        if (!CompileLink(parameter, *linkedProperties[i])) {
            disabled = true;
        }
    }
    GlobalMessageManager::OutputMessage(disabled ? "Error :: Compiler :: Behaviour \"%s\" :: Disabled"
                                                 : "Success :: Compiler :: Behaviour \"%s\" :: Linked Successfully!",
                                        name.c_str());
    return !disabled;
}

/// Fills the fast parameter of one link; false, with a message, when the property does not suit the
/// parameter.
bool Behaviour::CompileLink(Parameter const& parameter, Property& linked) {
    Basic_Parameter& fast = fastParams[parameter.GetLinkIndex()];
    PropertyOwner const linkedOwner = linked.GetPropertyOwner();

    if (linked.GetPropertyType() != parameter.GetPropertyType()) {
        GlobalMessageManager::OutputMessage("Error :: Compiler :: Behaviour \"%s\" :: PropertyType Mismatch",
                                            name.c_str());
        return false;
    }
    // A property that a pool refused has no place in any record.
    if (parameter.GetPropertyOwner() != POOL && linkedOwner == MEMBER && linked.GetDataOffset() < 0) {
        GlobalMessageManager::OutputMessage(
            "Error :: Compiler :: Behaviour \"%s\" :: Member Property without a place in "
            "the Members linked to Parameter \"%s\"",
            name.c_str(), parameter.GetName().c_str());
        return false;
    }
    switch (parameter.GetPropertyOwner()) {
    case POOL:
        if (linkedOwner != POOL && linkedOwner != FLEXIBLE) {
            GlobalMessageManager::OutputMessage("Error :: Compiler :: Behaviour \"%s\" :: Member Property linked to "
                                                "Constant Parameter \"%s\"",
                                                name.c_str(), parameter.GetName().c_str());
            return false;
        }
        fast.value = linked.value;
        fast.vector = linked.vector;
        fast.property = linked.property;
        fast.owner = POOL;
        return true;
    case MEMBER:
        if (linkedOwner != MEMBER) {
            GlobalMessageManager::OutputMessage(
                "Error :: Compiler :: Behaviour \"%s\" :: Non-Member Property linked to "
                "Member Parameter \"%s\"",
                name.c_str(), parameter.GetName().c_str());
            return false;
        }
        fast.dataOffset = linked.dataOffset;
        fast.property = linked.property;
        fast.owner = MEMBER;
        return true;
    case FLEXIBLE:
        fast = static_cast<Basic_Parameter const&>(linked);
        // The members of another pool have records of their own: the behaviour reads the datum of that pool's
        // active member through the property, as it does for a property in no pool.
        if (linkedOwner == MEMBER && ownerPool.Get() != nullptr && linked.GetOwnerPool() != ownerPool.Get()) {
            fast.owner = FLEXIBLE;
        }
        return true;
    }
    GlobalMessageManager::OutputMessage("Error :: Compiler :: Behaviour \"%s\" :: Parameter \"%s\" of the Parameter "
                                        "Interface has an invalid ParameterLinkType",
                                        name.c_str(), parameter.GetName().c_str());
    return false;
}

void Behaviour::FlushFastParams() {}

void Behaviour::UpdateProperties() {
    if (disabled) {
        return;
    }
    for (std::size_t i = 0; i < NumLinkedParameters(); ++i) {
        PropertyPtr const linked = linkedProperties[i];
        if (linked->GetPropertyOwner() == FLEXIBLE) {
            linked->Update();
        }
    }
}

void Behaviour::RefreshConstants() {
    if (disabled) {
        return;
    }
    for (std::size_t i = 0; i < NumLinkedParameters(); ++i) {
        Property const& linked = *linkedProperties[i];
        if (linked.GetPropertyOwner() == POOL) {
            fastParams[i].value = linked.value;
            fastParams[i].vector = linked.vector;
        }
    }
}

// Data access.

void const* Behaviour::PropertyDatum(int index) const {
    return LinkedProperty(index).GetData();
}

void Behaviour::WriteFlexibleValue(int index, float newValue) {
    switch (FastParam(index).owner) {
    case POOL:
        fastParams[index].value = newValue;
        break;
    case MEMBER:
        Datum::Write(MemberDatum(index), newValue);
        break;
    default:
        LinkedProperty(index).SetData(&newValue);
    }
}

void Behaviour::WriteFlexibleVec3(int index, Math::Vec3 newVector) {
    switch (FastParam(index).owner) {
    case POOL:
        fastParams[index].vector = newVector;
        break;
    case MEMBER:
        Datum::Write(MemberDatum(index), newVector);
        break;
    default:
        LinkedProperty(index).SetData(&newVector);
    }
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
    // Through the link, which keeps the property alive.
    if (index >= NumLinkedParameters() || fastParams[index].property == nullptr) {
        return nullptr;
    }
    auto* const selections = dynamic_cast<MemberSelectionProperty*>(linkedProperties[index].Get());
    return selections != nullptr ? FindInPool(selections->GetBasePool(), propertyName) : nullptr;
}

SpatialOrganizer& Behaviour::GetSpatialOrganizer(MemberSelection& selection) const {
    return context->GetSpatialRelations().GetSpatialOrganizer(selection);
}

} // namespace Gentra
