// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Every static object of the library that another one needs while the program loads, built in one order.
//
// Between source files the linker decides the order, so none of these is a plain static object. Each has raw
// storage, ready before any code runs, and a reference to it; the first LoadTimeStatics keeper of the process
// builds them all in the order below, the last one destroys them in the reverse order.
//
// What the library's constructors touch beyond these is constant-initialised or made on first use and never
// destroyed: the random source, the event bus, the message log and the main context.

#include "gentra/util/LoadTimeStatics.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/behaviours/BehaviourFactory.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/properties/Property.h"

#include <map>
#include <memory>
#include <utility>

namespace Gentra {

namespace {

/// Storage for an object that is built and destroyed by hand.
template<class T>
union Storage {
    constexpr Storage() noexcept : none() {}
    constexpr ~Storage() {}

    template<class... Arguments>
    void Build(Arguments&&... arguments) {
        std::construct_at(&object, std::forward<Arguments>(arguments)...);
    }
    void Destroy() { std::destroy_at(&object); }

    char none;
    T object;
};

constinit Storage<std::map<Util::String, BehaviourFactory*>> factoryRegistry;
constinit Storage<Util::EventType> poolEvent;
constinit Storage<Util::EventType> poolEventCreated;
constinit Storage<Util::EventType> poolEventDeleted;
constinit Storage<Util::EventType> poolEventConstruct;
constinit Storage<Util::String> noName;
constinit Storage<Util::RefCountPtr<MemberSelectionProperty>> selectionPropertyNil;
constinit Storage<Util::EventType> propertyEvent;
constinit Storage<Util::RefCountPtr<Property>> propertyNil;
constinit Storage<Util::RefCountPtr<Behaviour>> behaviourNil;
constinit Storage<Util::EventType> behaviourEvent;
constinit Storage<Util::EventType> behaviourEventCreate;

constinit unsigned int keepers = 0;

void BuildAll() {
    // Factories may register from the first moment.
    factoryRegistry.Build();

    // The main context registers for these two families when it is made, by Behaviour::NIL below.
    poolEvent.Build("MemberPool");
    poolEventCreated.Build(poolEvent.object, "Created", 0);
    poolEventDeleted.Build(poolEvent.object, "Deleted", 1);
    poolEventConstruct.Build(poolEvent.object, "Construct", 2);

    // Every property is made with this name at first.
    noName.Build("None");
    selectionPropertyNil.Build();
    propertyEvent.Build("Property");
    propertyNil.Build(new Property("NULL"));

    // A behaviour fetches the main context.
    behaviourNil.Build();
    behaviourEvent.Build("Behaviour");
    behaviourEventCreate.Build(behaviourEvent.object, "Create", 0);
}

void DestroyAll() {
    behaviourEventCreate.Destroy();
    behaviourEvent.Destroy();
    behaviourNil.Destroy();
    propertyNil.Destroy();
    propertyEvent.Destroy();
    selectionPropertyNil.Destroy();
    noName.Destroy();
    poolEventConstruct.Destroy();
    poolEventDeleted.Destroy();
    poolEventCreated.Destroy();
    poolEvent.Destroy();
    factoryRegistry.Destroy();
}

} // namespace

constinit ContextManager::FactoryRegistry& ContextManager::factoryRegistry = Gentra::factoryRegistry.object;
constinit Util::EventType const& MemberPool::EVENT = poolEvent.object;
constinit Util::EventType const& MemberPool::EVENT_CREATED = poolEventCreated.object;
constinit Util::EventType const& MemberPool::EVENT_DELETED = poolEventDeleted.object;
constinit Util::EventType const& MemberPool::EVENT_CONSTRUCT = poolEventConstruct.object;
constinit Util::String const& Property::NO_NAME = noName.object;
constinit Util::RefCountPtr<MemberSelectionProperty> const& MemberSelectionProperty::NIL = selectionPropertyNil.object;
constinit Util::EventType const& Property::EVENT = propertyEvent.object;
constinit Util::RefCountPtr<Property> const& Property::NIL = propertyNil.object;
constinit Util::RefCountPtr<Behaviour> const& Behaviour::NIL = behaviourNil.object;
constinit Util::EventType const& Behaviour::EVENT = behaviourEvent.object;
constinit Util::EventType const& Behaviour::EVENT_CREATE = behaviourEventCreate.object;
constinit Math::Vec3 const Behaviour::NULLPOS;

LoadTimeStatics::LoadTimeStatics() {
    if (keepers++ == 0) {
        BuildAll();
    }
}

LoadTimeStatics::~LoadTimeStatics() {
    if (--keepers == 0) {
        DestroyAll();
    }
}

} // namespace Gentra
