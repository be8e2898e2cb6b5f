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
/// created and destroyed by the listeners and behaviours that a pass calls. A pool that is in use (MemberPool) is
/// neither built nor given its pool-construction behaviours: "Error :: Context :: The Pool \"%s\" can not be built
/// while it is in use". If it waited it goes on waiting. The same holds, without a message, for one that is just being
/// cleared.
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
    /// "Compiling \"%s\"" and "Building \"%s\" completed" for each. In the end the pool-construction behaviours run.
    ///
    /// A pool that one of these behaviours creates comes too late: it is not built, and waits no longer. The host has
    /// it built by ForceReconstructAllMemberPools(), or fills it itself and calls MemberPool::CompileMemberPool().
    ///
    /// Where host code throws, the pass goes on with the other pools and throws the first exception on in the end. A
    /// pool that could not be built waits again, so that the next pass or its next frame builds it anew: "Error ::
    /// Context :: An exception was thrown while the Pool \"%s\" was built". One whose pool-construction behaviour
    /// throws is built.
    void ForceConstructAllMemberPools();
    /// Clears and builds every pool once, ascending by the IDs that they have at the beginning, whatever becomes of
    /// these. A pool that is created meanwhile is built only when its ID comes after that of the pool which is being
    /// built. Afterwards none waits any longer, built or not, but for those that were left out. Where host code throws
    /// it is as in ForceConstructAllMemberPools().
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
    struct Agenda;
    struct Pass;
    using PoolPtr = Util::WeakPtr<MemberPool>;

    static constexpr std::size_t NOT_WAITING = static_cast<std::size_t>(-1);
    struct Registration {
        PoolPtr pool;
        std::size_t ticket = NOT_WAITING; ///< Its position among the waiting pools.
    };

    void HandleEvents(Util::Event const& event);
    void HandlePoolCreated(MemberPool& pool);
    void HandlePoolDeleted(MemberPool& pool);
    void HandlePropertyEntered(Util::RefCountPtr<Property> const& property);
    void HandlePropertyLeft(Util::RefCountPtr<Property> const& property);
    void Forget(std::map<Util::ShortID, Registration>::iterator entry);
    void EndWaiting(Pass const* pass);
    [[nodiscard]] Registration* FindRegistration(MemberPool const& pool);

    using StepOfPass = void (*)(MemberPool& pool, Pass& pass);
    static void BuildMemberPool(MemberPool& pool);
    static void TryToBuildMemberPool(MemberPool& pool, Pass& pass);
    static void SetBasePools(MemberPool& pool, Pass& pass);
    static void ConstructMemberPool(MemberPool& pool, Pass& pass);
    void ForEachPool(StepOfPass step, Pass& pass);
    void ForEachWaitingPool(StepOfPass step, Pass& pass);
    void EndPass(Pass& pass);

    static bool buildGuard; ///< Set while a pass runs.

    std::map<Util::ShortID, Registration> poolsByID;
    std::map<Util::ShortID, Util::RefCountPtr<Property>> propertiesByID;
    std::set<Util::ShortID> reservedPropertyIDs;
    std::vector<PoolPtr> waitingPools;              ///< In the order in which their creation was heard; null for none.
    std::size_t waitingCount = 0;                   ///< How many of them are pools.
    Agenda* agenda = nullptr;                       ///< Of the step of a reconstruct pass that is going on.
    std::unique_ptr<MyListener> listener;           ///< Null in a copy.
    std::vector<MemberSelection*> activeSelections; ///< A stack, not owned.
    PerformanceProfiler performanceProfiler;
    SpatialRelations spatialRelations;
};

} // namespace Gentra

#endif
