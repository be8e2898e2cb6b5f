// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/GlobalEventManager.h"

#include "gentra/util/EventManager.h"

namespace Gentra {

constinit Util::EventManager* GlobalEventManager::globalManager = nullptr;

Util::EventManager& GlobalEventManager::GlobalManager() {
    if (globalManager == nullptr) {
        globalManager = new Util::EventManager("GlobalEventManager");
    }
    return *globalManager;
}

Util::EventType* GlobalEventManager::RegisterListener(Util::EventListener* listener, Util::EventType const& type) {
    return GlobalManager().RegisterListener(listener, type);
}

Util::EventType* GlobalEventManager::RegisterListener(Util::EventListener* listener, Util::String const& name) {
    return GlobalManager().RegisterListener(listener, Util::EventType(name));
}

void GlobalEventManager::RemoveListener(Util::EventListener* listener, Util::EventType const& type) {
    GlobalManager().RemoveListener(listener, type);
}

void GlobalEventManager::RemoveListener(Util::EventListener* listener, Util::String const& name) {
    GlobalManager().RemoveListener(listener, Util::EventType(name));
}

void GlobalEventManager::Trigger(Util::Event const& event) {
    GlobalManager().Trigger(event);
}

} // namespace Gentra
