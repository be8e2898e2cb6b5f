// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/behaviours/BehaviourFactory.h"

#include "gentra/pools/ContextManager.h"

namespace Gentra {

void BehaviourFactory::Init() {
    ContextManager::RegisterBehaviour(*this);
}

} // namespace Gentra
