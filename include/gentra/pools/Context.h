// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_POOLS_CONTEXT_H
#define GENTRA_POOLS_CONTEXT_H

#include "gentra/gentra_export.h"
#include "gentra/spatial/SpatialRelations.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/PerformanceProfiler.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/String.h"
#include "gentra/util/WeakPtr.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace Util {
struct Event;
}

namespace Gentra {

class MemberPool;
class MemberSelection;
class Property;

/// The registry of a simulation: knows every pool and every property by ID and builds the pools.
///
/// A context learns of pools and properties through events, so every context knows all of them, whichever
/// context a pool was given. The main context (ContextManager::GetMainContext) serves the library itself.
///
/// One pass at a time runs in the whole process: one that is started from inside another does nothing. Pools may be
/// created and destroyed by the listeners and behaviours that a pass calls.
class GENTRA_EXPORT Context {
public:
    /// An empty registry that hears every pool and property event from now on. Ends the build guard: a pass
    /// may start even if one is running.
    Context();

    /// A snapshot of the tables: it hears no events, and pools that are destroyed drop out of it. Its spatial
    /// relations refer to `other`.
    Context(Context const& other);
    Context& operator=(Context const&) = delete;

    /// Leaves the event bus. Pools are not touched. Not to be called inside a pass of this context.
    ~Context();

    // Pools.

    /// The pool that is registered under that ID, or null.
    [[nodiscard]] MemberPool* GetMemberPoolFromID(Util::ShortID const& id) const;
    /// The pool of exactly that name, of several the one with the smallest ID, or null.
    [[nodiscard]] MemberPool* GetMemberPoolFromName(Util::String const& poolName) const;
    /// @{
    /// Fills `out` with all pools, or their names, ascending by ID.
    void GetAllMemberPools(std::vector<MemberPool*>& out) const;
    void GetAllMemberPoolsByName(std::vector<Util::String>& out) const;
    /// @}
    /// Moves the pool's registration to a new ID; call MemberPool::SetNewMemberPoolID instead. Nothing
    /// happens when the new ID is taken; a registration of another pool under the old ID stays.
    void ChangeMemberPoolID(Util::ShortID oldID, Util::ShortID newID, MemberPool& pool);

    // Properties.

    /// The property that entered a pool under that ID, or Property::NIL.
    [[nodiscard]] Util::RefCountPtr<Property> GetPropertyByID(Util::ShortID id) const;

    /// @{
    /// A set of reserved IDs for the host, independent of the properties that exist.
    void RegisterPropertyID(Util::ShortID id);
    void UnregisterPropertyID(Util::ShortID id);
    [[nodiscard]] bool IsPropertyIDUsed(Util::ShortID id) const;
    /// @}

    // A stack of active selections for the host.

    /// Pushes a selection, which the context does not own and which may be on the stack already.
    void ActivateMemberSelection(MemberSelection& selection);
    /// The top of the stack, or null.
    [[nodiscard]] MemberSelection* GetActiveMemberSelection() const noexcept;
    /// Pops until the selection has been popped; all, when it is not on the stack.
    void DeactivateMemberSelection(MemberSelection& selection);

    // Building.

    /// Builds the pools that wait for construction, in the order of their creation, those included that are
    /// created meanwhile. Logs "Build \"%s\" Started...", "Initializing \"%s\"", "Constructing \"%s\"",
    /// "Compiling \"%s\"" and "Building \"%s\" completed" for each.
    void ForceConstructAllMemberPools();
    /// Clears and builds every pool, ascending by ID. Pools that are created meanwhile are built when their ID comes
    /// later; others stay unbuilt until the next such pass.
    void ForceReconstructAllMemberPools();

    // Services.

    /// @{
    /// The context's own. Statistics and behaviours use those of the main context.
    [[nodiscard]] PerformanceProfiler& GetPerformanceProfiler() noexcept { return performanceProfiler; }
    [[nodiscard]] SpatialRelations& GetSpatialRelations() noexcept { return spatialRelations; }
    /// @}

private:
    class MyListener;
    class BuildGuard;
    using PoolPtr = Util::WeakPtr<MemberPool>;

    void HandleEvents(Util::Event const& event);
    void HandlePoolCreated(MemberPool& pool);
    void HandlePoolDeleted(MemberPool& pool);
    void HandlePropertyEntered(Util::RefCountPtr<Property> const& property);
    void HandlePropertyLeft(Util::RefCountPtr<Property> const& property);
    void StopWaiting(MemberPool const& pool);
    void NobodyWaits();

    static void BuildMemberPool(MemberPool& pool);
    template<class Action>
    void ForEachPool(Action const& action);
    template<class Action>
    void ForEachWaitingPool(Action const& action);

    static bool buildGuard; ///< Set while a pass runs.

    std::map<Util::ShortID, PoolPtr> poolsByID;
    std::map<Util::ShortID, Util::RefCountPtr<Property>> propertiesByID;
    std::set<Util::ShortID> reservedPropertyIDs;
    std::vector<PoolPtr> waitingPools;              ///< In the order in which their creation was heard.
    std::size_t waitingPosition = 0;                ///< How many of them the running step has taken.
    std::unique_ptr<MyListener> listener;           ///< Null in a copy.
    std::vector<MemberSelection*> activeSelections; ///< A stack, not owned.
    PerformanceProfiler performanceProfiler;
    SpatialRelations spatialRelations;
};

} // namespace Gentra

#endif
