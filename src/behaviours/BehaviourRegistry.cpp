// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Registering behaviour factories and making behaviours by name. The registry itself is built with the other
// load-time statics, in LoadTimeStatics.cpp.

#include "gentra/behaviours/BehaviourFactory.h"
#include "gentra/pools/ContextManager.h"

namespace Gentra {

void BehaviourFactory::Init() {
    ContextManager::RegisterBehaviour(*this);
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
