// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/MemberPool.h"

#include "MemberPropertyTable.h"
#include "PropertyTable.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/properties/PropertyFactory.h"
#include "gentra/util/Event.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Gentra {

using PropertyPtr = Util::RefCountPtr<Property>;

// The event types are defined with the other load-time statics, in LoadTimeStatics.cpp.

namespace {

constexpr int ENTERS = 0;
constexpr int LEAVES = 1;

constinit unsigned int identitiesGiven = 0;

int NextIdentity() {
    if (static_cast<int>(identitiesGiven) == -1) { // the wildcard of event types
        ++identitiesGiven;
    }
    return static_cast<int>(identitiesGiven++);
}

/// Copies a datum; the common sizes without a call.
void CopyDatum(unsigned char* datum, void const* source, int size) {
    if (size == sizeof(float)) {
        std::memcpy(datum, source, sizeof(float));
    } else if (size == sizeof(Math::Vec3)) {
        std::memcpy(datum, source, sizeof(Math::Vec3));
    } else {
        std::memcpy(datum, source, static_cast<std::size_t>(size));
    }
}

/// Whether the property's data still have the size of their place: a host may have assigned another property to it.
bool KeepsItsSize(MemberPropertyTable::Place const& place) {
    return place.property->GetDataSize() == place.size;
}

/// Gives a new member its datum of one property: the default and the property's instance work.
void CreateDatum(MemberPropertyTable::Place const& place, unsigned char* record) {
    unsigned char* const datum = record + place.offset;
    if (place.plainDefault != nullptr) {
        CopyDatum(datum, place.plainDefault, place.size);
        return;
    }
    bool const keepsItsSize = KeepsItsSize(place);
    if (void const* const defaultData = keepsItsSize ? place.property->GetPoolData() : nullptr) {
        CopyDatum(datum, defaultData, place.size);
    } else {
        std::memset(datum, 0, static_cast<std::size_t>(place.size));
    }
    if (keepsItsSize) {
        place.property->OnInstanceCreation(datum);
    }
}

/// Triggers an event that takes back another one whose delivery has thrown. A second exception changes nothing.
template<class Trigger>
void TriggerQuietly(Trigger const& trigger) noexcept {
    try {
        trigger();
    } catch (...) { // NOLINT(bugprone-empty-catch): the first exception is on its way
    }
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
      poolProperties(std::make_unique<PropertyTable>()), identity(NextIdentity()) {
    SetBasePool(this);
    try {
        GlobalEventManager::Trigger(Util::Event(EVENT_CREATED, 0, 0, this));
    } catch (...) {
        TriggerQuietly([&] { GlobalEventManager::Trigger(Util::Event(EVENT_DELETED, 0, 0, this)); });
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
      identity(NextIdentity()), announced(false) {
    memberProperties->CopyLayout(*other.memberProperties);
    SetBasePool(this);
}

MemberPool::~MemberPool() {
    clearing = false; // a listener may destroy the pool that is being cleared
    ClearPool();
    if (announced) {
        GlobalEventManager::Trigger(Util::Event(EVENT_DELETED, 0, 0, this));
    }
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
        if (self.Get() != nullptr) {
            TriggerQuietly([&] { TriggerPropertyEvent(property, "MemberPool", LEAVES); });
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

PropertyPtr MemberPool::FindPoolProperty(Util::String const& propertyName) const {
    return poolProperties->FindByName(propertyName);
}

PropertyPtr MemberPool::FindMemberProperty(Util::String const& propertyName) const {
    return memberProperties->Properties().FindByName(propertyName);
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

std::vector<PropertyPtr> MemberPool::GetAllProperties() const {
    PropertyTable::Properties const& ofPool = poolProperties->All();
    PropertyTable::Properties const& ofMembers = memberProperties->Properties().All();
    std::vector<PropertyPtr> all(ofPool.begin(), ofPool.end());
    all.insert(all.end(), ofMembers.begin(), ofMembers.end());
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

/// Triggers the leaving events of a table. Nothing enters it meanwhile, but a listener may destroy the pool.
void MemberPool::AnnounceLeaving(PropertyTable::Properties const& table, char const* subName) {
    Util::WeakPtr<MemberPool> const self = GetWeakPtr();
    for (std::size_t i = 0; self.Get() != nullptr && i < table.size(); ++i) {
        TriggerPropertyEvent(table[i], subName, LEAVES);
    }
}

void MemberPool::TriggerPropertyEvent(PropertyPtr property, char const* subName, int param1) {
    if (announced) {
        GlobalEventManager::Trigger(
            Util::Event(Util::EventType(Property::EVENT, subName, identity), param1, 0, &property));
    }
}

// Members.

Member MemberPool::CreateNewMember() {
    if (RefuseWhileClearing()) {
        return Member();
    }
    unsigned char* const record = memberProperties->TakeRecord();
    if (record == nullptr) {
        GlobalMessageManager::OutputMessageOnce("Creating Members without any properties");
        return Member();
    }
    Construction newMember{record, construction};
    construction = &newMember;
    try {
        SetUpMember(newMember);
    } catch (...) {
        construction = newMember.outer;
        if (newMember.record != nullptr) {
            FreeRecord(newMember.record);
        }
        throw;
    }
    construction = newMember.outer;
    return Member(newMember.record);
}

/// Fills a new record and runs the member-construction behaviours on it. Any of the host's code in between may delete
/// the member or clear the pool.
void MemberPool::SetUpMember(Construction const& newMember) {
    std::vector<MemberPropertyTable::Place> const& places = memberProperties->Places();
    for (std::size_t i = 0; i < places.size(); ++i) {
        CreateDatum(places[i], newMember.record);
        if (newMember.record == nullptr) {
            return;
        }
    }
    if (!memberConstructionBehaviours.empty()) {
        std::vector<Member> newMembers(1, Member(newMember.record));
        InitializeNewMembers(newMembers);
    }
}

/// Tells CreateNewMember() that the member it is setting up has gone; null stands for all members.
void MemberPool::EndConstructionOf(unsigned char const* record) noexcept {
    for (Construction* each = construction; each != nullptr; each = each->outer) {
        if (record == nullptr || each->record == record) {
            each->record = nullptr;
        }
    }
}

void MemberPool::FreeRecord(unsigned char const* record) {
    MemberRecordStorage& records = *memberProperties->Records();
    MemberRecordStorage::Place const place = records.FindInUse(record);
    records.Retire(place);
    records.GiveBack(place);
}

void MemberPool::DeleteMember(Member member) {
    if (!member.IsValid()) {
        return;
    }
    MemberRecordStorage* const records = memberProperties->Records();
    MemberRecordStorage::Place const place = records != nullptr
                                                 ? records->FindInUse(member.record)
                                                 : MemberRecordStorage::Place{MemberRecordStorage::NO_BLOCK, 0};
    if (place.block == MemberRecordStorage::NO_BLOCK) {
        GlobalMessageManager::OutputMessageOnce("Bug Report :: MemberPool :: The Pool \"%s\" was asked to delete a "
                                                "Member it does not have",
                                                name.c_str());
        return;
    }
    // From here on deleting it once more, from the host's instance deletion, is refused.
    records->Retire(place);
    EndConstructionOf(member.record);
    unsigned int const clearedBefore = timesCleared;
    try {
        std::vector<MemberPropertyTable::Place> const& places = memberProperties->Places();
        for (std::size_t i = 0; i < places.size() && timesCleared == clearedBefore; ++i) {
            if (places[i].plainDefault == nullptr && KeepsItsSize(places[i])) {
                places[i].property->OnInstanceDeletion(member.record + places[i].offset);
            }
        }
    } catch (...) {
        if (timesCleared == clearedBefore) {
            records->GiveBack(place);
        }
        throw;
    }
    if (timesCleared == clearedBefore) { // else the host's instance deletion has cleared the pool
        records->GiveBack(place);
    }
}

unsigned char* MemberPool::GetDataFromMember(int memberIndex, int propertyIndex) {
    return GetDataFromMemberSelectionMember(*this, memberIndex, propertyIndex);
}

unsigned char* MemberPool::GetDataFromMemberSelectionMember(MemberSelection& selection, int memberIndex,
                                                            int propertyIndex) {
    Member const member = selection.GetMemberByIndex(memberIndex);
    auto const position = static_cast<std::size_t>(propertyIndex);
    if (selection.GetBasePool() != this || !member.IsValid() || propertyIndex < 0 ||
        position >= memberProperties->Properties().All().size()) {
        return nullptr;
    }
    return member.record + memberProperties->Places()[position].offset;
}

bool MemberPool::RecordReaches(int offset, int size) const noexcept {
    int const recordSize = memberProperties->RecordSize();
    return offset >= 0 && size >= 0 && size <= recordSize && offset <= recordSize - size;
}

bool MemberPool::HasDatumOf(Property const& property, int offset, PropertyType type, int size) const noexcept {
    return !clearing && memberProperties->HasDatumOf(property, {offset, size, type});
}

// Building.

void MemberPool::InitializeMemberPool() {
    ClearPool();
}

void MemberPool::ClearPool() {
    if (clearing) { // by a listener of the clearing itself
        return;
    }
    /// Ends the clearing, also when a listener throws, unless one has destroyed the pool.
    struct Clearing {
        Util::WeakPtr<MemberPool> pool;
        ~Clearing() {
            if (MemberPool* const alive = pool) {
                alive->clearing = false;
            }
        }
    } const self{GetWeakPtr()};
    clearing = true;
    ++timesCleared;
    EndConstructionOf(nullptr);
    compiled = false;
    constructionFailed = false;
    Clear();
    ClearBehaviours(activeBehaviours);
    ClearBehaviours(passiveBehaviours);

    AnnounceLeaving(poolProperties->All(), "Deleted");
    if (self.pool.Get() == nullptr) { // a listener has destroyed the pool
        return;
    }
    poolProperties->Clear(*this);
    AnnounceLeaving(memberProperties->Properties().All(), "MemberPool");
    if (self.pool.Get() == nullptr) {
        return;
    }

    // Taken out of the lists first: the last reference may run a host's destructor.
    for (BehaviourList* const list :
         {&activeBehaviours, &passiveBehaviours, &memberConstructionBehaviours, &poolConstructionBehaviours}) {
        BehaviourList const leaving = std::exchange(*list, {});
    }
    memberProperties->Clear(*this);
    // What a listener has listed meanwhile has no record any more.
    Clear();
}

/// A copied pool shares its behaviours with the pool that owns them, and lets them be.
void MemberPool::ClearBehaviours(BehaviourList& behaviours) {
    if (!announced) {
        return;
    }
    for (std::size_t i = 0; i < behaviours.size(); ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = behaviours[i];
        behaviour->ClearBehaviour();
    }
}

void MemberPool::CompileMemberPool() {
    if (constructionFailed) {
        GlobalMessageManager::OutputMessage("Error :: MemberPoolCompilation :: due to errors during the construction "
                                            "phase the pool \"%s\" will not get compiled",
                                            name.c_str());
        return;
    }
    unsigned int const clearedBefore = timesCleared;
    for (Util::RefCountPtr<Behaviour> const& behaviour : GetAllBehaviours()) {
        behaviour->PushLinkedParamsToFastParams();
    }
    InitPoolProperties();
    compiled = timesCleared == clearedBefore; // else the host's instance creation has cleared the pool
}

void MemberPool::InitPoolProperties() {
    for (std::size_t i = 0; i < poolProperties->All().size(); ++i) {
        PropertyPtr const property = poolProperties->All()[i];
        property->OnInstanceCreation(static_cast<unsigned char*>(property->GetPoolData()));
    }
}

// Behaviours.

std::vector<Util::RefCountPtr<Behaviour>> MemberPool::GetAllBehaviours() const {
    BehaviourList all;
    for (BehaviourList const* const list :
         {&activeBehaviours, &passiveBehaviours, &memberConstructionBehaviours, &poolConstructionBehaviours}) {
        all.insert(all.end(), list->begin(), list->end());
    }
    return all;
}

Util::RefCountPtr<Behaviour> MemberPool::GetBehaviourByName(Util::String const& behaviourName) const {
    for (Util::RefCountPtr<Behaviour> const& behaviour : GetAllBehaviours()) {
        if (behaviour->GetName() == behaviourName) {
            return behaviour;
        }
    }
    return Behaviour::NIL;
}

} // namespace Gentra
