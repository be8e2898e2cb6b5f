// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/PropertyReference.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/util/Event.h"
#include "gentra/util/EventListener.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"

namespace Gentra {

namespace {

/// No pool has this identity value.
constexpr int NO_POOL = -1;

/// The type of the property events of the pool with that identity value.
Util::EventType PropertyEventOf(int identity) {
    return {Property::EVENT, "OwnerPool", identity};
}

} // namespace

/// Passes every event to its reference.
class PropertyReference::MyListener final : public Util::EventListener {
public:
    explicit MyListener(PropertyReference* newReference)
        : EventListener("PropertyReference"), reference(newReference) {}

    void HandleEvent(Util::Event const& event) override { reference->HandleEvents(event); }

private:
    PropertyReference* reference;
};

/// The property events have a listener of their own: one that is removed in the middle of a delivery is passed
/// over there, and must not miss the event of a pool for it.
PropertyReference::PropertyReference()
    : listener(std::make_unique<MyListener>(this)), propertyListener(std::make_unique<MyListener>(this)),
      boundIdentity(NO_POOL) {
    GlobalEventManager::RegisterListener(listener.get(), MemberPool::EVENT_CREATED);
    GlobalEventManager::RegisterListener(listener.get(), MemberPool::EVENT_DELETED);
}

PropertyReference::PropertyReference(PropertyReference const& other) : PropertyReference() {
    *this = other;
}

PropertyReference& PropertyReference::operator=(PropertyReference const& other) {
    if (this == &other) {
        return *this;
    }
    // Released last, here and below: the last reference may run a host's destructor.
    Util::RefCountPtr<Property> const formerTarget = property;
    Util::RefCountPtr<Property> const formerDefault = defaultProperty;
    ListenToPool(other.boundIdentity);
    property = other.property;
    defaultProperty = other.defaultProperty;
    propertyName = other.propertyName;
    ownerPool = other.ownerPool;
    ownerPoolID = other.ownerPoolID;
    return *this;
}

PropertyReference::~PropertyReference() = default;

Util::ShortID PropertyReference::GetPropertyID() const {
    return (property.Get() != nullptr ? property : Property::NIL)->GetPropertyID();
}

Util::String PropertyReference::GetOwnerPoolName() const {
    MemberPool const* const pool = ownerPool;
    return pool != nullptr ? pool->GetName() : Util::String("");
}

void PropertyReference::SetOwnerPoolID(Util::ShortID const& id) {
    if (id == ownerPoolID) {
        return;
    }
    Util::RefCountPtr<Property> const formerTarget = property;
    ownerPoolID = id;
    SetNewOwnerPool(MemberPool::Find(ownerPoolID));
    GetPropertyFromOwnerPool();
}

void PropertyReference::SetPropertyName(Util::String const& name) {
    if (name == propertyName) {
        return;
    }
    Util::RefCountPtr<Property> const formerTarget = property;
    propertyName = name;
    property = defaultProperty;
    // These two are everybody's.
    if (property != Property::NIL && property != MemberSelectionProperty::NIL) {
        property->SetName(propertyName);
    }
    GetPropertyFromOwnerPool();
}

void PropertyReference::SetDefaultProperty(Util::RefCountPtr<Property> const& newDefault) {
    Util::RefCountPtr<Property> const formerDefault = defaultProperty;
    defaultProperty = newDefault.Get() != nullptr ? newDefault : Property::NIL;
    if (property.Get() == nullptr || property == Property::NIL) {
        property = defaultProperty;
    }
}

void PropertyReference::GetPropertyFromOwnerPool() {
    MemberPool const* const pool = ownerPool;
    if (pool == nullptr) {
        return;
    }
    Util::RefCountPtr<Property> const found = pool->GetPropertyFromName(propertyName);
    if (found != Property::NIL) {
        property = found;
    }
}

/// The identity value tells pools apart also when one that has gone left its address to another.
void PropertyReference::SetNewOwnerPool(MemberPool* pool) {
    int const identity = pool != nullptr ? pool->GetIdentityValue() : NO_POOL;
    if (identity == boundIdentity) {
        return;
    }
    ListenToPool(identity);
    ownerPool = pool != nullptr ? pool->GetWeakPtr() : Util::WeakPtr<MemberPool>();
    property = defaultProperty;
}

/// Hears the property events of that pool instead of those heard so far.
void PropertyReference::ListenToPool(int identity) {
    if (boundIdentity != NO_POOL) {
        GlobalEventManager::RemoveListener(propertyListener.get(), PropertyEventOf(boundIdentity));
        boundIdentity = NO_POOL;
    }
    if (identity != NO_POOL) {
        GlobalEventManager::RegisterListener(propertyListener.get(), PropertyEventOf(identity));
        boundIdentity = identity;
    }
}

void PropertyReference::HandleEvents(Util::Event const& event) {
    if (event.type.Matches(Property::EVENT)) {
        HandlePropertyEvent(event);
    }
    if (event.type.Matches(MemberPool::EVENT)) {
        HandlePoolEvent(event);
    }
}

void PropertyReference::HandlePropertyEvent(Util::Event const& event) {
    auto const* const subject = static_cast<Util::RefCountPtr<Property> const*>(event.subject);
    if (subject == nullptr || subject->Get() == nullptr || *subject == Property::NIL ||
        (*subject)->GetName() != propertyName) {
        return;
    }
    if (event.param1 == 0 && event.param2 == 0) {
        property = *subject;
    } else if (event.param1 == 1 && event.param2 == 0) {
        property = defaultProperty;
    } else {
        GlobalMessageManager::OutputMessage(
            "Bug Report :: ValueProperty Channel :: ValueProperty could't handle event");
    }
}

void PropertyReference::HandlePoolEvent(Util::Event const& event) {
    auto* const pool = static_cast<MemberPool*>(event.subject);
    if (pool == nullptr) {
        return;
    }
    bool const isNamed = pool->GetMemberPoolID() == ownerPoolID;
    // A pool that got another ID while the reference was bound to it is still the one that goes.
    bool const isBound = pool->GetIdentityValue() == boundIdentity;
    if (event.type.subIndex == MemberPool::EVENT_CREATED.subIndex && isNamed) {
        SetNewOwnerPool(pool);
    } else if (event.type.subIndex == MemberPool::EVENT_DELETED.subIndex && (isNamed || isBound)) {
        SetNewOwnerPool(nullptr);
    }
}

} // namespace Gentra
