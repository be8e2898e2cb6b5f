// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A behaviour's life and its parameter interface.

#include "gentra/behaviours/Behaviour.h"

#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/pools/MemberPool.h"
#include "gentra/util/Event.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <memory>

namespace Gentra {

// NIL and the event types are defined with the other load-time statics, in LoadTimeStatics.cpp.

constinit float Behaviour::debugRenderScale = 1.0f;

// Life.

Behaviour::Behaviour() : context(&ContextManager::GetMainContext()) {}

Behaviour::Behaviour(Behaviour const& other)
    : context(other.context), ownerPool(other.ownerPool), linkedProperties(other.linkedProperties),
      orderKey(other.orderKey), disabled(other.disabled), name(other.name), member(other.member),
      performanceStats(other.performanceStats), debugRenderEnabled(other.debugRenderEnabled),
      compiledSelections(other.compiledSelections) {
    std::copy(std::begin(other.fastParams), std::end(other.fastParams), std::begin(fastParams));
    CopyInterface(other);
}

Behaviour& Behaviour::operator=(Behaviour const& other) {
    if (this == &other) {
        return *this;
    }
    std::vector<Util::RefCountPtr<Property>> copiedLinks = other.linkedProperties;
    Util::String copiedName = other.name;
    auto copiedSelections = other.compiledSelections;
    CopyInterface(other);
    linkedProperties.swap(copiedLinks);
    name.swap(copiedName);
    compiledSelections.swap(copiedSelections);
    context = other.context;
    ownerPool = other.ownerPool;
    std::copy(std::begin(other.fastParams), std::end(other.fastParams), std::begin(fastParams));
    orderKey = other.orderKey;
    disabled = other.disabled;
    member = other.member;
    performanceStats = other.performanceStats;
    debugRenderEnabled = other.debugRenderEnabled;
    return *this;
}

Behaviour::~Behaviour() {
    ClearBehaviour();
    ClearParameterInterface();
}

/// Replaces the interface by copies of the other's records, or changes nothing if memory runs out.
void Behaviour::CopyInterface(Behaviour const& other) {
    std::vector<std::unique_ptr<Parameter>> records;
    for (Parameter const* const record : other.parameterInterface) {
        records.push_back(std::make_unique<Parameter>(*record));
    }
    std::vector<Parameter*> copiedInterface;
    std::vector<Parameter*> copiedVisible;
    copiedInterface.reserve(records.size());
    for (Parameter const* const visible : other.visibleInterface) {
        copiedVisible.push_back(records[static_cast<std::size_t>(visible->linkIndex)].get());
    }

    ClearParameterInterface();
    for (std::unique_ptr<Parameter>& record : records) {
        copiedInterface.push_back(record.release());
    }
    parameterInterface.swap(copiedInterface);
    visibleInterface.swap(copiedVisible);
    visibleCount = other.visibleCount;
}

void Behaviour::Initialize() {
    GlobalEventManager::Trigger(Util::Event(EVENT_CREATE, 0, 0, this));
}

void Behaviour::CheckForUpdate() {}

// Not beside ProcessMembers(): there the compiler would guess that this one is called, and test the guess for
// each member.
bool Behaviour::TriggerLiveBehaviour() {
    return false;
}

void Behaviour::CreateParameterInterface() {}

void Behaviour::SetOwnerPool(MemberPool* pool) {
    ownerPool = pool != nullptr ? pool->GetWeakPtr() : Util::WeakPtr<MemberPool>();
}

bool Behaviour::BehaviourLess(Behaviour* a, Behaviour* b) {
    return a->orderKey < b->orderKey;
}

// Declaring the interface.

bool Behaviour::HasRoomForParameter(Parameter const& parameter) const {
    if (parameterInterface.size() < MAX_PARAMETERS) {
        return true;
    }
    GlobalMessageManager::OutputMessage(
        "Error\\Construction\\Behaviour\\Parameter \"%s\" could not be added, because a "
        "Behaviour can not have more than 16 Parameters",
        parameter.GetName().c_str());
    return false;
}

void Behaviour::AddParameterToInterface(Parameter const* parameter) {
    if (parameter == nullptr || !HasRoomForParameter(*parameter)) {
        return;
    }
    auto record = std::make_unique<Parameter>(*parameter);
    record->linkIndex = static_cast<int>(parameterInterface.size());
    parameterInterface.reserve(MAX_PARAMETERS);
    visibleInterface.reserve(MAX_PARAMETERS);
    linkedProperties.push_back(Property::NIL);
    if (record->IsVisible()) {
        visibleInterface.insert(visibleInterface.begin() + visibleCount, record.get());
        ++visibleCount;
    }
    parameterInterface.push_back(record.release());
}

void Behaviour::AddParameterToInterfaceFront(Parameter const* parameter) {
    if (parameter == nullptr || !HasRoomForParameter(*parameter)) {
        return;
    }
    auto record = std::make_unique<Parameter>(*parameter);
    record->linkIndex = 0;
    parameterInterface.reserve(MAX_PARAMETERS);
    visibleInterface.reserve(MAX_PARAMETERS);
    linkedProperties.push_back(Property::NIL);
    for (Parameter* const other : parameterInterface) {
        ++other->linkIndex;
    }
    if (record->IsVisible()) {
        visibleInterface.insert(visibleInterface.begin(), record.get());
        ++visibleCount;
    }
    parameterInterface.insert(parameterInterface.begin(), record.release());
}

void Behaviour::ClearParameterInterface() {
    for (Parameter const* const record : parameterInterface) {
        delete record;
    }
    parameterInterface.clear();
    visibleInterface.clear();
    visibleCount = 0;
}

void Behaviour::Declare(PropertyOwner owner, PropertyType type, char const* parameterName, Scope scope,
                        float defaultValue, Math::Vec3 defaultVector) {
    Parameter parameter;
    parameter.MakeBehaviourInterfaceParameter(owner, type, parameterName, scope);
    parameter.value = defaultValue;
    parameter.vector = defaultVector;
    AddParameterToInterface(&parameter);
}

void Behaviour::MemberValue(int, char const* parameterName, Scope scope, float defaultValue) {
    Declare(MEMBER, VALUE, parameterName, scope, defaultValue);
}

void Behaviour::PoolValue(int, char const* parameterName, Scope scope) {
    Declare(POOL, VALUE, parameterName, scope);
}

void Behaviour::FlexibleValue(int, char const* parameterName) {
    Declare(FLEXIBLE, VALUE, parameterName, VISIBLE);
}

void Behaviour::MemberVec3(int, char const* parameterName, Scope scope, Math::Vec3 defaultVector) {
    Declare(MEMBER, VECTOR, parameterName, scope, 0.0f, defaultVector);
}

void Behaviour::FlexibleVec3(int, char const* parameterName) {
    Declare(FLEXIBLE, VECTOR, parameterName, VISIBLE);
}

void Behaviour::FlexibleMemberSelection(int, char const* parameterName) {
    Declare(FLEXIBLE, MEMBERSELECTION, parameterName, VISIBLE);
}

void Behaviour::MemberMemberSelection(int, char const* parameterName, Scope scope) {
    Declare(MEMBER, MEMBERSELECTION, parameterName, scope);
}

void Behaviour::FlexibleUserData(int, char const* parameterName) {
    Declare(FLEXIBLE, DATAREFERENCE, parameterName, VISIBLE);
}

void Behaviour::FlexibleBehaviourTrigger(int, char const* parameterName) {
    Declare(FLEXIBLE, BEHAVIOUR, parameterName, VISIBLE);
}

// Looking at the interface.

namespace {

/// The record at that position, or null with the message.
Parameter const* RecordAt(std::vector<Parameter*> const& records, int index, char const* message) {
    auto const position = static_cast<std::size_t>(index); // a negative index is beyond the end
    if (position >= records.size()) {
        GlobalMessageManager::OutputMessage(std::string(message));
        return nullptr;
    }
    return records[position];
}

} // namespace

int Behaviour::GetNumInterfaceLinks() const noexcept {
    return static_cast<int>(parameterInterface.size());
}

int Behaviour::GetNumVisibleInterfaceLinks() const noexcept {
    return static_cast<int>(visibleInterface.size());
}

bool Behaviour::GetInterfaceDescription(int index, Util::String& outName, PropertyOwner& outOwner,
                                        PropertyType& outType, bool& outIntrinsic) const {
    Parameter const* const record =
        RecordAt(parameterInterface, index,
                 "Error\\Construction\\Behaviour\\Information for an invalid InterfaceLink was requested");
    if (record == nullptr) {
        return false;
    }
    outName = record->GetName();
    outOwner = record->GetPropertyOwner();
    outType = record->GetPropertyType();
    outIntrinsic = record->IsIntrinsic();
    return true;
}

bool Behaviour::GetVisibleInterfaceDescription(int visibleIndex, Util::String& outName, PropertyOwner& outOwner,
                                               PropertyType& outType, bool& outIntrinsic) const {
    Parameter const* const record =
        RecordAt(visibleInterface, visibleIndex,
                 "Error\\Construction\\Behaviour\\Information for an invalid visible InterfaceLink was requested");
    return record != nullptr &&
           GetInterfaceDescription(record->GetLinkIndex(), outName, outOwner, outType, outIntrinsic);
}

PropertyType Behaviour::GetPropertyTypeFromParameterInterface(int index) const {
    Parameter const* const record =
        RecordAt(parameterInterface, index,
                 "Error\\Construction\\Behaviour\\PropertyType for an invalid InterfaceLink was requested");
    return record != nullptr ? record->GetPropertyType() : UNDEFINED;
}

PropertyType Behaviour::GetPropertyTypeFromVisibleParameterInterface(int visibleIndex) const {
    Parameter const* const record =
        RecordAt(visibleInterface, visibleIndex,
                 "Error\\Construction\\Behaviour\\PropertyType for an invalid visible InterfaceLink was requested");
    return record != nullptr ? GetPropertyTypeFromParameterInterface(record->GetLinkIndex()) : UNDEFINED;
}

int Behaviour::GetLinkIndexFromPropertyName(Util::String const& parameterName) const {
    for (Parameter const* const record : parameterInterface) {
        if (record->GetName() == parameterName) {
            return record->GetLinkIndex();
        }
    }
    return -1;
}

} // namespace Gentra
