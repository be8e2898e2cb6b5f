// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_POOLS_CONTEXTMANAGER_H
#define GENTRA_POOLS_CONTEXTMANAGER_H

#include "gentra/gentra_export.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/String.h"

#include <map>
#include <vector>

namespace Gentra {

class Behaviour;
class BehaviourFactory;
class Context;

/// The main context, and the registry of behaviour factories.
///
/// Factories are listed by the name they had when they were registered, in byte order. The registry does not
/// own them: a registered factory must live as long as the program asks for behaviours.
class GENTRA_EXPORT ContextManager {
public:
    /// Does nothing: there is no state to copy.
    ContextManager& operator=(ContextManager const&) noexcept { return *this; }

    /// The one main context, created on first use and never destroyed.
    [[nodiscard]] static Context& GetMainContext();

    /// Registers a factory under its name; the first one of a name stays. See BehaviourFactory::Init.
    static void RegisterBehaviour(BehaviourFactory& factory);
    /// The names under which factories are registered.
    [[nodiscard]] static std::vector<Util::String> GetBehavioursByName();
    /// A new behaviour of the factory at that position of the list. Out of range: a new base Behaviour, which
    /// is nameless and has no slots. It compiles like any other, and does nothing: compare its name with the one asked
    /// for.
    [[nodiscard]] static Util::RefCountPtr<Behaviour> GetNewBehaviourFromIndex(int index);
    /// A new behaviour of the first factory whose present name is exactly `name`; else as above.
    [[nodiscard]] static Util::RefCountPtr<Behaviour> GetNewBehaviourFromName(Util::String const& name);

private:
    using FactoryRegistry = std::map<Util::String, BehaviourFactory*>;

    static Context* mainContext; ///< Never destroyed, so that late destructors still find it.
    static FactoryRegistry& factoryRegistry;
};

} // namespace Gentra

#endif
