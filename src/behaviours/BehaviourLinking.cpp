// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The links of a behaviour: setting them, dropping them, and which intrinsic ones are missing.

#include "gentra/behaviours/Behaviour.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>

namespace Gentra {

using PropertyPtr = Util::RefCountPtr<Property>;

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
}

/// How many parameters have a link at their position: all, unless the interface was cleared or declared anew.
std::size_t Behaviour::NumLinkedParameters() const noexcept {
    return std::min(linkedProperties.size(), parameterInterface.size());
}

/// For construction behaviours, which keep their links when a pool is cleared. An intrinsic property that is in no pool
/// (any more) must give its place to a new one. One that gave way to another of its name also is in no pool, but still
/// a pool property, and stays.
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

} // namespace Gentra
