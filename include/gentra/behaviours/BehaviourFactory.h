// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_BEHAVIOURS_BEHAVIOURFACTORY_H
#define GENTRA_BEHAVIOURS_BEHAVIOURFACTORY_H

#include "gentra/gentra_export.h"
#include "gentra/behaviours/Behaviour.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/String.h"

namespace Gentra {

/// Makes behaviours of one kind by name. Derive for each kind, keep one instance alive for good (normally a
/// static object), and call Init() on it.
class GENTRA_EXPORT BehaviourFactory {
public:
    /// Stores the name; registers nothing.
    explicit BehaviourFactory(Util::String newName) : name(std::move(newName)) {}
    /// @{
    /// Copies the name only. Which factories are registered, and under which names, stays as it is.
    BehaviourFactory(BehaviourFactory const&) = default;
    BehaviourFactory& operator=(BehaviourFactory const&) = default;
    /// @}
    /// Does not unregister the factory.
    ~BehaviourFactory() = default;

    // Virtual operations in slot order; compiled plug-ins depend on it.

    /// A new behaviour of this kind.
    virtual Util::RefCountPtr<Behaviour> CreateBehaviour() = 0;

    /// Registers the factory: ContextManager::RegisterBehaviour.
    void Init();
    /// The present name, by which ContextManager::GetNewBehaviourFromName finds the factory.
    [[nodiscard]] Util::String GetName() const { return name; }

private:
    Util::String name;
};

} // namespace Gentra

#endif
