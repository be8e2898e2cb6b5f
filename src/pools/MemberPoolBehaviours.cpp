// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The behaviours of a pool: linking them, and the properties that the pool makes for their intrinsic parameters.

#include "gentra/pools/MemberPool.h"

#include "MemberPropertyTable.h"
#include "PropertyTable.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/properties/PropertyFactory.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace Gentra {

using BehaviourPtr = Util::RefCountPtr<Behaviour>;
using PropertyPtr = Util::RefCountPtr<Property>;

// Linking.

void MemberPool::LinkActiveBehaviour(BehaviourPtr const& behaviour) {
    LinkOwnedBehaviour(behaviour, activeBehaviours);
}

void MemberPool::LinkPassiveBehaviour(BehaviourPtr const& behaviour) {
    LinkOwnedBehaviour(behaviour, passiveBehaviours);
}

void MemberPool::LinkMemberConstructionBehaviour(BehaviourPtr const& behaviour) {
    LinkConstructionBehaviour(behaviour, memberConstructionBehaviours);
}

void MemberPool::LinkPoolConstructionBehaviour(BehaviourPtr const& behaviour) {
    LinkConstructionBehaviour(behaviour, poolConstructionBehaviours);
}

void MemberPool::LinkOwnedBehaviour(BehaviourPtr const& behaviour, BehaviourList& behaviours) {
    if (!CanLink(behaviour)) {
        return;
    }
    if (MemberPool const* const owner = behaviour->GetOwnerPool()) {
        GlobalMessageManager::OutputMessage(
            "Error :: PoolConstruction :: The Pool \"%s\" cannot use the Behaviour \"%s\", "
            "because it's already linked to the Pool \"%s\"",
            name.c_str(), behaviour->GetName().c_str(), owner->GetName().c_str());
        return;
    }
    Take(behaviour, behaviours);
    behaviour->SetOwnerPool(this);
    AssimilateIntrinsicPropertiesOfBehaviour(behaviour);
}

void MemberPool::LinkConstructionBehaviour(BehaviourPtr const& behaviour, BehaviourList& behaviours) {
    if (!CanLink(behaviour)) {
        return;
    }
    // Links that were made in a layout that has gone give way to new ones. An active or passive behaviour has lost all
    // its links with the layout.
    behaviour->DropStaleIntrinsicLinks();
    Take(behaviour, behaviours);
    AssimilateIntrinsicPropertiesOfBehaviour(behaviour);
}

/// From now on the behaviour knows those who share it, so that it can be held while it runs.
void MemberPool::Take(BehaviourPtr const& behaviour, BehaviourList& behaviours) {
    behaviours.push_back(behaviour);
    behaviour->sharedCount = &behaviour.GetBlock();
}

/// False for what is no behaviour and while the pool is cleared.
bool MemberPool::CanLink(BehaviourPtr const& behaviour) const {
    return behaviour.Get() != nullptr && behaviour != Behaviour::NIL && !RefuseWhileClearing();
}

// Looking them up.

std::vector<BehaviourPtr> MemberPool::GetAllBehaviours() const {
    BehaviourList all;
    for (BehaviourList const* const behaviours :
         {&activeBehaviours, &passiveBehaviours, &memberConstructionBehaviours, &poolConstructionBehaviours}) {
        all.insert(all.end(), behaviours->begin(), behaviours->end());
    }
    return all;
}

BehaviourPtr MemberPool::GetBehaviourByName(Util::String const& behaviourName) const {
    for (BehaviourList const* const behaviours :
         {&activeBehaviours, &passiveBehaviours, &memberConstructionBehaviours, &poolConstructionBehaviours}) {
        for (BehaviourPtr const& behaviour : *behaviours) {
            if (behaviour->GetName() == behaviourName) {
                return behaviour;
            }
        }
    }
    return Behaviour::NIL;
}

// Intrinsic parameters.

void MemberPool::AssimilateIntrinsicPropertiesOfBehaviour(BehaviourPtr const& linked) {
    BehaviourPtr const behaviour = linked; // a listener may let go of it
    std::vector<Parameter*> parameters;
    std::vector<PropertyPtr> properties;

    behaviour->GetUnlinkedIntrinsicPoolParams(parameters);
    if (!AddPropertiesFromIntrinsicParameters(parameters, properties)) {
        return;
    }
    behaviour->LinkIntrinsicPropertiesToInterface(properties);

    behaviour->GetUnlinkedIntrinsicMemberParams(parameters);
    if (AddPropertiesFromIntrinsicParameters(parameters, properties)) {
        behaviour->LinkIntrinsicPropertiesToInterface(properties);
    }
}

/// False when a listener has destroyed or cleared the pool meanwhile.
bool MemberPool::AddPropertiesFromIntrinsicParameters(std::vector<Parameter*>& parameters,
                                                      std::vector<PropertyPtr>& properties) {
    properties.clear();
    Util::WeakPtr<MemberPool> const self = GetWeakPtr();
    std::uint64_t const oldGeneration = generation;
    // Copies: a listener may make the behaviour drop its interface.
    std::vector<Parameter> wanted;
    wanted.reserve(parameters.size());
    for (Parameter const* const parameter : parameters) {
        wanted.push_back(*parameter);
    }
    for (Parameter const& parameter : wanted) {
        PropertyPtr const existing = FindSharedProperty(parameter);
        if (existing == Property::NIL) {
            properties.push_back(AddIntrinsicProperty(parameter));
        } else if (existing->IsIntrinsic()) {
            properties.push_back(existing);
        } else {
            GlobalMessageManager::OutputMessage(
                "Error: A Property called '%s' is already internally used by a behaviour, "
                "please use a different name for this Property",
                existing->GetName().c_str());
            constructionFailed = true;
            return true;
        }
        if (self.Get() == nullptr || generation != oldGeneration) {
            return false;
        }
    }
    return true;
}

/// The property that a shared intrinsic parameter finds under its name, or Property::NIL.
PropertyPtr MemberPool::FindSharedProperty(Parameter const& parameter) const {
    if (!parameter.IsSharedIntrinsic()) {
        return Property::NIL;
    }
    switch (parameter.GetPropertyOwner()) {
    case POOL:
        return poolProperties->FindByName(parameter.GetName());
    case MEMBER:
        return memberProperties->Properties().FindByName(parameter.GetName());
    default:
        GlobalMessageManager::OutputMessage("Error: An Intrinsic Parameter of a Behaviour could not be added to the "
                                            "MemberPool, because it's type is neither MEMBER nor POOL");
        return Property::NIL;
    }
}

/// Makes and adds the property of an intrinsic parameter. Property::NIL, with a message, when it cannot be
/// made.
///
/// When the pool keeps an intrinsic property of the same name instead, the result is still the new one: its
/// behaviour then has a property of its own.
PropertyPtr MemberPool::AddIntrinsicProperty(Parameter const& parameter) {
    bool const nameIsTaken = parameter.IsUniqueIntrinsic() && GetPropertyFromName(parameter.GetName()) != Property::NIL;
    PropertyPtr const created =
        PropertyFactory::CreateProperty(nameIsTaken ? GetUniqueNameParam(parameter) : parameter);
    if (created == Property::NIL) {
        GlobalMessageManager::OutputMessage(
            "Error: PropertyFactory could not build the intrinsic property for a behaviour");
        return Property::NIL;
    }
    // Before the property is added: adding announces it under its ID.
    AssignDefaultPropertyID(*created);
    switch (created->GetPropertyOwner()) {
    case POOL:
        AddPoolProperty(created);
        return created;
    case MEMBER:
        AddMemberProperty(created);
        return created;
    default:
        GlobalMessageManager::OutputMessage("Error: An Intrinsic Parameter of a Behaviour could not be added to the "
                                            "MemberPool, because it's type is neither MEMBER nor CONSTANT");
        return Property::NIL;
    }
}

namespace {

/// Whether the text is nothing, or an underscore and a number as "_%u" writes it.
bool IsUniqueSuffix(std::string_view suffix) {
    if (suffix.empty()) {
        return true;
    }
    if (suffix.front() != '_' || suffix.size() < 2) {
        return false;
    }
    suffix.remove_prefix(1);
    bool const superfluousZero = suffix.front() == '0' && suffix.size() > 1;
    std::uint32_t number = 0;
    auto const result = std::from_chars(suffix.data(), suffix.data() + suffix.size(), number);
    return !superfluousZero && result.ec == std::errc() && result.ptr == suffix.data() + suffix.size();
}

} // namespace

Parameter MemberPool::GetUniqueNameParam(Parameter parameter) const {
    std::string_view const base = parameter.GetName();
    auto const counts = [&](PropertyPtr const& property) {
        std::string_view const candidate = property->GetName();
        return candidate.starts_with(base) && IsUniqueSuffix(candidate.substr(base.size()));
    };
    std::ptrdiff_t count = 0;
    for (PropertyTable const* const table : Tables()) {
        count += std::count_if(table->All().begin(), table->All().end(), counts);
    }
    if (count > 0) {
        parameter.SetName(parameter.GetName() + "_" + std::to_string(count));
    }
    return parameter;
}

// Selections.

void MemberPool::SetBasePoolsForMemberSelections() {
    for (PropertyTable const* const table : Tables()) {
        for (PropertyPtr const& property : table->All()) {
            auto* const selections = property->GetPropertyType() == MEMBERSELECTION
                                         ? dynamic_cast<MemberSelectionProperty*>(property.Get())
                                         : nullptr;
            if (selections != nullptr) {
                selections->SetBasePoolFromID();
            }
        }
    }
}

} // namespace Gentra
