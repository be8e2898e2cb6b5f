// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/ContextManager.h"

#include "gentra/pools/Context.h"

namespace Gentra {

constinit Context* ContextManager::mainContext = nullptr;

Context& ContextManager::GetMainContext() {
    if (mainContext == nullptr) {
        mainContext = new Context;
    }
    return *mainContext;
}

} // namespace Gentra
