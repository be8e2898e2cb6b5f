// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Every static object of the library that another one needs while the program loads, built in one order.
//
// Between source files the linker decides the order, so none of these is a plain static object. They are the members of
// one struct in raw storage, ready before any code runs, to which the references of the classes are bound; the first
// LoadTimeStatics keeper of the process builds it, the last one destroys it. Its members come in the order of need.
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

namespace Gentra {

namespace {

struct Statics {
    // Factories may register from the first moment.
    std::map<Util::String, BehaviourFactory*> factoryRegistry;

    // The main context registers for these two families when it is made, by Behaviour::NIL below.
    Util::EventType poolEvent{"MemberPool"};
    Util::EventType poolEventCreated{poolEvent, "Created", 0};
    Util::EventType poolEventDeleted{poolEvent, "Deleted", 1};
    Util::EventType poolEventConstruct{poolEvent, "Construct", 2};

    // Every property is made with this name at first.
    Util::String noName{"None"};
    Util::RefCountPtr<MemberSelectionProperty> selectionPropertyNil;
    Util::EventType propertyEvent{"Property"};
    Util::RefCountPtr<Property> propertyNil{new Property("NULL")};

    // A behaviour fetches the main context.
    Util::RefCountPtr<Behaviour> behaviourNil;
    Util::EventType behaviourEvent{"Behaviour"};
    Util::EventType behaviourEventCreate{behaviourEvent, "Create", 0};
};

/// Storage for an object that is built and destroyed by hand.
template<class T>
union Storage {
    constexpr Storage() noexcept : none() {}
    constexpr ~Storage() {}

    char none;
    T object;
};

constinit Storage<Statics> storage;
constinit unsigned int keepers = 0;

} // namespace

constinit ContextManager::FactoryRegistry& ContextManager::factoryRegistry = storage.object.factoryRegistry;
constinit Util::EventType const& MemberPool::EVENT = storage.object.poolEvent;
constinit Util::EventType const& MemberPool::EVENT_CREATED = storage.object.poolEventCreated;
constinit Util::EventType const& MemberPool::EVENT_DELETED = storage.object.poolEventDeleted;
constinit Util::EventType const& MemberPool::EVENT_CONSTRUCT = storage.object.poolEventConstruct;
constinit Util::String const& Property::NO_NAME = storage.object.noName;
constinit Util::RefCountPtr<MemberSelectionProperty> const& MemberSelectionProperty::NIL =
    storage.object.selectionPropertyNil;
constinit Util::EventType const& Property::EVENT = storage.object.propertyEvent;
constinit Util::RefCountPtr<Property> const& Property::NIL = storage.object.propertyNil;
constinit Util::RefCountPtr<Behaviour> const& Behaviour::NIL = storage.object.behaviourNil;
constinit Util::EventType const& Behaviour::EVENT = storage.object.behaviourEvent;
constinit Util::EventType const& Behaviour::EVENT_CREATE = storage.object.behaviourEventCreate;
constinit Math::Vec3 const Behaviour::NULLPOS;

LoadTimeStatics::LoadTimeStatics() {
    if (keepers++ == 0) {
        std::construct_at(&storage.object);
    }
}

LoadTimeStatics::~LoadTimeStatics() {
    if (--keepers == 0) {
        std::destroy_at(&storage.object);
    }
}

} // namespace Gentra
