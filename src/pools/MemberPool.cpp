// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/MemberPool.h"

#include "MemberPropertyTable.h"
#include "PropertyTable.h"

#include "../util/FirstException.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/properties/PropertyFactory.h"
#include "gentra/util/Event.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace Gentra {

using PropertyPtr = Util::RefCountPtr<Property>;

// The event types are defined with the other load-time statics, in LoadTimeStatics.cpp.

namespace {

constexpr int ENTERS = 0;
constexpr int LEAVES = 1;

constinit unsigned int identitiesGiven = 0;
constinit std::uint64_t generationsGiven = 0;

int NextIdentity() {
    if (static_cast<int>(identitiesGiven) == -1) { // the wildcard of event types
        ++identitiesGiven;
    }
    return static_cast<int>(identitiesGiven++);
}

void AppendNames(std::vector<PropertyPtr> const& properties, std::vector<Util::String>& out) {
    for (PropertyPtr const& property : properties) {
        out.push_back(property->GetName());
    }
}

} // namespace

// Construction and identity.

MemberPool::MemberPool(Context& newContext)
    : MemberSelection(nullptr), context(newContext), memberProperties(std::make_unique<MemberPropertyTable>()),
      poolProperties(std::make_unique<PropertyTable>()), identity(NextIdentity()), generation(++generationsGiven) {
    SetBasePool(this);
    try {
        GlobalEventManager::Trigger(Util::Event(EVENT_CREATED, 0, 0, this));
    } catch (...) {
        Util::FirstException ignored; // the other one is on its way
        End(ignored);
        throw;
    }
}

MemberPool::MemberPool(MemberPool const& other)
    : MemberSelection(nullptr), context(other.context), memberProperties(std::make_unique<MemberPropertyTable>()),
      poolProperties(std::make_unique<PropertyTable>(*other.poolProperties)), activeBehaviours(other.activeBehaviours),
      passiveBehaviours(other.passiveBehaviours), memberConstructionBehaviours(other.memberConstructionBehaviours),
      poolConstructionBehaviours(other.poolConstructionBehaviours), compiled(other.compiled),
      constructionFailed(other.constructionFailed), poolID(other.poolID), name(other.name), lapTimer(other.lapTimer),
      performanceStats(other.performanceStats), singleMemberUpdateIndex(other.singleMemberUpdateIndex),
      identity(NextIdentity()), generation(++generationsGiven), announced(false) {
    memberProperties->CopyLayout(*other.memberProperties);
    SetBasePool(this);
}

MemberPool::~MemberPool() {
    assert(uses == 0 && "a pool is destroyed by a behaviour, a property or a functor that it is running");
    Util::FirstException exception;
    End(exception);
    if (exception.HasOccurred()) {
        GlobalMessageManager::OutputMessage(
            "Error :: MemberPool :: An exception was thrown while the Pool \"%s\" was destroyed", name.c_str());
    }
}

MemberPool* MemberPool::Find(Util::ShortID id) {
    return ContextManager::GetMainContext().GetMemberPoolFromID(id);
}

bool MemberPool::SetNewMemberPoolID(Util::ShortID id) {
    Context& mainContext = ContextManager::GetMainContext();
    if (mainContext.GetMemberPoolFromID(id) != nullptr) {
        return false;
    }
    if (announced) {
        mainContext.ChangeMemberPoolID(poolID, id, *this);
    }
    poolID = id;
    return true;
}

// Properties.

/// Announces the property and adds it, unless a listener has destroyed the pool. Where a listener throws, or memory
/// runs out, those who heard of it are told that it has left.
template<class Add>
void MemberPool::Enter(PropertyPtr const& property, Add const& add) {
    Util::WeakPtr<MemberPool> const self = GetWeakPtr();
    try {
        TriggerPropertyEvent(property, "MemberPool", ENTERS);
        if (self.Get() != nullptr) {
            add();
        }
    } catch (...) {
        Util::FirstException ignored; // the other one is on its way
        if (self.Get() != nullptr) {
            ignored.During([&] { TriggerPropertyEvent(property, "MemberPool", LEAVES); });
        }
        throw;
    }
}

PropertyPtr const& MemberPool::AddMemberProperty(PropertyPtr property) {
    if (!CanEnter(property)) {
        return Property::NIL;
    }
    if (property->IsSharedIntrinsic()) {
        PropertyPtr const& existing = memberProperties->Properties().FindIntrinsicByName(property->GetName());
        if (existing != Property::NIL) {
            return existing;
        }
    }
    if (!AcceptsMemberProperty(*property)) {
        return Property::NIL;
    }
    Enter(property, [&] {
        if (!AcceptsMemberProperty(*property)) { // a listener has created members
            TriggerPropertyEvent(property, "MemberPool", LEAVES);
            return;
        }
        memberProperties->Add(property);
        property->SetPropertyOwner(MEMBER);
        property->SetOwnerPool(this);
    });
    return Property::NIL;
}

PropertyPtr const& MemberPool::AddPoolProperty(PropertyPtr property) {
    if (!CanEnter(property)) {
        return Property::NIL;
    }
    if (property->IsIntrinsic()) {
        PropertyPtr const& existing = poolProperties->FindIntrinsicByName(property->GetName());
        if (existing != Property::NIL) {
            return existing;
        }
    }
    Enter(property, [&] {
        poolProperties->Insert(property);
        property->SetOwnerPool(this);
        property->SetPropertyOwner(POOL);
    });
    return Property::NIL;
}

/// False for what is no property and while the pool is cleared; reports one that is taken from another pool.
bool MemberPool::CanEnter(PropertyPtr const& property) const {
    if (property.Get() == nullptr || property == Property::NIL || RefuseWhileClearing()) {
        return false;
    }
    if (property->GetOwnerPool() != nullptr && property->GetOwnerPool() != this) {
        GlobalMessageManager::OutputMessage("Error: Property already used by another pool!");
    }
    return true;
}

/// Whether the layout still takes the property. One that is refused stays a member property, but without a
/// place: no behaviour linked to it gets ready.
bool MemberPool::AcceptsMemberProperty(Property& property) const {
    bool const hasRecords = memberProperties->HasRecords();
    if (!hasRecords && memberProperties->HasRoomFor(property.GetDataSize())) {
        return true;
    }
    if (property.GetOwnerPool() == nullptr) {
        property.SetPropertyOwner(MEMBER);
        property.SetDataOffset(-1);
    }
    GlobalMessageManager::OutputMessage(
        "Error :: Construction :: The Property \"%s\" could not be added to the Pool \"%s\", because %s",
        property.GetName().c_str(), name.c_str(),
        hasRecords ? "the Pool already has Members" : "its DataSize does not fit into a Member");
    return false;
}

/// Reports an attempt of a listener to fill the pool again while it is being emptied.
void MemberPool::ReportClearing() const {
    GlobalMessageManager::OutputMessage(
        "Error :: Construction :: Nothing can be added to the Pool \"%s\" while it is cleared", name.c_str());
}

PropertyPtr MemberPool::MakeProperty(Parameter const& parameter, Util::ShortID id) const {
    PropertyPtr const property = PropertyFactory::CreateProperty(parameter);
    if (property != Property::NIL) {
        if (id == 0) {
            AssignDefaultPropertyID(*property);
        } else {
            property->SetPropertyID(id);
        }
    }
    return property;
}

void MemberPool::CreateMemberPropertyFromParameter(Parameter const& parameter, Util::ShortID id) {
    AddMemberProperty(MakeProperty(parameter, id));
}

void MemberPool::CreatePoolPropertyFromParameter(Parameter const& parameter, Util::ShortID id) {
    AddPoolProperty(MakeProperty(parameter, id));
}

void MemberPool::AssignDefaultPropertyID(Property& property) const {
    property.SetPropertyID(static_cast<int>(property.GetName().Hash()) ^ poolID);
}

PropertyPtr MemberPool::GetPropertyByID(Util::ShortID id) const {
    PropertyPtr const& found = poolProperties->FindByID(id);
    return found != Property::NIL ? found : memberProperties->Properties().FindByID(id);
}

PropertyPtr MemberPool::GetPropertyFromName(Util::String const& propertyName) const {
    PropertyPtr const& found = poolProperties->FindByName(propertyName);
    return found != Property::NIL ? found : memberProperties->Properties().FindByName(propertyName);
}

int MemberPool::GetDataOffsetFromPropertyName(Util::String const& propertyName) const {
    PropertyTable::Properties const& properties = memberProperties->Properties().All();
    auto const found = std::find_if(properties.begin(), properties.end(),
                                    [&](PropertyPtr const& property) { return property->GetName() == propertyName; });
    if (found == properties.end()) {
        return -1;
    }
    return memberProperties->Places()[static_cast<std::size_t>(found - properties.begin())].offset;
}

std::array<PropertyTable const*, 2> MemberPool::Tables() const noexcept {
    return {poolProperties.get(), &memberProperties->Properties()};
}

std::vector<PropertyPtr> MemberPool::GetAllProperties() const {
    std::vector<PropertyPtr> all;
    for (PropertyTable const* const table : Tables()) {
        all.insert(all.end(), table->All().begin(), table->All().end());
    }
    return all;
}

std::vector<PropertyPtr> MemberPool::GetAllMemberProperties() const {
    PropertyTable::Properties const& ofMembers = memberProperties->Properties().All();
    return {ofMembers.begin(), ofMembers.end()};
}

void MemberPool::GetAllPropertiesOfCertainType(std::vector<PropertyPtr>& out, PropertyType type) const {
    out.clear();
    for (PropertyPtr const& property : GetAllProperties()) {
        if (property->GetPropertyType() == type) {
            out.push_back(property);
        }
    }
}

void MemberPool::GetAllPropertiesOfCertainTypeByName(std::vector<Util::String>& out, PropertyType type) const {
    std::vector<PropertyPtr> properties;
    GetAllPropertiesOfCertainType(properties, type);
    out.clear();
    AppendNames(properties, out);
}

void MemberPool::GetAllValuePropertiesByName(std::vector<Util::String>& out) const {
    GetAllPropertiesOfCertainTypeByName(out, VALUE);
}

void MemberPool::GetAllVectorPropertiesByName(std::vector<Util::String>& out) const {
    GetAllPropertiesOfCertainTypeByName(out, VECTOR);
}

void MemberPool::GetAllMemberSelectionPropertiesByName(std::vector<Util::String>& out) const {
    GetAllPropertiesOfCertainTypeByName(out, MEMBERSELECTION);
}

void MemberPool::GetDefaultProperties(std::vector<PropertyPtr>& out) const {
    PropertyTable::Properties const& ofMembers = memberProperties->Properties().All();
    out.assign(ofMembers.begin(), ofMembers.begin() + std::min<std::ptrdiff_t>(std::ssize(ofMembers), 2));
}

/// Triggers the leaving events of a table, which nothing enters meanwhile. False when a listener has destroyed the
/// pool.
bool MemberPool::AnnounceLeaving(PropertyTable::Properties const& table, char const* subName,
                                 Util::FirstException& exception) noexcept {
    Util::WeakPtr<MemberPool> const self = GetWeakPtr();
    for (std::size_t i = 0; self.Get() != nullptr && i < table.size(); ++i) {
        exception.During([&] { TriggerPropertyEvent(table[i], subName, LEAVES); });
    }
    return self.Get() != nullptr;
}

void MemberPool::TriggerPropertyEvent(PropertyPtr property, char const* subName, int param1) {
    if (announced) {
        GlobalEventManager::Trigger(
            Util::Event(Util::EventType(Property::EVENT, subName, identity), param1, 0, &property));
    }
}

// Building.

void MemberPool::InitializeMemberPool() {
    if (IsInUse()) {
        GlobalMessageManager::OutputMessage(
            "Error :: Construction :: The Pool \"%s\" can not be initialized while it is in use", name.c_str());
        return;
    }
    if (clearing) { // by a listener of the clearing itself
        return;
    }
    Util::FirstException exception;
    Clearing(exception);
    exception.ThrowOn();
}

/// Ends all that is in the pool. Listeners hear of it outside any use, so one of them may destroy the pool; destructors
/// run inside a use.
void MemberPool::Clearing(Util::FirstException& exception) noexcept {
    clearing = true;
    generation = ++generationsGiven;
    compiled = false;
    constructionFailed = false;
    Clear();
    ClearBehaviours(activeBehaviours);
    ClearBehaviours(passiveBehaviours);

    if (!AnnounceLeaving(poolProperties->All(), "Deleted", exception)) {
        return;
    }
    {
        Use const use(*this);
        poolProperties->Clear(*this);
    }
    if (!AnnounceLeaving(memberProperties->Properties().All(), "MemberPool", exception)) {
        return;
    }
    {
        // Taken out of the lists first: the last reference may run a host's destructor.
        Use const use(*this);
        for (BehaviourList* const behaviours :
             {&activeBehaviours, &passiveBehaviours, &memberConstructionBehaviours, &poolConstructionBehaviours}) {
            BehaviourList const leaving = std::exchange(*behaviours, {});
        }
        memberProperties->Clear(*this);
    }
    Clear(); // whatever listeners have listed meanwhile
    clearing = false;
}

/// Clears the pool for good and tells of its end.
void MemberPool::End(Util::FirstException& exception) noexcept {
    Clearing(exception);
    clearing = true;
    if (announced) {
        exception.During([this] { GlobalEventManager::Trigger(Util::Event(EVENT_DELETED, 0, 0, this)); });
    }
    Clear(); // whatever listeners have listed meanwhile
}

/// A copied pool shares its behaviours with the pool that owns them, and lets them be.
void MemberPool::ClearBehaviours(BehaviourList& behaviours) noexcept {
    if (!announced) {
        return;
    }
    Use const use(*this);
    for (std::size_t i = 0; i < behaviours.size(); ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = behaviours[i];
        behaviour->ClearBehaviour();
    }
}

void MemberPool::CompileMemberPool() {
    if (RefuseWhileClearing()) {
        return;
    }
    if (constructionFailed) {
        GlobalMessageManager::OutputMessage("Error :: MemberPoolCompilation :: due to errors during the construction "
                                            "phase the pool \"%s\" will not get compiled",
                                            name.c_str());
        return;
    }
    for (Util::RefCountPtr<Behaviour> const& behaviour : GetAllBehaviours()) {
        behaviour->PushLinkedParamsToFastParams();
    }
    InitPoolProperties();
    compiled = true;
}

void MemberPool::InitPoolProperties() {
    Use const use(*this);
    for (std::size_t i = 0; i < poolProperties->All().size(); ++i) {
        PropertyPtr const property = poolProperties->All()[i];
        property->OnInstanceCreation(static_cast<unsigned char*>(property->GetPoolData()));
    }
}

} // namespace Gentra
