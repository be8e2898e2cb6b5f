// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/ContextManager.h"

#include "gentra/pools/Context.h"

// Upward: behaviours are made by their factories.
#include "gentra/behaviours/BehaviourFactory.h"

namespace Gentra {

constinit Context* ContextManager::mainContext = nullptr;

// The registry is built with the other load-time statics, in LoadTimeStatics.cpp.

Context& ContextManager::GetMainContext() {
    if (mainContext == nullptr) {
        mainContext = new Context;
    }
    return *mainContext;
}

void ContextManager::RegisterBehaviour(BehaviourFactory& factory) {
    factoryRegistry.emplace(factory.GetName(), &factory);
}

std::vector<Util::String> ContextManager::GetBehavioursByName() {
    std::vector<Util::String> names;
    for (auto const& entry : factoryRegistry) {
        names.push_back(entry.first);
    }
    return names;
}

Util::RefCountPtr<Behaviour> ContextManager::GetNewBehaviourFromIndex(int index) {
    int position = 0;
    for (auto const& entry : factoryRegistry) {
        if (position++ == index) {
            return entry.second->CreateBehaviour();
        }
    }
    return {};
}

Util::RefCountPtr<Behaviour> ContextManager::GetNewBehaviourFromName(Util::String const& name) {
    // A factory may have been given another name since it was registered, so the keys do not answer this.
    for (auto const& entry : factoryRegistry) {
        if (entry.second->GetName() == name) {
            return entry.second->CreateBehaviour();
        }
    }
    return {};
}

} // namespace Gentra
