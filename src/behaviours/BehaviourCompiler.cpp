// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// From links to fast parameters.

#include "gentra/behaviours/Behaviour.h"

#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/util/GlobalMessageManager.h"

namespace Gentra {

using PropertyPtr = Util::RefCountPtr<Property>;

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
        } else if (auto* const selections = dynamic_cast<MemberSelectionProperty*>(linkedProperties[i].Get())) {
            compiledSelections.resize(MAX_PARAMETERS);
            compiledSelections[i] = selections->Watch();
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
    if (linked.GetPropertyType() != parameter.GetPropertyType()) {
        GlobalMessageManager::OutputMessage("Error :: Compiler :: Behaviour \"%s\" :: PropertyType Mismatch",
                                            name.c_str());
        return false;
    }
    // A property that a pool refused has no place in any record.
    if (parameter.GetPropertyOwner() != POOL && linked.GetPropertyOwner() == MEMBER && linked.GetDataOffset() < 0) {
        GlobalMessageManager::OutputMessage(
            "Error :: Compiler :: Behaviour \"%s\" :: Member Property without a place in "
            "the Members linked to Parameter \"%s\"",
            name.c_str(), parameter.GetName().c_str());
        return false;
    }
    return CompileOwner(parameter, linked);
}

/// The part of it that depends on what the parameter may be linked to.
bool Behaviour::CompileOwner(Parameter const& parameter, Property const& linked) {
    Basic_Parameter& fast = fastParams[parameter.GetLinkIndex()];
    PropertyOwner const linkedOwner = linked.GetPropertyOwner();
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

} // namespace Gentra
